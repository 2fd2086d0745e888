#pragma once

#include "pressure/wells/wells.hpp"
#include "streamline/tracing/launch_plan.hpp"

#include <string_view>

namespace kvr {

/// "pop" everywhere, then the well's kind in every completed cell, if the well is under "bhp" or its
/// target rate exceeds 1e-8; a later well overwrites an earlier one. A shut well tags nothing: lines pass
/// through its cells.
void rebuildCellTags(CellId cellCount, const WellRecord& wells, CellTags& tags);

/// Three-letter word of a well's kind or of a launch mode.
CellTagKind tagKindOf(std::string_view word);

}  // namespace kvr
