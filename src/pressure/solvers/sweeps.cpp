#include "pressure/solvers/sweeps.hpp"

#include <cmath>

namespace kvr {

namespace {

constexpr int MostSweepRanges = 8;  // swept side by side

/// b less the entries first..end - 1 times x.
double reduced(const Couplings& c, int first, int end, double b, const double* x) {
    const int* column = c.column.data();
    const float* value = c.value.data();
    for (int k = first; k < end; ++k) b -= static_cast<double>(value[k]) * x[column[k]];
    return b;
}

double withoutLower(const Couplings& c, int i, double b, const double* x) {
    return reduced(c, c.start[i], c.middle[i], b, x);
}

double withoutUpper(const Couplings& c, int i, double b, const double* x) {
    return reduced(c, c.middle[i], c.start[i + 1], b, x);
}

void relax(const SweepMatrix& a, int i, const double* b, double* x) {
    x[i] = reduced(a.inner, a.inner.start[i], a.inner.start[i + 1], b[i], x) * a.inverseDiagonal[i];
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
        split.inner.middle[i] = lower;
        split.inner.start[i + 1] = matrix.start[i + 1] - matrix.start[i] - 1 - across;
        border.entries += across;
        border.rows += across > 0 ? 1 : 0;
    }
    return border;
}

/// Counts become places.
void sizeCouplings(Couplings& c) {
    for (std::size_t i = 0; i < c.middle.size(); ++i) {
        c.middle[i] += c.start[i];
        c.start[i + 1] += c.start[i];
    }
    c.column.resize(static_cast<std::size_t>(c.start.back()));
    c.value.resize(c.column.size());
}

/// Row starts and sizes of the parts; `entryStart` gets each range's first border entry.
void layOut(const SparseMatrix& matrix, SweepMatrix& split, std::vector<int>& entryStart) {
    split.inner.start.resize(static_cast<std::size_t>(matrix.rows) + 1);
    split.inner.middle.resize(static_cast<std::size_t>(matrix.rows));
    split.inner.start[0] = 0;
    const int count = split.ranges.count;
    std::vector<BorderCount> found(static_cast<std::size_t>(count));
    forRangeNumbers(split.ranges, [&](int r) { found[r] = countRange(matrix, r, split); });
    countRange(matrix, count, split);
    sizeCouplings(split.inner);
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
    int borderRow = 0, border = 0;
};

/// What a row's couplings leave for its diagonal.
struct RowRest {
    double across = 0.0;   // absolute sum of the couplings across borders
    double rounded = 0.0;  // what the others lose by rounding
};

/// An entry at its place; returns what rounding takes from it.
double putEntry(int column, double value, int place, Couplings& couplings) {
    const auto rounded = static_cast<float>(value);
    couplings.column[place] = column;
    couplings.value[place] = rounded;
    return value - static_cast<double>(rounded);
}

/// Copies row i to its parts.
RowRest copyRow(const SparseMatrix& matrix, int i, RowRange range, bool cut, SweepMatrix& split, Places& to) {
    RowRest rest;
    int lower = split.inner.start[i], upper = split.inner.middle[i];
    for (int k = matrix.start[i] + 1; k < matrix.start[i + 1]; ++k) {
        const int j = matrix.column[k];
        const double value = matrix.value[k];
        if (cut && crosses(split, range, j)) {
            split.border.column[to.border] = j;
            split.border.value[to.border++] = value;
            rest.across += std::abs(value);
        } else {
            rest.rounded += putEntry(j, value, j < i ? lower++ : upper++, split.inner);
        }
    }
    return rest;
}

void copyRange(const SparseMatrix& matrix, int r, int firstBorderEntry, SweepMatrix& split) {
    const RowRange range = rowsOf(split, r);
    if (range.first >= range.end) return;
    const bool cut = r < split.ranges.count && split.ranges.count > 1;
    Places to{split.border.rangeStart[r], firstBorderEntry};
    for (int i = range.first; i < range.end; ++i) {
        const int before = to.border;
        const RowRest rest = copyRow(matrix, i, range, cut, split, to);
        double diagonal = matrix.value[matrix.start[i]] + rest.rounded;
        if (to.border > before) {
            const double surplus = BorderShare * rest.across;
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
            x[i] = withoutLower(a.inner, i, b[i], x.data()) * a.inverseDiagonal[i];
    };
    forRanges(a.ranges, sweep);
    sweep({a.tail, a.rows});
}

void formSweptResidual(const SweepMatrix& a, std::span<const double> x, std::span<double> r) {
    const BorderRows& border = a.border;
    const auto form = [&](RowRange range) {
        for (int i = range.first; i < range.end; ++i) r[i] = withoutUpper(a.inner, i, 0.0, x.data());
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
