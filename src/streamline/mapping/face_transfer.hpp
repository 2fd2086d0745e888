#pragma once

#include "base/cell_array.hpp"
#include "model/connections.hpp"
#include "streamline/transport/component_line.hpp"
#include "streamline/transport/solver_line.hpp"

#include <cstdint>
#include <span>
#include <vector>

namespace kvr {

/// What one line moves from each traced node to the next over a step, surface volume per unit of the flow of
/// the line: [n] from node n to node n + 1.
struct LinePassage {
    std::vector<double> water, oil, gas;
    std::vector<std::uint8_t> told;  // whether the solver node that lets it out is no longer than the traced
    std::vector<double> solver;      // work: the same between solver nodes
    std::vector<ComponentFlow> mixture;  // in place of the three in runs with components
};

void sizePassage(int tracedNodes, std::size_t solverNodes, LinePassage& passage);

/// Passage of an advanced line: the integral of the flux F(i) over its step and, with gravity along the line,
/// of the exchange between i and i + 1, as the solver has summed them up. A phase that gravity moves against
/// the flow may have passed less than nothing. A regridded line takes the passage linear in time of flight
/// between solver nodes.
void takePassage(const SolverLine& line, LinePassage& passage);
/// The same of a line of components.
void takeMixturePassage(int count, const SolverLine& line, const ComponentLine& components,
                        LinePassage& passage);

/// Flow of the lines through the face between a cell and its neighbour on the high side of axis 1..3, the
/// part of it whose make-up the lines tell, and the surface amounts that this part took through the face over
/// the step; positive toward the neighbour. A solver node that is longer than the traced one spreads over
/// several cells what it holds, and tells nothing of what passes between them.
struct FaceTransfer {
    DirectionArray<double> flow, told, water, oil, gas;
    int components = 0;
    DirectionArray<double> mixture;  // (cell, row of the axis) in place of the three, as in ComponentMakeUp
};

void clearTransfer(CellId cells, FaceTransfer& transfer, int components = 0);

/// Adds a line of `cells` [1..count] that stands for `flow`. Steps between two cells that are both set in
/// `covered` (empty: none is) are left out.
void addPassage(const ConnectionTable& connections, std::span<const CellId> cells, int count, double flow,
                const CellArray<std::uint8_t>& covered, const LinePassage& passage, FaceTransfer& transfer);

/// The face of a cell in the transfer: its low neighbour holds the low faces. cell 0 where there is none.
struct TransferFace {
    CellId cell = 0;
    int axis = 1;
};
TransferFace transferFace(const ConnectionTable& connections, CellId cell, int face);

}  // namespace kvr
