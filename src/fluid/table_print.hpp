#pragma once

#include "base/console.hpp"
#include "base/units.hpp"
#include "fluid/tables.hpp"

namespace kvr {

/// The finished tables in the log: scalars, PVT rows beside what the look-up functions make of them, the
/// saturation tables with their derivatives and end points. Rs and Bg stand in deck units.
void printTables(const Console& console, const UnitSystem& units, const FluidTables& tables);
/// The two halves of it: scalars and PVT; saturation tables.
void printFluidTables(const Console& console, const UnitSystem& units, const FluidTables& tables);
void printRockTables(const Console& console, const FluidTables& tables);

}  // namespace kvr
