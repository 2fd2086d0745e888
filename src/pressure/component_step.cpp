#include "pressure/component_step.hpp"

#include "pressure/component_properties.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr int SlopeIterations = 2;  // behind them the changes of volumes stand

/// Adds the solution to the pressures; the largest change, not a number where one is.
double applySolution(const GridModel& grid, const std::vector<double>& solution, CellState& state) {
    double largest = 0.0;
    for (CellId c = 1; c <= grid.NCELLS; ++c) {
        if (grid.Active[c] == 0) continue;
        const double change = solution[static_cast<std::size_t>(c) - 1];
        state.Pressure[c] += change;
        if (!(std::abs(change) <= largest)) largest = std::abs(change);
    }
    return largest;
}

bool hasPressures(const GridModel& grid, const CellState& state) {
    for (CellId c = 1; c <= grid.NCELLS; ++c)
        if (grid.Active[c] != 0 && !(state.Pressure[c] > 0.0)) return false;
    return true;
}

}  // namespace

ComponentStepResult componentStep(const UnitSystem& units, const GridModel& grid,
                                  const ConnectionTable& connections, const FluidTables& tables,
                                  std::span<const ComponentSource> sources, std::string_view solver,
                                  double dt, double tolerance, int mostIterations, ComponentWork& work,
                                  ComponentStage& stage, CellState& state) {
    ComponentStepResult result;
    const SolverRow* const row = findSolver(solver);
    if (row == nullptr) return result;
    if (!work.memory) work.memory = makeSolverMemory();
    const WellRecord noWells;
    PressureMatrix& matrix = work.matrix;
    refreshComponents(grid, tables, units.VolumeFactor, VolumeSlopes::All, stage, state);
    while (!result.isSolved && result.iterations < mostIterations) {
        buildPattern(grid, connections, noWells, matrix);
        accumulateComponents(dt, grid, tables, stage, state, matrix);
        flowComponents(units, grid, connections, stage, state, matrix);
        addComponentSources(sources, stage, state, matrix);
        fillSystem(units, grid, connections, tables, state, 0.0, noWells, matrix);
        work.solution.assign(static_cast<std::size_t>(matrix.system.size), 0.0);
        if (row->route(matrix.system, work.solution, *work.memory).failure != SolveFailure::None)
            return result;
        result.lastChange = applySolution(grid, work.solution, state);
        ++result.iterations;
        if (!hasPressures(grid, state)) return result;
        // Differences of volumes have five digits or so: made anew in every iteration they would keep it from
        // ending.
        const VolumeSlopes slopes =
            result.iterations <= SlopeIterations ? VolumeSlopes::All : VolumeSlopes::None;
        refreshComponents(grid, tables, units.VolumeFactor, slopes, stage, state);
        result.isSolved = result.lastChange <= tolerance;
    }
    if (!result.isSolved) return result;
    takeFlow(units, grid, connections, sources, stage, state, work.flow);
    result.sources = moveComponents(units, grid, connections, tables, sources, work.flow, dt, stage, state);
    return result;
}

}  // namespace kvr
