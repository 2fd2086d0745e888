#pragma once

#include "base/console.hpp"
#include "base/units.hpp"
#include "model/grid.hpp"
#include "pressure/wells/wells.hpp"

namespace kvr {

/// The control table of the wells to console and log: a line per label, a column per well, rates in stb,
/// rb or Mscf a day.
void listWellControls(const Console& console, const UnitSystem& units, const WellRecord& wells);

/// The connection report to the log, a line per connection.
void listConnections(const Console& console, const GridModel& grid, const WellRecord& wells);

}  // namespace kvr
