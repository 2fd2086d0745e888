#include "pressure/solvers/cycle.hpp"

#include <algorithm>

namespace kvr {

namespace {

constexpr int CoarsestSweeps = 10;  // symmetric sweeps where the coarsest matrix is not factored

/// Forward sweep from the zero vector: only the lower triangle takes part. Sweeps stay sequential: ranges
/// swept beside each other cut the strong vertical couplings and cost several times the iterations.
void sweepForwardFromZero(const SweepMatrix& a, std::span<const double> b, std::span<double> x) {
    const int* start = a.lowerStart.data();
    for (int i = 0; i < a.rows; ++i) {
        double sum = b[i];
        for (int k = start[i]; k < start[i + 1]; ++k) sum -= a.lower[k] * x[a.lowerColumn[k]];
        x[i] = sum * a.inverseDiagonal[i];
    }
}

double relaxed(const SweepMatrix& a, int i, double b, std::span<const double> x) {
    double sum = b;
    for (int k = a.lowerStart[i]; k < a.lowerStart[i + 1]; ++k) sum -= a.lower[k] * x[a.lowerColumn[k]];
    for (int k = a.upperStart[i]; k < a.upperStart[i + 1]; ++k) sum -= a.upper[k] * x[a.upperColumn[k]];
    return sum * a.inverseDiagonal[i];
}

void sweepForward(const SweepMatrix& a, std::span<const double> b, std::span<double> x) {
    for (int i = 0; i < a.rows; ++i) x[i] = relaxed(a, i, b[i], x);
}

void sweepBackward(const SweepMatrix& a, std::span<const double> b, std::span<double> x) {
    for (int i = a.rows - 1; i >= 0; --i) x[i] = relaxed(a, i, b[i], x);
}

/// Restricts the residual behind a forward sweep from zero. There the residual is minus the upper
/// triangle times x: the sweep has solved the rest.
void restrictResidual(MultigridLevel& level, std::span<const double> x, std::span<double> coarse) {
    const SweepMatrix& a = level.matrix;
    const SparseMatrix& restriction = level.restriction;
    std::vector<double>& residual = level.residual;
    forRanges(cutRows(a.rows, ShortestVectorRange), [&](RowRange range) {
        for (int i = range.first; i < range.end; ++i) {
            double r = 0.0;
            for (int k = a.upperStart[i]; k < a.upperStart[i + 1]; ++k) r -= a.upper[k] * x[a.upperColumn[k]];
            residual[i] = r;
        }
    });
    forRanges(cutRows(restriction.rows, ShortestVectorRange), [&](RowRange range) {
        for (int j = range.first; j < range.end; ++j) {
            double sum = 0.0;
            for (int k = restriction.start[j]; k < restriction.start[j + 1]; ++k)
                sum += restriction.value[k] * residual[restriction.column[k]];
            coarse[j] = sum;
        }
    });
}

void addInterpolated(const SparseMatrix& interpolation, std::span<const double> coarse, std::span<double> x) {
    forRanges(cutRows(interpolation.rows, ShortestVectorRange), [&](RowRange range) {
        for (int i = range.first; i < range.end; ++i) {
            double sum = 0.0;
            for (int k = interpolation.start[i]; k < interpolation.start[i + 1]; ++k)
                sum += interpolation.value[k] * coarse[interpolation.column[k]];
            x[i] += sum;
        }
    });
}

void solveCoarsest(const Hierarchy& hierarchy, const SweepMatrix& a, std::span<const double> b,
                   std::span<double> x) {
    if (hierarchy.coarsestFactored) {
        std::copy(b.begin(), b.end(), x.begin());
        solveFactored(a.rows, hierarchy.coarsest.matrix, hierarchy.coarsest.pivot, x);
        return;
    }
    sweepForwardFromZero(a, b, x);
    sweepBackward(a, b, x);
    for (int sweep = 1; sweep < CoarsestSweeps; ++sweep) {
        sweepForward(a, b, x);
        sweepBackward(a, b, x);
    }
}

/// A triangle's start of each row, its entries counted by belongs(row, column).
template <class Belongs>
void countEntries(const SparseMatrix& matrix, const RowRanges& ranges, const Belongs& belongs,
                  std::vector<int>& start) {
    start.resize(static_cast<std::size_t>(matrix.rows) + 1);
    start[0] = 0;
    forRanges(ranges, [&](RowRange range) {
        for (int i = range.first; i < range.end; ++i) {
            int count = 0;
            for (int k = matrix.start[i] + 1; k < matrix.start[i + 1]; ++k)
                count += belongs(i, matrix.column[k]) ? 1 : 0;
            start[i + 1] = count;
        }
    });
    for (int i = 0; i < matrix.rows; ++i) start[i + 1] += start[i];
}

template <class Belongs>
void copyEntries(const SparseMatrix& matrix, const RowRanges& ranges, const Belongs& belongs,
                 const std::vector<int>& start, std::vector<int>& column, std::vector<double>& value) {
    column.resize(static_cast<std::size_t>(start.back()));
    value.resize(static_cast<std::size_t>(start.back()));
    forRanges(ranges, [&](RowRange range) {
        int place = start[range.first];
        for (int i = range.first; i < range.end; ++i) {
            for (int k = matrix.start[i] + 1; k < matrix.start[i + 1]; ++k) {
                if (!belongs(i, matrix.column[k])) continue;
                column[place] = matrix.column[k];
                value[place++] = matrix.value[k];
            }
        }
    });
}

}  // namespace

void splitTriangles(const SparseMatrix& matrix, SweepMatrix& split) {
    split.rows = matrix.rows;
    split.inverseDiagonal.resize(static_cast<std::size_t>(matrix.rows));
    const RowRanges ranges = cutRows(matrix.rows, ShortestVectorRange);
    forRanges(ranges, [&](RowRange range) {
        for (int i = range.first; i < range.end; ++i) {
            const double diagonal = matrix.value[matrix.start[i]];
            split.inverseDiagonal[i] = diagonal != 0.0 ? 1.0 / diagonal : 1.0;
        }
    });
    const auto low = [](int i, int j) { return j < i; };
    const auto high = [](int i, int j) { return j > i; };
    countEntries(matrix, ranges, low, split.lowerStart);
    copyEntries(matrix, ranges, low, split.lowerStart, split.lowerColumn, split.lower);
    countEntries(matrix, ranges, high, split.upperStart);
    copyEntries(matrix, ranges, high, split.upperStart, split.upperColumn, split.upper);
}

void applyCycle(Hierarchy& hierarchy, std::span<const double> b, std::span<double> x) {
    std::vector<MultigridLevel>& levels = hierarchy.levels;
    const int last = static_cast<int>(levels.size()) - 1;
    const auto right = [&](int l) { return l == 0 ? b : std::span<const double>(levels[l].b); };
    const auto unknown = [&](int l) { return l == 0 ? x : std::span<double>(levels[l].x); };
    for (int l = 0; l < last; ++l) {
        sweepForwardFromZero(levels[l].matrix, right(l), unknown(l));
        restrictResidual(levels[l], unknown(l), levels[l + 1].b);
    }
    solveCoarsest(hierarchy, levels[last].matrix, right(last), unknown(last));
    for (int l = last - 1; l >= 0; --l) {
        addInterpolated(levels[l].interpolation, unknown(l + 1), unknown(l));
        sweepBackward(levels[l].matrix, right(l), unknown(l));
    }
}

}  // namespace kvr
