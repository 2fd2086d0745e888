#pragma once

#include "deck/reading/section_reader.hpp"
#include "model/grid.hpp"

namespace kvr {

// Array arithmetic of GRID and EDIT in a deck of the common form: every row acts where it stands, on the
// arrays as the lines before it have left them.

/// Sets, adds to or multiplies, by `row.action`, the cells of a row's box or region, its value in the deck's
/// unit. MULTX .. MULTZ act on the connection to the upper neighbour, as the keywords do; TRANX .. TRANZ
/// and PORV are multiplied by such factors, or set in place of what is computed. False for an array that has
/// no such rows.
bool actInOrder(const SectionReader& reader, const ArithmeticRow& row, GridModel& grid);

/// Copies the box of one array of decimal numbers to another; false where either is none of them.
bool copyInOrder(const ArithmeticRow& row, GridModel& grid);

}  // namespace kvr
