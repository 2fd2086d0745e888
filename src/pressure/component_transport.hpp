#pragma once

#include "base/units.hpp"
#include "fluid/tables.hpp"
#include "model/connections.hpp"
#include "model/grid.hpp"
#include "pressure/component_make_up.hpp"
#include "pressure/component_stage.hpp"
#include "pressure/records/cell_state.hpp"
#include "pressure/records/velocity_field.hpp"

#include <span>
#include <vector>

namespace kvr {

/// Moves amounts over dt by upstream phases in substeps: no cell gives more than a tenth of its pores, nor
/// more than half of a component, in one. Shares of phases follow the present mobilities, their sum the
/// flow of the field, which is frozen. What leaves a cell enters another or a source. The state follows at
/// frozen pressures: in the substeps that of cells whose amounts have changed, at the end that of all.
/// `moved` takes what the sources brought. The same bits for any number of threads.
///
/// A face whose make-up is told passes it evenly over dt, as far as its phases go along with the flow:
/// gravity leaves r = min over phases (flow of the phase)/(its share of the flow by mobilities), 0 to 1, of
/// it, and the mobilities make up the rest. A cell whose content the flow turns over n > 1 times follows what
/// is told of its outflow to the share max(0.01/e, 1/n), e what the make-ups would leave it other than the
/// lines do, in a fraction or the water saturation; 1/n where something leaves it untold. One that they would
/// overdraw follows them no further.
void moveComponents(const UnitSystem& units, const GridModel& grid, const ConnectionTable& connections,
                    const FluidTables& tables, const VelocityField& velocity,
                    std::span<const ComponentSource> sources, const ComponentMakeUp& makeUp, double dt,
                    ComponentStage& stage, CellState& state, std::vector<SourceTotals>& moved);

}  // namespace kvr
