#pragma once

#include "deck/reading/section_reader.hpp"
#include "model/grid.hpp"

namespace kvr {

// Keywords that weaken or strengthen connections by the faces of cells: MULTX .. MULTZ-, FAULTS, MULTFLT.

/// One factor per cell for its connection through a face (1..6, low x .. high z).
void readFaceMultiplier(SectionReader& reader, int face, GridModel& grid);

/// Takes a row of EQUALS or MULTIPLY that names MULTX-, MULTY- or MULTZ-, and sets the factors of its box or
/// multiplies them; false for any other name.
bool setFaceMultiplier(const ArithmeticRow& row, bool multiplies, GridModel& grid);

/// Rows of fault name, box and face, up to a slash line.
void readFaults(SectionReader& reader, GridModel& grid);

/// What a factor does to one that the fault has from an earlier row: GRID replaces it, EDIT multiplies.
enum class FaultMeans { Replace, Multiply };

/// Rows of fault name and factor, up to a slash line. A fault that FAULTS has not named is told.
void readFaultMultipliers(SectionReader& reader, FaultMeans means, GridModel& grid);

}  // namespace kvr
