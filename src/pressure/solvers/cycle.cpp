#include "pressure/solvers/cycle.hpp"

#include <algorithm>

namespace kvr {

namespace {

constexpr int CoarsestSweeps = 10;  // symmetric sweeps where the coarsest matrix is not factored

/// Forward sweep from the zero vector: only the lower triangle takes part.
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
void restrictResidual(const SweepMatrix& a, const SparseMatrix& interpolation, std::span<const double> x,
                      std::span<double> coarse) {
    std::fill(coarse.begin(), coarse.end(), 0.0);
    for (int i = 0; i < a.rows; ++i) {
        double r = 0.0;
        for (int k = a.upperStart[i]; k < a.upperStart[i + 1]; ++k) r -= a.upper[k] * x[a.upperColumn[k]];
        for (int k = interpolation.start[i]; k < interpolation.start[i + 1]; ++k)
            coarse[interpolation.column[k]] += interpolation.value[k] * r;
    }
}

void addInterpolated(const SparseMatrix& interpolation, std::span<const double> coarse, std::span<double> x) {
    for (int i = 0; i < interpolation.rows; ++i) {
        double sum = 0.0;
        for (int k = interpolation.start[i]; k < interpolation.start[i + 1]; ++k)
            sum += interpolation.value[k] * coarse[interpolation.column[k]];
        x[i] += sum;
    }
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

}  // namespace

void splitTriangles(const SparseMatrix& matrix, SweepMatrix& split) {
    const auto rows = static_cast<std::size_t>(matrix.rows);
    const std::size_t half = matrix.column.size() / 2;
    split.rows = matrix.rows;
    split.inverseDiagonal.resize(rows);
    split.lowerStart.assign(1, 0);
    split.upperStart.assign(1, 0);
    for (auto* list : {&split.lowerStart, &split.upperStart}) list->reserve(rows + 1);
    for (auto* list : {&split.lowerColumn, &split.upperColumn}) {
        list->clear();
        list->reserve(half);
    }
    for (auto* list : {&split.lower, &split.upper}) {
        list->clear();
        list->reserve(half);
    }
    for (int i = 0; i < matrix.rows; ++i) {
        const double diagonal = matrix.value[matrix.start[i]];
        split.inverseDiagonal[i] = diagonal != 0.0 ? 1.0 / diagonal : 1.0;
        for (int k = matrix.start[i] + 1; k < matrix.start[i + 1]; ++k) {
            const bool low = matrix.column[k] < i;
            (low ? split.lowerColumn : split.upperColumn).push_back(matrix.column[k]);
            (low ? split.lower : split.upper).push_back(matrix.value[k]);
        }
        split.lowerStart.push_back(static_cast<int>(split.lowerColumn.size()));
        split.upperStart.push_back(static_cast<int>(split.upperColumn.size()));
    }
}

void applyCycle(Hierarchy& hierarchy, std::span<const double> b, std::span<double> x) {
    std::vector<MultigridLevel>& levels = hierarchy.levels;
    const int last = static_cast<int>(levels.size()) - 1;
    const auto right = [&](int l) { return l == 0 ? b : std::span<const double>(levels[l].b); };
    const auto unknown = [&](int l) { return l == 0 ? x : std::span<double>(levels[l].x); };
    for (int l = 0; l < last; ++l) {
        sweepForwardFromZero(levels[l].matrix, right(l), unknown(l));
        restrictResidual(levels[l].matrix, levels[l].interpolation, unknown(l), levels[l + 1].b);
    }
    solveCoarsest(hierarchy, levels[last].matrix, right(last), unknown(last));
    for (int l = last - 1; l >= 0; --l) {
        addInterpolated(levels[l].interpolation, unknown(l + 1), unknown(l));
        sweepBackward(levels[l].matrix, right(l), unknown(l));
    }
}

}  // namespace kvr
