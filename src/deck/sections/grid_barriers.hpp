#pragma once

#include "deck/reading/section_reader.hpp"
#include "model/grid.hpp"

namespace kvr {

// Keywords that weaken or strengthen connections by the faces of cells, MULTX .. MULTZ-, FAULTS, MULTFLT, and
// the one that does so with pore volumes, MULTPV.

/// The face (1..6) that a word names; any other stops.
int faceOf(const SectionReader& reader, const std::string& word);

/// One factor per cell for its connection through a face (1..6, low x .. high z).
void readFaceMultiplier(SectionReader& reader, int face, GridModel& grid);

/// One factor per cell for its pore volume.
void readPoreVolumeMultiplier(SectionReader& reader, GridModel& grid);

/// Takes a row of EQUALS or MULTIPLY that names MULTX-, MULTY-, MULTZ- or MULTPV, and sets the factors of its
/// box or multiplies them; false for any other name.
bool setFactors(const ArithmeticRow& row, bool multiplies, GridModel& grid);

/// Rows of fault name, box and face, up to a slash line.
void readFaults(SectionReader& reader, GridModel& grid);

/// What a factor does to one that the fault has from an earlier row: GRID replaces it, EDIT and SCHEDULE
/// multiply.
enum class FaultMeans { Replace, Multiply };

/// Rows of fault name and factor, up to a slash line, kept in a list with one entry per fault. A fault that
/// FAULTS has not named is told.
void readFaultMultipliers(SectionReader& reader, FaultMeans means, const GridModel& grid,
                          std::vector<FaultMultiplier>& kept);

/// Rows of MULTREGT: two regions, a factor, axes, which of the connections of cells that are not neighbours,
/// and the letter of a numbering, kept in grid.regionMultipliers.
void readRegionMultipliers(SectionReader& reader, GridModel& grid);

/// Rows of two cells and a value, up to a slash line, kept in grid.connectionRows: a transmissibility, or a
/// factor. Regions of tables behind it are told, they have no effect.
void readConnectionRows(SectionReader& reader, ConnectionRow::Means means, GridModel& grid);

}  // namespace kvr
