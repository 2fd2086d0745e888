#pragma once

#include "base/units.hpp"
#include "fluid/tables.hpp"
#include "pressure/records/cell_state.hpp"
#include "pressure/wells/wells.hpp"

#include <span>
#include <vector>

namespace kvr {

/// One of those that share a rate.
struct Sharer {
    double guide = 0.0;  // its part of the sum of guides is its part of the rate ...
    double most = 0.0;   // ... up to what it can give
};

/// What of `total` falls to each: in proportion to the guides, those that cannot give their part give what
/// they can, and what they leave is shared anew. Infinite where a sharer gives what it can.
std::vector<double> sharesOf(double total, std::span<const Sharer> sharers);

/// When shares are formed: ahead of a step, which may find nothing left for a well and shut it, or within its
/// iteration, which leaves such a well a trickle.
enum class ShareTime { StepBegin, Iteration };

/// Shares the rates of the groups over their wells, cells as they stand, and makes them limits of the wells
/// (Well::share). From the lowest groups up: each takes the limits below it as they are, so that all hold at
/// once. A well's guide is its own, by WGRUPCON, or what it could give at its pressure limit; a group with a
/// guide of its own has its part of a rate from above as one. Wells and groups that do not follow count as
/// they are. Injection follows production: shares of what the producers give under their limits.
void shareGroupTargets(ShareTime time, const UnitSystem& units, const FluidTables& tables,
                       const CellState& state, double averagePressure, WellRecord& wells);

}  // namespace kvr
