#pragma once

#include "implicit/implicit_work.hpp"
#include "pressure/records/cell_state.hpp"
#include "pressure/tracer_transport.hpp"

namespace kvr {

/// Where the water of a fully implicit step of `dt` days went: the flows that its balances have closed with,
/// T (lambda/B) of the upstream cell times the potential difference, all at the end of the step.
WaterMovement implicitWaterMovement(double dt, const GridModel& grid, const FluidTables& tables,
                                    const CellState& state, const WellRecord& wells,
                                    const ImplicitWork& work);

}  // namespace kvr
