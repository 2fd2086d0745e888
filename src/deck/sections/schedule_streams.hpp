#pragma once

#include "deck/sections/schedule_section.hpp"

namespace kvr {

// Handlers of the keywords for what injected fluids carry. Rows end at a slash line; names of wells stand for
// wells as in schedule_wells.hpp.

/// Concentration of a tracer in what a well injects, from the present step on.
void readWtracer(SectionReader& reader, ScheduleRecords& records);

/// Composition of an injection stream: a name and a mole fraction for each component, those left out 0. A
/// later row of the same name replaces the earlier one.
void readWellstre(SectionReader& reader, ScheduleRecords& records);

/// The stream that a well injects.
void readWinjgas(SectionReader& reader, ScheduleRecords& records);

}  // namespace kvr
