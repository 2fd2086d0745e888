#pragma once

#include "base/console.hpp"
#include "deck/options.hpp"
#include "fluid/initial_conditions.hpp"
#include "fluid/tables.hpp"
#include "model/grid.hpp"

namespace kvr {

/// Scales the capillary pressure of water cell by cell so that EQUIL puts the water saturation there that the
/// deck gives (SWATINIT): by (po - pw)/Pcow(Sw) at the cell's centre, Sw at least the first row of its table,
/// and where gas leaves no room for oil by (pg - pw - Pcog(1 - Sw))/Pcow(Sw). Each table that this makes is a
/// saturation region. Cells below the contact or without capillary pressure at that saturation keep theirs;
/// where the deck gives another saturation to such cells it is told.
void scaleToInitialWater(const Console& console, const InitialConditions& initial, const RunOptions& options,
                         GridModel& grid, FluidTables& tables);

}  // namespace kvr
