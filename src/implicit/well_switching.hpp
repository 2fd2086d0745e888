#pragma once

#include "base/console.hpp"
#include "base/units.hpp"
#include "implicit/implicit_work.hpp"

namespace kvr {

/// Control and bottom-hole pressure of every rate well from the cells as they stand: the pressure that gives
/// its target where the limit allows one, else the limit. The row of the well then holds in every iterate,
/// and none is driven past its limit or stands where it cannot flow. True when a control has changed.
///
/// A well that keeps changing with the iterates is held at its limit after a few changes of one attempt,
/// until releaseHeldWells.
bool settleWells(const UnitSystem& units, const FluidTables& tables, const CellState& state,
                 double averagePressure, WellRecord& wells, ImplicitWork& work);

/// Wells that were held at their limit and would exceed their target there get their rate, for the rest of
/// the attempt. To be called once the cells have converged; true when there was one.
bool releaseHeldWells(WellRecord& wells, ImplicitWork& work);

/// Every rate well gives its target from inside its limit, or stands at the limit and gives no more than
/// that.
bool wellsObey(const WellRecord& wells);

/// One line for each well that ends the step on another control than it began with.
void tellSwitches(const Console& console, const WellRecord& before, const WellRecord& now);

}  // namespace kvr
