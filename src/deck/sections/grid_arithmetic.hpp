#pragma once

#include "deck/sections/grid_section.hpp"
#include "model/array_arithmetic.hpp"

namespace kvr {

// Handlers of the keywords of GRID that change arrays by rows. Rows are kept and applied at the end of the
// section, see applyArithmetic.

void readEquals(SectionReader& reader, GridRecords& records);
void readCopy(SectionReader& reader, GridRecords& records);
void readMultiply(SectionReader& reader, GridRecords& records);
void readAdd(SectionReader& reader, GridRecords& records);

/// The same for the cells of a region: rows of array, value, region and the letter of a numbering.
void readEqualreg(SectionReader& reader, GridRecords& records);
void readMultireg(SectionReader& reader, GridRecords& records);
void readAddreg(SectionReader& reader, GridRecords& records);

/// The numbering that a letter names; any other stops.
RegionSet regionSetOf(const SectionReader& reader, const std::string& word);

/// Stops on a row for a region whose numbering the deck has not given.
void requireRegionNumbers(SectionReader& reader, const ArithmeticStart& start, const GridModel& grid);

}  // namespace kvr
