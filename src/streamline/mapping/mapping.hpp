#pragma once

#include "deck/options.hpp"
#include "fluid/tables.hpp"
#include "model/grid.hpp"
#include "pressure/records/cell_state.hpp"
#include "streamline/mapping/mapping_sums.hpp"
#include "streamline/transport/component_line.hpp"
#include "streamline/transport/solver_line.hpp"

#include <vector>

namespace kvr {

/// What one solved line gives to the mapping, per traced node from the inlet, [1..count].
struct LineContribution {
    int count = 0;
    std::vector<CellId> cell;
    std::vector<double> weight;  // days, residence time
    std::vector<double> Sw, So, Sg, bubblePoint;
    std::vector<std::vector<double>> tracer;  // [tracer][node]
    int components = 0;
    std::vector<ComponentFlow> held;  // of runs with components, per pore volume
};

void sizeContribution(int tracedNodes, int tracerCount, LineContribution& contribution);

/// Takes the solution of a line, through the remap where it was regridded.
void takeContribution(const SolverLine& line, bool hasGas, LineContribution& contribution);

/// What the nodes of a line of components hold, beside its saturations.
void takeHeld(int count, const SolverLine& line, ComponentLine& components, LineContribution& contribution);

/// Multiplies the weights of a line: residence times then count by the flow that the line stands for.
void scaleWeights(double flow, LineContribution& contribution);

/// Sizes the sums for a run, all zero. The bubble-point limits of the cells are those of `state`, the
/// initial one; sums of gas and bubble points are made in runs with gas only.
void sizeMapping(CellId cellCount, int tracerCount, bool hasGas, const CellState& state, MappingSums& sums);

/// Adds a line. A line of the missed-block stage passes `onlyMissed`: cells of the visited snapshot take
/// nothing from it.
void accumulate(const LineContribution& contribution, bool hasGas, bool onlyMissed, MappingSums& sums);

/// Turns the sums into the cells' saturations, bubble points, Rs and tracer concentrations. A cell without
/// weight keeps what it has, but for the end-point limits where these are on. Not conservative: a cell takes
/// the plain mean of its lines, then limits and the scaling to 1; a sum of 0 becomes water.
void mapToCells(const RunOptions& options, const FluidTables& fluids, const GridModel& grid,
                const MappingSums& sums, CellState& state);

/// The tracer concentrations alone.
void mapTracers(const GridModel& grid, const MappingSums& sums, CellState& state);

/// Zeroes the sums at the end of a step. The visited flags stay for the splitting stage.
void clearMapping(MappingSums& sums);

/// Forgets the visited cells before the lines of a step are traced.
void clearVisited(MappingSums& sums);

}  // namespace kvr
