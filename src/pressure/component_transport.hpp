#pragma once

#include "base/units.hpp"
#include "fluid/tables.hpp"
#include "model/connections.hpp"
#include "model/grid.hpp"
#include "pressure/component_stage.hpp"
#include "pressure/records/cell_state.hpp"
#include "pressure/records/velocity_field.hpp"

#include <span>
#include <vector>

namespace kvr {

/// Moves amounts over dt by upstream phases in substeps: no cell gives more than a tenth of its pores, nor
/// more than half of a component, in one. Shares of phases follow the present mobilities, their sum the
/// flow of the field, which is frozen. What leaves a cell enters another or a source. The state follows at
/// the end of every substep, at frozen pressures. `moved` takes what the sources brought. The same bits for
/// any number of threads.
void moveComponents(const UnitSystem& units, const GridModel& grid, const ConnectionTable& connections,
                    const FluidTables& tables, const VelocityField& velocity,
                    std::span<const ComponentSource> sources, double dt, ComponentStage& stage,
                    CellState& state, std::vector<SourceTotals>& moved);

}  // namespace kvr
