#pragma once

#include "base/cell_array.hpp"
#include "deck/options.hpp"
#include "deck/reading/section_reader.hpp"
#include "fluid/tables.hpp"

#include <span>

namespace kvr {

/// Makes mole fractions sum to 1; negative ones become 0. Both are told, the sum where it is off by more than
/// 1e-3. Fractions that sum to nothing stop the run.
void checkComposition(const SectionReader& reader, std::span<double> fractions);

/// The same for the compositions of all cells, told in one line; cells whose fractions are no composition
/// stop the run.
void checkCellCompositions(const SectionReader& reader, DirectionArray<double>& compositions);

/// What the equation of state needs of every component: a missing keyword, a value that makes none and a
/// reservoir temperature that is none stop the run; names and binary coefficients that are not given have
/// defaults, told. Nothing happens in a deck without components.
void checkComponents(SectionReader& reader, const RunOptions& options, FluidTables& tables);

}  // namespace kvr
