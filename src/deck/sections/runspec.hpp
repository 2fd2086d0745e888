#pragma once

#include "deck/options.hpp"
#include "deck/reading/section_reader.hpp"
#include "fluid/tables.hpp"
#include "model/grid.hpp"
#include "run/records/clock.hpp"

namespace kvr {

/// What RUNSPEC writes.
struct RunspecRecords {
    RunOptions& options;
    UnitSystem& units;
    GridModel& grid;
    FluidTables& tables;  // hasGas
    RunClock& clock;      // calendar date
    int dimensLine = 0;   // of the deck, where DIMENS stands; 0: not met
};

/// Reads the section up to its end (the cursor then stands in front of the next section word), checks the
/// dimensions and sizes the grid arrays.
void readRunspec(SectionReader& reader, RunspecRecords& records);

}  // namespace kvr
