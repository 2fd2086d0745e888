#pragma once

#include "pressure/records/cell_state.hpp"
#include "pressure/wells/wells.hpp"

namespace kvr {

/// Keeps in PressureStage::pressureRise what pressures have risen by, psi a day, over a step of `dt` days
/// that led from `level` to `state`, and in riseGoesOn whether the rise before would have told most of it.
void keepPressureRise(double dt, const CellState& level, const CellState& state, PressureStage& stage);

/// Moves pressures of cells, and with them the bottom-hole pressures of rate wells, to where a step of `dt`
/// days ends if they go on as in the step before; nothing where that step itself could not have been
/// foretold. A field that fills or empties as a whole moves its pressures further in a step than flow does:
/// from there the first solution of the equations is all but the last. A cell whose pressure would come down
/// to less than half goes to half.
void foretellPressures(double dt, const PressureStage& stage, CellState& state, WellRecord& wells);

}  // namespace kvr
