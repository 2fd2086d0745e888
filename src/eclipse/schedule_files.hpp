#pragma once

#include "base/console.hpp"
#include "base/units.hpp"
#include "deck/options.hpp"
#include "deck/schedule.hpp"
#include "eclipse/well_response.hpp"
#include "pressure/wells/wells.hpp"

#include <cstdio>
#include <string>
#include <vector>

namespace kvr {

/// SCHEDULE_TEMPORARY_FOR_HM.DATA in the folder of the results: the response of a run as a history schedule
/// in the units of the deck: for each report WCONINJH and WCONHIST with the rates and bottom-hole pressures
/// of the response under the controls of the schedule, then the TSTEP that leads there. While gas goes in at
/// a pressure, so that its rate depends on the steps that are taken, for each step of the response. What it
/// lacks of an injector is its rate in the schedule. Wells are those that have a control at the time; their
/// definitions (WELSPECS, COMPDAT) are the deck's.
void Write_ECLSchedule_forHM(const Console& console, const RunOptions& options, const UnitSystem& units,
                             const Schedule& schedule, const SummaryResponse& response);

/// Name of the schedule of one step in the folder of the outside run: SCHEDULE_STP and four digits.
std::string stepScheduleName(int step);

/// Rows of WCONINJE, WCONPROD and WEFAC for the wells as they are controlled now, in the units of the deck.
struct ControlRows {
    std::vector<std::string> injectors, producers, efficiencies;
};
ControlRows controlRows(const Console& console, const UnitSystem& units, const WellRecord& wells);

/// WELSPECS and COMPDAT of an entry of the schedule, and the bound of Rs that holds in it.
void putDefinitions(const UnitSystem& units, const ScheduleStep& entry, std::FILE* file);

/// Writes the wells as they are controlled now, in the units of the deck, as the schedule of one step of `dt`
/// days; the definitions of the wells and what else holds in `entry`, that in force, stand before their
/// controls. `time`: days at which the step starts.
void Write_ECLSchedule_forOP(const Console& console, const RunOptions& options, const UnitSystem& units,
                             const ScheduleStep& entry, const WellRecord& wells, double time, int step,
                             double dt);

}  // namespace kvr
