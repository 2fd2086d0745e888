#pragma once

#include "base/console.hpp"
#include "fluid/tables.hpp"

namespace kvr {

/// Makes SWOF and SGOF of the regions that were given phase by phase. Rows stand at every saturation of both
/// tables, so that straight lines between rows lose nothing:
///   krow(Sw) = kro of oil with water at So = 1 - Sw
///   krog(Sg) = kro of oil with gas at So = 1 - Swco - Sg,   Swco: first Sw of SWFN, 0 without water
/// Outside a table its end value stands. A region with a table of one kind and none of the other is told and
/// left as it is.
void combinePhaseTables(const Console& console, bool hasWater, FluidTables& tables);

}  // namespace kvr
