#pragma once

#include "deck/sections/schedule_section.hpp"

namespace kvr {

// Handlers of the keywords that change wells which stand already. Rows end at a slash line; names of wells
// stand for wells as in schedule_wells.hpp.

/// Status of a well, or where I, J, K or connection numbers are given of those connections.
void readWelopen(SectionReader& reader, ScheduleRecords& records);

/// A factor on the connection factors of a well, or of the connections named, on top of what stands there.
void readWpimult(SectionReader& reader, ScheduleRecords& records);

/// A target or limit of a well; its control stays, under WELCNTL it becomes the control.
void readWeltarg(SectionReader& reader, ScheduleRecords& records);

/// Share of the time that a well is on.
void readWefac(SectionReader& reader, ScheduleRecords& records);

/// Economic limits of a producer.
void readWecon(SectionReader& reader, ScheduleRecords& records);

/// Largest rise of Rs a day, of the whole field.
void readDrsdt(SectionReader& reader, ScheduleRecords& records);

}  // namespace kvr
