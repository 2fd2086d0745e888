#pragma once

#include "deck/sections/schedule_section.hpp"

namespace kvr {

// Handlers of the keywords of groups. A group exists once a row names it; its wells are those whose WELSPECS
// does. Rates are taken into internal units here. What a row leaves open is no limit: it does not keep what
// an earlier row gave.

void readGruptree(SectionReader& reader, ScheduleRecords& records);
void readGconprod(SectionReader& reader, ScheduleRecords& records);
void readGconinje(SectionReader& reader, ScheduleRecords& records);
void readWgrupcon(SectionReader& reader, ScheduleRecords& records);

/// Share of the time that the wells of groups are on, on top of their own.
void readGefac(SectionReader& reader, ScheduleRecords& records);

/// The product of the shares of a group and of all above it.
double onShareOf(const ScheduleRecords& records, const ScheduleStep& step, const std::string& group);

}  // namespace kvr
