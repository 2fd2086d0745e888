#pragma once

#include "deck/options.hpp"
#include "deck/reading/section_reader.hpp"
#include "model/grid.hpp"

namespace kvr {

/// What GRID reads and writes.
struct GridRecords {
    RunOptions& options;  // useNewtran, useJFunction, surfaceTension
    GridModel& grid;
};

/// Reads the section, applies the array arithmetic, builds and checks the geometry.
void readGridSection(SectionReader& reader, GridRecords& records);

/// The EDIT section: MULTIPLY rows only, kept for conditioning.
void readEditSection(SectionReader& reader, GridModel& grid);

}  // namespace kvr
