#include "fluid/table_lookup.hpp"

namespace kvr {

namespace {

double row(std::span<const double> x, int index) {
    return x[static_cast<std::size_t>(index)];
}

TablePlace placeBetween(std::span<const double> x, int low, int high, double value) {
    const double width = row(x, high) - row(x, low);
    return {low, high, width != 0.0 ? (value - row(x, low)) / width : 0.0, true};
}

/// First segment from row `first` on that has a width.
TablePlace extendFirst(std::span<const double> x, int first, int last, double value) {
    int high = first + 1;
    while (high < last && row(x, high) <= row(x, first)) ++high;
    return placeBetween(x, first, high, value);
}

/// Last segment up to row `last` that has a width.
TablePlace extendLast(std::span<const double> x, int first, int last, double value) {
    int low = last - 1;
    while (low > first && row(x, low) >= row(x, last)) --low;
    return placeBetween(x, low, last, value);
}

/// The row i with x[i] < value <= x[i + 1], by bisection.
TablePlace searchInside(std::span<const double> x, int first, int last, double value) {
    int low = first;
    int high = last;
    while (high - low > 1) {
        const int middle = (low + high) / 2;
        if (row(x, middle) < value)
            low = middle;
        else
            high = middle;
    }
    if (row(x, low) < value && value <= row(x, high)) return placeBetween(x, low, high, value);
    return {low, high, 0.0, false};
}

/// The same among rows first, first + step, ... by a scan.
TablePlace scanInside(std::span<const double> x, int first, int step, int last, double value) {
    for (int i = first; step > 0 && i + step <= last; i += step)
        if (row(x, i) < value && value <= row(x, i + step)) return placeBetween(x, i, i + step, value);
    return {first, first, 0.0, false};
}

/// `first`, `last` 0-based here.
TablePlace locate(std::span<const double> x, int first, int step, int last, double value) {
    if (last <= first) return {first, first, 0.0, true};
    if (value <= row(x, first)) return extendFirst(x, first, last, value);
    if (value >= row(x, last)) return extendLast(x, first, last, value);
    return step == 1 ? searchInside(x, first, last, value) : scanInside(x, first, step, last, value);
}

}  // namespace

TablePlace findPlace(std::span<const double> x, int first, int last, double value) {
    return locate(x, first - 1, 1, last - 1, value);
}

double TableLookup(std::span<const double> x, std::span<const double> y, int first, int step, int last,
                   double value) {
    return valueAt(y, locate(x, first - 1, step, last - 1, value));
}

}  // namespace kvr
