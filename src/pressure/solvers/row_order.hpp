#pragma once

#include "pressure/solvers/linear_system.hpp"

#include <vector>

namespace kvr {

/// Order in which the multigrid numbers the rows: entry i is the row of the system that becomes row i.
///
/// The cells of a box count along three axes; couplings of equal column offset (1, NX, NX*NY) run along one
/// of them. The strength of an axis is the sum of |a_ij| / a_ii over its couplings, divided by the number of
/// planes they cross: what one cut across the axis severs. The strongest axis counts fastest and the weakest
/// slowest, so that ranges of consecutive rows are cut off across weak couplings and strongly coupled columns
/// of cells stay together. Offsets are taken from the pattern, those that occur in at least an eighth of
/// the cell rows; where they do not make a box, rows keep their order. Rows behind the cells stay last.
std::vector<int> sweepOrder(const LinearSystem& system);

}  // namespace kvr
