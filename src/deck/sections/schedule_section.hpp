#pragma once

#include "deck/options.hpp"
#include "deck/reading/section_reader.hpp"
#include "deck/schedule.hpp"
#include "fluid/initial_conditions.hpp"
#include "fluid/tables.hpp"
#include "model/grid.hpp"
#include "run/records/clock.hpp"

#include <map>
#include <string>

namespace kvr {

/// What the SCHEDULE section reads and writes.
struct ScheduleRecords {
    RunOptions& options;  // useHistoryControls, solverPhaseEnd
    const FluidTables& tables;
    const InitialConditions& initial;
    Schedule& schedule;
    RunClock& clock;
    const GridModel& grid;            // its faults
    std::string historyControl = "";  // WHISTCTL, of the rows of WCONHIST behind it; blank: their own
    std::map<std::string, double> onShares = {};  // GEFAC, by group
};

/// Reads the section, up to its closing message. A further SCHEDULE section goes on where the last one
/// ended.
void readScheduleSection(SectionReader& reader, ScheduleRecords& records);

/// Closes the schedule: a deck without steps gets one of length 0, a deck without wells a warning, and
/// the empty step behind the last one is taken off.
void closeSchedule(const Console& console, Schedule& schedule);

/// The four time tables and the end time from the steps; prints the report dates. SIMEND before the last
/// step only sets the end; behind it the last step length repeats up to it. Every step given is a report,
/// and so is the end.
void buildTimeTables(const Console& console, ScheduleRecords& records);

}  // namespace kvr
