#pragma once

#include "base/console.hpp"
#include "deck/options.hpp"
#include "model/grid.hpp"
#include "pressure/records/cell_state.hpp"
#include "run/records/clock.hpp"
#include "streamline/diagnostics/diagnostic_maps.hpp"

#include <cstdint>

namespace kvr {

/// Hour of the day and minute of a simulated time in days: whole part of 24 times the fraction of the day,
/// and the fraction of that times 60, truncated.
struct HourMinute {
    std::int32_t hour = 0;
    std::int32_t minute = 0;
};
HourMinute hourMinute(double days);

/// Replaces the .X file of the clock's report step: pressure (psia) and saturations of the active cells,
/// then, where there are any, the maps of wells and times of flight (days). Without the option it does
/// nothing.
void writeRestartFile(const Console& console, const RunOptions& options, const RunClock& clock,
                      const GridModel& grid, const CellState& state, const DiagnosticMaps& maps);

}  // namespace kvr
