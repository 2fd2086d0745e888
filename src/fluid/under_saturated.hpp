#pragma once

#include "fluid/table_lookup.hpp"
#include "fluid/tables.hpp"

#include <span>
#include <vector>

namespace kvr {

/// Rows of one Rs in psia and cp: pressure, B, mu of the saturated state, then of rising pressures.
using OilRowsOfRs = std::vector<double>;

/// Nodes of all saturated rows from the rows of each Rs, in the order of the table. An Rs without rows of its
/// own takes those of the next one above that has some (the last has those of the one below), as the same
/// relative changes of 1/B and 1/(B mu): equal compressibility. No nodes where no Rs has any.
UnderSaturatedRows underSaturatedRows(std::span<const OilRowsOfRs> records);

/// Change of a reciprocal, `column`, from the bubble point to `rise` psi above it, between the saturated rows
/// of `place`:
///   (1 - w) D_low(rise) + w D_high(rise)
/// each linear between its nodes and beyond them.
double underSaturatedChange(const UnderSaturatedRows& rows, std::span<const double> column,
                            const TablePlace& place, double rise);

}  // namespace kvr
