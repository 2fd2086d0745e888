#pragma once

#include "base/console.hpp"
#include "implicit/implicit_work.hpp"

namespace kvr {

/// Brings bottom-hole pressures that an iteration has taken past their limits back onto them. To be followed
/// by a rate update: what the wells give there decides.
void clipToLimits(WellRecord& wells);

/// After a rate update: a rate well that stands at its limit and gives less than its target there is held at
/// it, one that is held and gives more gets its rate back; an iterate on the way to the solution thus cannot
/// leave a well on the wrong control. A well that keeps changing is left where it is after a few returns,
/// until the next step. One line for each switch; true when there was one.
bool switchWells(const Console& console, WellRecord& wells, ImplicitWork& work);

}  // namespace kvr
