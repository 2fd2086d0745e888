#pragma once

#include "fluid/table_lookup.hpp"
#include "fluid/tables.hpp"

#include <span>
#include <vector>

namespace kvr {

/// Rows of one Rs in psia and cp: pressure, B, mu of the saturated state, then of rising pressures.
using OilRowsOfRs = std::vector<double>;

/// Nodes of all saturated rows from the rows of each Rs, in the order of the table. An Rs without rows of its
/// own takes those of the next one above that has some (the last has those of the one below): equal
/// compressibility. No nodes where no Rs has any.
UnderSaturatedRows underSaturatedRows(std::span<const OilRowsOfRs> records);

/// Factor of a reciprocal, `column`, from the bubble point to `rise` psi above it, between the saturated rows
/// of `place`, whose weight w counts as 0..1 (oil that holds more gas than its table has the last row's
/// factor):
///   (1 - w) F_low(rise) + w F_high(rise)
/// each linear between its nodes; beyond them its last slope goes on, of a falling one that of its
/// reciprocal.
double underSaturatedFactor(const UnderSaturatedRows& rows, std::span<const double> column,
                            const TablePlace& place, double rise);

}  // namespace kvr
