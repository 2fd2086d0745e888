#pragma once

#include "deck/aquifers.hpp"
#include "deck/options.hpp"
#include "deck/reading/section_reader.hpp"
#include "fluid/initial_conditions.hpp"
#include "fluid/tables.hpp"
#include "model/grid.hpp"

namespace kvr {

/// What SOLUTION reads and writes.
struct SolutionRecords {
    RunOptions& options;  // restartStep
    const FluidTables& tables;
    const GridModel& grid;
    InitialConditions& initial;
    GivenAquifers& aquifers;
};

/// Gives the arrays of the initial state their size, zero where nothing was read.
void sizeInitialArrays(const GridModel& grid, InitialConditions& initial);

/// Reads the section and warns of arrays that cannot be meant. The arrays have their size.
void readSolution(SectionReader& reader, SolutionRecords& records);

/// REGIONS: SATNUM per cell, values out of range become 1.
void readRegions(SectionReader& reader, const RunOptions& options, GridModel& grid);

}  // namespace kvr
