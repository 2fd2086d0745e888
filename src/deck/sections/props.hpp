#pragma once

#include "deck/options.hpp"
#include "deck/reading/section_reader.hpp"
#include "fluid/tables.hpp"
#include "model/grid.hpp"

namespace kvr {

/// What PROPS reads and writes.
struct PropsRecords {
    const RunOptions& options;
    FluidTables& tables;
    const GridModel& grid;  // what boxes of arrays stand in
};

/// Reads the section and finishes the tables.
void readProps(SectionReader& reader, PropsRecords& records);

}  // namespace kvr
