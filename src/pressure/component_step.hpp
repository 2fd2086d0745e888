#pragma once

#include "pressure/component_pressure.hpp"
#include "pressure/component_transport.hpp"
#include "pressure/solvers/solver_table.hpp"

#include <string_view>

namespace kvr {

/// What the steps of a run share.
struct ComponentWork {
    PressureMatrix matrix;
    SolverMemoryPointer memory;
    std::vector<double> solution;  // psi
    ComponentFlow flow;
};

/// What a step tells of itself.
struct ComponentStepResult {
    int iterations = 0;       // of the pressure
    double lastChange = 0.0;  // psi, largest of the last iteration
    bool isSolved = false;    // false: nothing has been moved
    SourceTotals sources;
};

/// One IMPES step: pressure by Newton on the volume balance until no cell changes by more than `tolerance`
/// psi, at most `mostIterations`; then amounts on its flow. The stage comes with amounts, the state with
/// pressures.
ComponentStepResult componentStep(const UnitSystem& units, const GridModel& grid,
                                  const ConnectionTable& connections, const FluidTables& tables,
                                  std::span<const ComponentSource> sources, std::string_view solver,
                                  double dt, double tolerance, int mostIterations, ComponentWork& work,
                                  ComponentStage& stage, CellState& state);

}  // namespace kvr
