#pragma once

#include "base/console.hpp"
#include "deck/options.hpp"
#include "model/grid.hpp"

namespace kvr {

/// Replaces the .EGRID file: pillars, corner depths, active cells. Without the option it does nothing.
void writeGridFile(const Console& console, const RunOptions& options, const GridModel& grid);

}  // namespace kvr
