#pragma once

#include "base/console.hpp"
#include "deck/options.hpp"
#include "deck/schedule.hpp"
#include "fluid/tables.hpp"
#include "model/grid.hpp"

namespace kvr {

/// Fall-backs with their warnings, then the echo of every option to log and console.
void finaliseOptions(const Console& console, const GridModel& grid, const FluidTables& tables,
                     const Schedule& schedule, RunOptions& options);

}  // namespace kvr
