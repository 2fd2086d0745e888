#pragma once

#include "base/threads.hpp"

#include <algorithm>
#include <array>
#include <cstdint>

namespace kvr {

struct RowRange {
    int first = 0;
    int end = 0;  // one past the last
};

/// The rows 0 .. rows - 1 cut into ranges of nearly equal length for parallel loops. Their number depends
/// on the number of rows alone, never on the number of threads: what is formed range by range has the same
/// bits for any number of threads.
struct RowRanges {
    static constexpr int Most = 64;

    int rows = 0;
    int count = 1;

    RowRange operator[](int range) const {
        return {static_cast<int>(static_cast<std::int64_t>(rows) * range / count),
                static_cast<int>(static_cast<std::int64_t>(rows) * (range + 1) / count)};
    }
};

/// At most `most` ranges of at least `shortest` rows.
inline RowRanges cutRows(int rows, int shortest, int most = RowRanges::Most) {
    return {rows, std::clamp(rows / shortest, 1, std::min(most, RowRanges::Most))};
}

/// work(range) for the ranges of 0 .. rows - 1.
template <class Work>
void forRanges(const RowRanges& ranges, const Work& work) {
#pragma omp parallel for schedule(static) if (ranges.count > 1)
    for (int r = 0; r < ranges.count; ++r) work(ranges[r]);
}

/// work(r) for the numbers of the ranges.
template <class Work>
void forRangeNumbers(const RowRanges& ranges, const Work& work) {
#pragma omp parallel for schedule(static) if (ranges.count > 1)
    for (int r = 0; r < ranges.count; ++r) work(r);
}

/// Sum of term(range) over the ranges, added in their order.
template <class Term>
double sumOverRanges(const RowRanges& ranges, const Term& term) {
    std::array<double, RowRanges::Most> part;
#pragma omp parallel for schedule(static) if (ranges.count > 1)
    for (int r = 0; r < ranges.count; ++r) part[r] = term(ranges[r]);
    double sum = 0.0;
    for (int r = 0; r < ranges.count; ++r) sum += part[r];
    return sum;
}

}  // namespace kvr
