#pragma once

#include <span>

namespace kvr {

/// Linear interpolation with a row search on a rising axis; rows are 1-based. At or below x[first] the
/// first segment is extended, at or above x[last] the last one; between, it is the row i = first,
/// first + step, ... with x[i] < value <= x[i + step]; without such a row the result is 0. Never below 0.
/// Rows that repeat an axis value make no segment; a table of one axis value is constant.
double TableLookup(std::span<const double> x, std::span<const double> y, int first, int step, int last,
                   double value);

/// Where a value stands on an axis: between two rows (0-based, low < high; equal on a one-value axis),
/// at `weight` of the way, outside 0..1 beyond the ends. One search serves every column of a table.
struct TablePlace {
    int low = 0;
    int high = 0;
    double weight = 0.0;
    bool found = true;  // false: the value is not a number, or the axis does not rise
};

/// The search of TableLookup with step 1.
TablePlace findPlace(std::span<const double> x, int first, int last, double value);

/// The result of TableLookup at a place found before, to the same bits.
inline double valueAt(std::span<const double> y, const TablePlace& place) {
    if (!place.found) return 0.0;
    const auto low = static_cast<std::size_t>(place.low);
    const auto high = static_cast<std::size_t>(place.high);
    const double value = y[low] + place.weight * (y[high] - y[low]);
    return value > 0.0 ? value : 0.0;
}

}  // namespace kvr
