#pragma once

#include "deck/sections/schedule_section.hpp"

#include <span>

namespace kvr {

// Handlers of the time keywords. A list of step lengths closes the present schedule step and opens the
// next, which starts as its copy.

void readTstep(SectionReader& reader, ScheduleRecords& records);
/// Rows of day, month word and year; a row that is not later than the time reached ends the list.
void readDates(SectionReader& reader, ScheduleRecords& records);
/// The absolute time, days, at which the wells change next.
void readWnext(SectionReader& reader, ScheduleRecords& records);
void readSimend(SectionReader& reader, ScheduleRecords& records);

/// Sees to it that the last schedule step is one that time has not closed yet.
void openScheduleStep(Schedule& schedule);

/// Gives the present schedule step its lengths, days, and opens the next. Nothing happens without any.
void closeScheduleStep(std::span<const double> lengths, Schedule& schedule);

}  // namespace kvr
