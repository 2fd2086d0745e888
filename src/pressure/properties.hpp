#pragma once

#include "base/console.hpp"
#include "deck/options.hpp"
#include "fluid/tables.hpp"
#include "model/grid.hpp"
#include "pressure/cell_state.hpp"

namespace kvr {

/// Every property of every active cell from its pressure, saturations, Rs and Pb, without touching
/// those: pore volume, formation factors, viscosities, densities, relative permeabilities, mobilities,
/// phase pressures. The full update at the start of a step and after transport.
void refreshProperties(const GridModel& grid, const FluidTables& tables, CellState& state);

/// The update between pressure iterations: re-flash at the new pressure from the amounts of the old time
/// level, limits and scaling of saturations, Rs brought back into the table, then refreshProperties.
void UpdateProperties(const Console& console, const RunOptions& options, const GridModel& grid,
                      const FluidTables& tables, const CellState& timeLevel, CellState& state);

}  // namespace kvr
