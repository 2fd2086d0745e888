#include "pressure/solvers/interpolation.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

namespace kvr {

namespace {

struct Weight {
    int row = 0;  // coarse point by its row of the fine level
    double value = 0.0;
};

/// Working arrays of one interpolation: what a row needs, addressed by row numbers of the level.
struct RowScratch {
    std::vector<int> slot;        // [rows] place of a coarse point in `weights`, -1 outside
    std::vector<int> strongMark;  // [rows] last row that depends strongly on this one
    std::vector<Weight> weights;  // of the row in work
};

void collect(int j, RowScratch& scratch) {
    if (scratch.slot[j] >= 0) return;
    scratch.slot[j] = static_cast<int>(scratch.weights.size());
    scratch.weights.push_back({j, 0.0});
}

/// The coarse points within strong distance two of row i, and the marks of its strong neighbours.
void collectCoarse(int i, const StrengthGraph& graph, std::span<const PointKind> kind, RowScratch& scratch) {
    scratch.weights.clear();
    for (int k = graph.start[i]; k < graph.start[i + 1]; ++k) {
        const int j = graph.column[k];
        scratch.strongMark[j] = i;
        if (kind[j] == PointKind::Coarse) {
            collect(j, scratch);
            continue;
        }
        for (int m = graph.start[j]; m < graph.start[j + 1]; ++m) {
            if (kind[graph.column[m]] == PointKind::Coarse) collect(graph.column[m], scratch);
        }
    }
}

/// Distributes the coupling a_ik of a strong fine neighbour over the coarse points and row i itself;
/// returns what falls on the diagonal of row i.
double distribute(const SparseMatrix& matrix, int i, int k, double coupling, RowScratch& scratch) {
    double sum = 0.0, back = 0.0;
    for (int m = matrix.start[k] + 1; m < matrix.start[k + 1]; ++m) {
        const int l = matrix.column[m];
        const double a = matrix.value[m];
        if (a >= 0.0 || (l != i && scratch.slot[l] < 0)) continue;
        sum += a;
        if (l == i) back += a;
    }
    if (sum == 0.0) return coupling;
    const double share = coupling / sum;
    for (int m = matrix.start[k] + 1; m < matrix.start[k + 1]; ++m) {
        const int slot = scratch.slot[matrix.column[m]];
        if (slot >= 0 && matrix.value[m] < 0.0) scratch.weights[slot].value += share * matrix.value[m];
    }
    return share * back;
}

/// Numerators of the weights of row i into the scratch; returns the denominator.
double formWeights(const SparseMatrix& matrix, int i, std::span<const PointKind> kind, RowScratch& scratch) {
    double diagonal = matrix.value[matrix.start[i]];
    for (int m = matrix.start[i] + 1; m < matrix.start[i + 1]; ++m) {
        const int j = matrix.column[m];
        const double a = matrix.value[m];
        const bool strong = scratch.strongMark[j] == i && a < 0.0;
        if (a < 0.0 && scratch.slot[j] >= 0)
            scratch.weights[scratch.slot[j]].value += a;
        else if (strong && kind[j] != PointKind::Coarse)
            diagonal += distribute(matrix, i, j, a, scratch);
        else
            diagonal += a;
    }
    return diagonal;
}

/// Keeps the largest weights; the rest is put on them in proportion, so that the sum stays.
void truncate(std::vector<Weight>& weights) {
    if (weights.size() <= MaxWeights) return;
    double all = 0.0, kept = 0.0;
    for (const Weight& weight : weights) all += weight.value;
    std::nth_element(weights.begin(), weights.begin() + MaxWeights, weights.end(),
                     [](const Weight& a, const Weight& b) {
                         const double sizeA = std::abs(a.value), sizeB = std::abs(b.value);
                         return sizeA > sizeB || (sizeA == sizeB && a.row < b.row);
                     });
    weights.resize(MaxWeights);
    for (const Weight& weight : weights) kept += weight.value;
    if (kept == 0.0) return;
    for (Weight& weight : weights) weight.value *= all / kept;
}

void appendRow(double denominator, std::span<const int> coarseNumber, RowScratch& scratch,
               SparseRows& result) {
    for (const Weight& weight : scratch.weights) scratch.slot[weight.row] = -1;
    truncate(scratch.weights);
    for (const Weight& weight : scratch.weights) {
        if (weight.value == 0.0) continue;
        result.column.push_back(coarseNumber[weight.row]);
        result.value.push_back(-weight.value / denominator);
    }
}

/// Row i of the interpolation.
void interpolateRow(const SparseMatrix& matrix, const StrengthGraph& graph, std::span<const PointKind> kind,
                    std::span<const int> coarseNumber, int i, RowScratch& scratch, SparseRows& result) {
    if (kind[i] == PointKind::Coarse) {
        result.column.push_back(coarseNumber[i]);
        result.value.push_back(1.0);
        return;
    }
    collectCoarse(i, graph, kind, scratch);
    const double denominator = formWeights(matrix, i, kind, scratch);
    if (denominator > 0.0) {
        appendRow(denominator, coarseNumber, scratch, result);
        return;
    }
    for (const Weight& weight : scratch.weights) scratch.slot[weight.row] = -1;
}

}  // namespace

SparseMatrix extendedInterpolation(const SparseMatrix& matrix, const StrengthGraph& graph,
                                   std::span<const PointKind> kind) {
    const auto rows = static_cast<std::size_t>(matrix.rows);
    int coarsePoints = 0;
    std::vector<int> coarseNumber(rows, -1);
    for (std::size_t i = 0; i < rows; ++i) {
        if (kind[i] == PointKind::Coarse) coarseNumber[i] = coarsePoints++;
    }
    const RowRanges ranges = cutRows(matrix.rows, ShortestSetUpRange);
    std::vector<SparseRows> pieces(static_cast<std::size_t>(ranges.count));
#pragma omp parallel if (ranges.count > 1)
    {
        RowScratch scratch{std::vector<int>(rows, -1), std::vector<int>(rows, -1), {}};
#pragma omp for schedule(dynamic, 1)
        for (int r = 0; r < ranges.count; ++r) {
            SparseRows piece;
            for (int i = ranges[r].first; i < ranges[r].end; ++i) {
                interpolateRow(matrix, graph, kind, coarseNumber, i, scratch, piece);
                closeRow(piece);
            }
            pieces[r] = std::move(piece);
        }
    }
    return joined(ranges, coarsePoints, pieces);
}

}  // namespace kvr
