#pragma once

#include "deck/sections/schedule_section.hpp"

namespace kvr {

// Handlers of the well keywords. Each reads rows up to a slash line into the present step: a well is one
// element per step, found by its name; a trailing asterisk in a name stands for all known wells that
// begin with the letters before it; a name that no WELSPECS or WELSPEC row has given is skipped with a
// line. Items that a row defaults have fixed values, they do not keep those of an earlier row. All
// numbers are taken into internal units here.

void readWelspec(SectionReader& reader, ScheduleRecords& records);
void readWelspecs(SectionReader& reader, ScheduleRecords& records);
void readCompdat(SectionReader& reader, ScheduleRecords& records);
void readWconprod(SectionReader& reader, ScheduleRecords& records);
void readWconinje(SectionReader& reader, ScheduleRecords& records);
void readWconhist(SectionReader& reader, ScheduleRecords& records);
void readWconinjh(SectionReader& reader, ScheduleRecords& records);

/// The control of the rows of WCONHIST behind it, in place of their own.
void readWhistctl(SectionReader& reader, ScheduleRecords& records);

/// Reservoir volume rate of observed surface rates, rb/day, at pressure p:
///   Bw(p) qw + Bo(p) qo + Bg(p) qg - (qo / Bo(p)) Bg(p) Rs(p)
/// on the saturated curve. Bg is 1 without a gas phase, Rs is 0 for dead oil. qo, qw stb/day, qg surface
/// barrels/day.
double historyReservoirRate(const FluidTables& tables, double p, double qo, double qw, double qg);

}  // namespace kvr
