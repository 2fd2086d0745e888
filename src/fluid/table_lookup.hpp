#pragma once

#include <span>

namespace kvr {

/// Linear interpolation with a row search on a rising axis; rows are 1-based. At or below x[first] the
/// first segment is extended, at or above x[last] the last one; between, rows are scanned from `first`
/// in steps of `step` until x[i] < value <= x[i + step]; without such a row the result is 0. Never
/// below 0.
double TableLookup(std::span<const double> x, std::span<const double> y, int first, int step, int last,
                   double value);

}  // namespace kvr
