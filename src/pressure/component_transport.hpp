#pragma once

#include "base/units.hpp"
#include "fluid/tables.hpp"
#include "model/connections.hpp"
#include "model/grid.hpp"
#include "pressure/component_stage.hpp"
#include "pressure/records/cell_state.hpp"

#include <span>
#include <vector>

namespace kvr {

/// The flow that a pressure has given, frozen while amounts move on it; internal volume a day.
struct ComponentFlow {
    DirectionArray<double>
        total;  // (cell, axis 1..3) of all phases through the high face, toward it positive
    std::vector<double> produced;  // by source: volume that it takes, 0 of those that inject
    std::vector<double> injected;  // by source: lb-mole that it brings
};
void takeFlow(const UnitSystem& units, const GridModel& grid, const ConnectionTable& connections,
              std::span<const ComponentSource> sources, const ComponentStage& stage, const CellState& state,
              ComponentFlow& flow);

/// Moves amounts over dt by upstream phases in substeps: no cell gives more than a tenth of its pores, nor
/// more than half of a component, in one. Shares of phases follow the present mobilities, their sum the
/// frozen flow. What leaves a cell enters another or a source. The state follows at the end of every substep,
/// at frozen pressures. Returns what the sources brought.
SourceTotals moveComponents(const UnitSystem& units, const GridModel& grid,
                            const ConnectionTable& connections, const FluidTables& tables,
                            std::span<const ComponentSource> sources, const ComponentFlow& flow, double dt,
                            ComponentStage& stage, CellState& state);

}  // namespace kvr
