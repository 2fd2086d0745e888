#pragma once

#include "pressure/wells.hpp"
#include "streamline/launch_plan.hpp"

namespace kvr {

/// "pop" everywhere, then the well's kind in every completed cell, if the well is under "bhp" or its
/// target rate exceeds 1e-8; a later well overwrites an earlier one.
void rebuildCellTags(CellId cellCount, const WellRecord& wells, CellTags& tags);

}  // namespace kvr
