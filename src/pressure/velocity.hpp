#pragma once

#include "base/console.hpp"
#include "base/units.hpp"
#include "deck/options.hpp"
#include "model/connections.hpp"
#include "model/grid.hpp"
#include "pressure/cell_state.hpp"
#include "pressure/velocity_field.hpp"
#include "pressure/wells.hpp"

namespace kvr {

/// Sizes the velocity field; "Error :: Allocation of velocity, flow and its gradient" and a stop when
/// memory is short.
void AllocateVelocity(const Console& console, CellId count, VelocityField& velocity);

/// Phase fluxes, total flux, velocity and gradients from the phase pressures.
void BuildVelocityFromPressure(const RunOptions& options, const UnitSystem& units, const GridModel& grid,
                               const ConnectionTable& connections, const CellState& state,
                               VelocityField& velocity);

/// Reservoir rates of connections and wells for launching, from the converged field.
void UpdateWellVelocity(const UnitSystem& units, const CellState& state, WellRecord& wells);

}  // namespace kvr
