#pragma once

#include "base/console.hpp"
#include "base/units.hpp"
#include "deck/options.hpp"
#include "fluid/components/component_state.hpp"
#include "model/connections.hpp"
#include "model/grid.hpp"
#include "pressure/records/cell_state.hpp"
#include "pressure/records/velocity_field.hpp"
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

/// What the fluxes through the faces are made of.
struct FluxSource {
    const UnitSystem& units;
    const ConnectionTable& connections;
    const VelocityField& velocity;
};

/// Replaces the .X file of the clock's report step: pressure (psia) and saturations of the active cells;
/// behind the first step the fluxes of the phases through the faces toward higher index along every axis of
/// more than one cell (rb/day, FLR.. keywords), which together are the field that the lines of the step
/// followed; then, where there are any, the maps of wells and times of flight (days). Without the option it
/// does nothing.
void writeRestartFile(const Console& console, const RunOptions& options, const RunClock& clock,
                      const GridModel& grid, const CellState& state, const FluxSource& source,
                      const DiagnosticMaps& maps, const ComponentState& components = {});

}  // namespace kvr
