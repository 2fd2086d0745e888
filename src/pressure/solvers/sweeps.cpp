#include "pressure/solvers/sweeps.hpp"

#include <cmath>

namespace kvr {

namespace {

constexpr int MostSweepRanges = 8;        // swept side by side
constexpr int ShortestSweepRange = 4096;  // rows below which a range is not worth a thread

/// b less row i of the triangle times x.
double reduced(const Triangle& t, int i, double b, const double* x) {
    const int* column = t.column.data();
    const double* value = t.value.data();
    const int end = t.start[i + 1];
    for (int k = t.start[i]; k < end; ++k) b -= value[k] * x[column[k]];
    return b;
}

void relax(const SweepMatrix& a, int i, const double* b, double* x) {
    x[i] = reduced(a.upper, i, reduced(a.lower, i, b[i], x), x) * a.inverseDiagonal[i];
}

/// What a residual b - A x with the sweep's diagonal lacks in the k-th border row.
double borderTerm(const BorderRows& border, int k, const double* x) {
    double sum = border.surplus[k] * x[border.row[k]];
    for (int m = border.start[k]; m < border.start[k + 1]; ++m) sum -= border.value[m] * x[border.column[m]];
    return sum;
}

/// Moves to the right side what a sweep from x sees of other ranges: their values before it.
void moveBorders(const SweepMatrix& a, double* b, const double* x) {
    const BorderRows& border = a.border;
    forRangeNumbers(a.ranges, [&](int r) {
        for (int k = border.rangeStart[r]; k < border.rangeStart[r + 1]; ++k)
            b[border.row[k]] += borderTerm(border, k, x);
    });
}

bool crosses(const SweepMatrix& split, RowRange range, int j) {
    return j < split.tail && (j < range.first || j >= range.end);
}

/// Rows of the r-th range, or of the tail behind the last one.
RowRange rowsOf(const SweepMatrix& split, int r) {
    return r < split.ranges.count ? split.ranges[r] : RowRange{split.tail, split.rows};
}

/// Entries of each part in the rows of a range, counted into the starts; returns the border rows and entries.
struct BorderCount {
    int rows = 0;
    int entries = 0;
};

BorderCount countRange(const SparseMatrix& matrix, int r, SweepMatrix& split) {
    const RowRange range = rowsOf(split, r);
    const bool cut = r < split.ranges.count && split.ranges.count > 1;
    BorderCount border;
    for (int i = range.first; i < range.end; ++i) {
        int lower = 0, across = 0;
        for (int k = matrix.start[i] + 1; k < matrix.start[i + 1]; ++k) {
            const int j = matrix.column[k];
            if (cut && crosses(split, range, j))
                ++across;
            else
                lower += j < i ? 1 : 0;
        }
        split.lower.start[i + 1] = lower;
        split.upper.start[i + 1] = matrix.start[i + 1] - matrix.start[i] - 1 - lower - across;
        border.entries += across;
        border.rows += across > 0 ? 1 : 0;
    }
    return border;
}

void sizeTriangle(Triangle& triangle) {
    for (std::size_t i = 1; i < triangle.start.size(); ++i) triangle.start[i] += triangle.start[i - 1];
    triangle.column.resize(static_cast<std::size_t>(triangle.start.back()));
    triangle.value.resize(triangle.column.size());
}

/// Row starts and sizes of the parts; `entryStart` gets each range's first border entry.
void layOut(const SparseMatrix& matrix, SweepMatrix& split, std::vector<int>& entryStart) {
    const auto size = static_cast<std::size_t>(matrix.rows) + 1;
    split.lower.start.resize(size);
    split.upper.start.resize(size);
    split.lower.start[0] = split.upper.start[0] = 0;
    const int count = split.ranges.count;
    std::vector<BorderCount> found(static_cast<std::size_t>(count));
    forRangeNumbers(split.ranges, [&](int r) { found[r] = countRange(matrix, r, split); });
    countRange(matrix, count, split);
    sizeTriangle(split.lower);
    sizeTriangle(split.upper);
    split.border.rangeStart.assign(1, 0);
    entryStart.assign(1, 0);
    for (const BorderCount& border : found) {
        split.border.rangeStart.push_back(split.border.rangeStart.back() + border.rows);
        entryStart.push_back(entryStart.back() + border.entries);
    }
    const auto borderRows = static_cast<std::size_t>(split.border.rangeStart.back());
    split.border.row.resize(borderRows);
    split.border.surplus.resize(borderRows);
    split.border.start.assign(borderRows + 1, entryStart.back());
    split.border.column.resize(static_cast<std::size_t>(entryStart.back()));
    split.border.value.resize(split.border.column.size());
}

/// Where the next entries of a range go.
struct Places {
    int lower = 0, upper = 0, borderRow = 0, border = 0;
};

/// Copies row i to its parts; returns the absolute sum of its couplings across borders.
double copyRow(const SparseMatrix& matrix, int i, RowRange range, bool cut, SweepMatrix& split, Places& to) {
    double across = 0.0;
    for (int k = matrix.start[i] + 1; k < matrix.start[i + 1]; ++k) {
        const int j = matrix.column[k];
        const double value = matrix.value[k];
        if (cut && crosses(split, range, j)) {
            split.border.column[to.border] = j;
            split.border.value[to.border++] = value;
            across += std::abs(value);
        } else if (j < i) {
            split.lower.column[to.lower] = j;
            split.lower.value[to.lower++] = value;
        } else {
            split.upper.column[to.upper] = j;
            split.upper.value[to.upper++] = value;
        }
    }
    return across;
}

void copyRange(const SparseMatrix& matrix, int r, int firstBorderEntry, SweepMatrix& split) {
    const RowRange range = rowsOf(split, r);
    if (range.first >= range.end) return;
    const bool cut = r < split.ranges.count && split.ranges.count > 1;
    Places to{split.lower.start[range.first], split.upper.start[range.first], split.border.rangeStart[r],
              firstBorderEntry};
    for (int i = range.first; i < range.end; ++i) {
        const int before = to.border;
        const double across = copyRow(matrix, i, range, cut, split, to);
        double diagonal = matrix.value[matrix.start[i]];
        if (to.border > before) {
            const double surplus = BorderShare * across;
            diagonal += surplus;
            split.border.row[to.borderRow] = i;
            split.border.start[to.borderRow] = before;
            split.border.surplus[to.borderRow++] = surplus;
        }
        split.inverseDiagonal[i] = diagonal != 0.0 ? 1.0 / diagonal : 1.0;
    }
}

}  // namespace

void splitForSweeps(const SparseMatrix& matrix, int tailRows, SweepMatrix& split) {
    split.rows = matrix.rows;
    split.tail = matrix.rows - tailRows;
    split.ranges = cutRows(split.tail, ShortestSweepRange, MostSweepRanges);
    split.inverseDiagonal.resize(static_cast<std::size_t>(matrix.rows));
    std::vector<int> entryStart;
    layOut(matrix, split, entryStart);
    forRangeNumbers(split.ranges, [&](int r) { copyRange(matrix, r, entryStart[r], split); });
    copyRange(matrix, split.ranges.count, entryStart.back(), split);
}

void sweepForwardFromZero(const SweepMatrix& a, std::span<const double> b, std::span<double> x) {
    const auto sweep = [&](RowRange range) {
        for (int i = range.first; i < range.end; ++i)
            x[i] = reduced(a.lower, i, b[i], x.data()) * a.inverseDiagonal[i];
    };
    forRanges(a.ranges, sweep);
    sweep({a.tail, a.rows});
}

void formSweptResidual(const SweepMatrix& a, std::span<const double> x, std::span<double> r) {
    const BorderRows& border = a.border;
    const auto form = [&](RowRange range) {
        for (int i = range.first; i < range.end; ++i) r[i] = reduced(a.upper, i, 0.0, x.data());
    };
    forRangeNumbers(a.ranges, [&](int n) {
        form(a.ranges[n]);
        for (int k = border.rangeStart[n]; k < border.rangeStart[n + 1]; ++k)
            r[border.row[k]] += borderTerm(border, k, x.data());
    });
    form({a.tail, a.rows});
}

void sweepForward(const SweepMatrix& a, std::span<double> b, std::span<double> x) {
    moveBorders(a, b.data(), x.data());
    const auto sweep = [&](RowRange range) {
        for (int i = range.first; i < range.end; ++i) relax(a, i, b.data(), x.data());
    };
    forRanges(a.ranges, sweep);
    sweep({a.tail, a.rows});
}

void sweepBackward(const SweepMatrix& a, std::span<double> b, std::span<double> x) {
    const auto sweep = [&](RowRange range) {
        for (int i = range.end - 1; i >= range.first; --i) relax(a, i, b.data(), x.data());
    };
    moveBorders(a, b.data(), x.data());
    sweep({a.tail, a.rows});
    forRanges(a.ranges, sweep);
}

}  // namespace kvr
