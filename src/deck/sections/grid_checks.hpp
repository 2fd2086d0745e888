#pragma once

#include "deck/reading/section_reader.hpp"
#include "model/grid.hpp"

namespace kvr {

/// A section with cell arrays in front of the dimensions stops.
void checkDimensionsKnown(const SectionReader& reader, const GridModel& grid);

/// Switches off cells without rock (porosity or net-to-gross tiny; the count always goes out) and cells
/// without volume, and sets permeabilities that are no number of 0 or more to 0; the latter two print a line
/// only when they were needed.
void settleActivity(const SectionReader& reader, GridModel& grid);

/// The checks at the end of the section, each of which stops: block sizes of the first row, tops of the first
/// layer, porosity, permeability.
void checkGridArrays(SectionReader& reader, const GridModel& grid);

}  // namespace kvr
