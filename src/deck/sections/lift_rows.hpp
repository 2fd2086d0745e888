#pragma once

#include "deck/sections/schedule_section.hpp"

namespace kvr {

/// VFPPROD and VFPINJ: number, depth, what the axes measure; the axes, each a record; then a record of
/// bottom-hole pressures for each head, water ratio, gas ratio and lift by their places. Axes that do not
/// rise, places off them and pressures left out stop the run. A further table of a number takes the place of
/// the earlier one from the begin of the run on, which is told.
void readProducerLift(SectionReader& reader, ScheduleRecords& records);
void readInjectorLift(SectionReader& reader, ScheduleRecords& records);

}  // namespace kvr
