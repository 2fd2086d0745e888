#pragma once

#include "base/index.hpp"
#include "model/connections.hpp"
#include "model/grid.hpp"
#include "pressure/component_make_up.hpp"
#include "pressure/component_stage.hpp"
#include "pressure/flow_order.hpp"
#include "pressure/records/cell_state.hpp"

#include <span>

namespace kvr {

/// Share of what leaves a cell that may be missing of all of it.
inline constexpr double AllTold = 1e-9;

/// Calls `visit(low cell, axis, flow out of c)` for the faces of a cell whose make-up is told and which it
/// gives to.
template <class Visit>
void forToldOutflows(const ConnectionTable& connections, const DirectionArray<double>& flux,
                     const ComponentMakeUp& makeUp, CellId c, Visit visit) {
    for (int face = 1; face <= FaceCount; ++face) {
        const CellId n = connections.Neighbour(c, face);
        if (n <= 0) continue;
        const double out = outflowThrough(connections, flux, c, face);
        const CellId low = face % 2 == 0 ? c : n;
        const int axis = (face + 1) / 2;
        if (out > 0.0 && makeUp.isTold(low, axis, low == c ? out : -out)) visit(low, axis, out);
    }
}

/// Reservoir volume a day that leaves each cell, by faces and sources.
void sumOutflows(const ConnectionTable& connections, const DirectionArray<double>& flux,
                 const GridModel& grid, std::span<const ComponentSource> sources, CellArray<double>& outflow);

/// Gives `faces`, which come with what is told of them, what each cell would hold at the end of the step
/// beyond its pores full of what lines leave it, from the first cell of the flow to the last, where all that
/// leaves a cell is told: as much of it as the flow turns the cell over in the step. A front in a cell is one
/// mixture there, of another volume; what the pores lack, or have too much, is like what lines leave behind
/// the cell. Nothing goes against the flow. `told`: flow along the axis of each high face that goes so;
/// `net`: what a day brings each cell; `volumeFactor`: ft3 in an internal volume.
void reachEnds(double volumeFactor, const GridModel& grid, const ConnectionTable& connections,
               const DirectionArray<double>& flux, std::span<const ComponentSource> sources,
               const ComponentMakeUp& makeUp, const ComponentStage& stage, const CellState& state,
               const DirectionArray<double>& told, double dt, DirectionArray<double>& net,
               DirectionArray<double>& faces);

}  // namespace kvr
