#pragma once

#include "deck/options.hpp"
#include "deck/schedule.hpp"
#include "deck/section_reader.hpp"
#include "fluid/initial_conditions.hpp"
#include "fluid/tables.hpp"
#include "run/clock.hpp"

namespace kvr {

/// What the SCHEDULE section reads and writes.
struct ScheduleRecords {
    RunOptions& options;  // useHistoryControls, solverPhaseEnd
    const FluidTables& tables;
    const InitialConditions& initial;
    Schedule& schedule;
    RunClock& clock;
};

/// Reads the section. The closing steps are `finishSchedule`.
void readScheduleSection(SectionReader& reader, ScheduleRecords& records);

/// Closing steps 1 to 3 of the section: warnings, the empty last step taken off.
void closeSchedule(const Console& console, Schedule& schedule);

/// The four time tables and the end time; prints the report dates.
void buildTimeTables(const Console& console, ScheduleRecords& records);

}  // namespace kvr
