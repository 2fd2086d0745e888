#pragma once

#include "deck/aquifers.hpp"
#include "deck/reading/section_reader.hpp"
#include "fluid/tables.hpp"

namespace kvr {

/// AQUFETP and AQUCT: rows that each give an aquifer; one with the number of an earlier one takes its place.
/// A size that is not above 0 stops at its row.
void readFetkovichAquifers(SectionReader& reader, GivenAquifers& aquifers);
void readCarterTracyAquifers(SectionReader& reader, GivenAquifers& aquifers);

/// AQUANCON: rows of an aquifer, a box, a face, what its share goes by, a factor, and whether faces between
/// active cells count.
void readAquiferFaces(SectionReader& reader, const GridModel& grid, GivenAquifers& aquifers);

/// AQUTAB: a table of dimensionless times and pressures, the next one from number 2 on.
void readInfluenceTable(SectionReader& reader, FluidTables& tables);

}  // namespace kvr
