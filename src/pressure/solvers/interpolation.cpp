#include "pressure/solvers/interpolation.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace kvr {

namespace {

struct Weight {
    int row = 0;  // coarse point by its row of the fine level
    double value = 0.0;
};

/// A coupling of a fine neighbour that counts, by the slot of its column.
struct Passed {
    int slot = 0;
    double value = 0.0;
};

/// Working arrays of one interpolation: what a row needs, addressed by row numbers of the level.
struct RowScratch {
    std::vector<int> slot;        // [rows] place of a coarse point in `weights`, -1 outside
    std::vector<int> strongMark;  // [rows] last row that depends strongly on this one
    std::vector<Weight> weights;  // of the row in work; its own diagonal behind the coarse points
    std::vector<Passed> passed;   // [longest row] couplings of the neighbour in work

    RowScratch(std::size_t rows, std::size_t longestRow)
        : slot(rows, -1), strongMark(rows, -1), passed(longestRow) {}
};

int longestRow(const SparseMatrix& matrix) {
    int longest = 0;
    for (int i = 0; i < matrix.rows; ++i) longest = std::max(longest, matrix.start[i + 1] - matrix.start[i]);
    return longest;
}

/// The strong couplings to coarse points only.
StrengthGraph strongCoarse(const StrengthGraph& graph, std::span<const PointKind> kind) {
    const int rows = static_cast<int>(graph.start.size()) - 1;
    StrengthGraph coarse;
    coarse.start.resize(graph.start.size());
    coarse.start[0] = 0;
    const auto isCoarse = [&kind](int j) { return kind[j] == PointKind::Coarse; };
    const RowRanges ranges = cutRows(rows, ShortestSetUpRange);
    forRanges(ranges, [&](RowRange range) {
        for (int i = range.first; i < range.end; ++i)
            coarse.start[i + 1] = static_cast<int>(std::count_if(
                graph.column.begin() + graph.start[i], graph.column.begin() + graph.start[i + 1], isCoarse));
    });
    for (int i = 0; i < rows; ++i) coarse.start[i + 1] += coarse.start[i];
    coarse.column.resize(static_cast<std::size_t>(coarse.start[rows]));
    forRanges(ranges, [&](RowRange range) {
        std::copy_if(graph.column.begin() + graph.start[range.first],
                     graph.column.begin() + graph.start[range.end],
                     coarse.column.begin() + coarse.start[range.first], isCoarse);
    });
    return coarse;
}

void collect(int j, RowScratch& scratch) {
    if (scratch.slot[j] >= 0) return;
    scratch.slot[j] = static_cast<int>(scratch.weights.size());
    scratch.weights.push_back({j, 0.0});
}

void collectAll(int i, const StrengthGraph& coarse, RowScratch& scratch) {
    for (int k = coarse.start[i]; k < coarse.start[i + 1]; ++k) collect(coarse.column[k], scratch);
}

/// The coarse points within strong distance two of row i, then row i itself; marks its strong neighbours.
void collectCoarse(int i, const StrengthGraph& graph, const StrengthGraph& coarse,
                   std::span<const PointKind> kind, RowScratch& scratch) {
    scratch.weights.clear();
    collectAll(i, coarse, scratch);
    for (int k = graph.start[i]; k < graph.start[i + 1]; ++k) {
        const int j = graph.column[k];
        scratch.strongMark[j] = i;
        if (kind[j] != PointKind::Coarse) collectAll(j, coarse, scratch);
    }
    collect(i, scratch);
}

/// Distributes the coupling a_ik of a strong fine neighbour over the coarse points and row i itself; all of
/// it falls on row i where the neighbour reaches none of them.
void distribute(const SparseMatrix& matrix, int k, double coupling, RowScratch& scratch) {
    double sum = 0.0;
    int count = 0;
    for (int m = matrix.start[k] + 1; m < matrix.start[k + 1]; ++m) {
        const int slot = scratch.slot[matrix.column[m]];
        const double a = matrix.value[m];
        const bool counts = slot >= 0 && a < 0.0;
        scratch.passed[count] = {slot, a};
        count += counts ? 1 : 0;
        sum += counts ? a : 0.0;
    }
    if (sum == 0.0) {
        scratch.weights.back().value += coupling;
        return;
    }
    const double share = coupling / sum;
    for (int p = 0; p < count; ++p)
        scratch.weights[scratch.passed[p].slot].value += share * scratch.passed[p].value;
}

/// Numerators of the weights of row i into the scratch, the denominator behind them.
void formWeights(const SparseMatrix& matrix, int i, std::span<const PointKind> kind, RowScratch& scratch) {
    double& diagonal = scratch.weights.back().value;
    diagonal = matrix.value[matrix.start[i]];
    for (int m = matrix.start[i] + 1; m < matrix.start[i + 1]; ++m) {
        const int j = matrix.column[m];
        const double a = matrix.value[m];
        const bool strong = scratch.strongMark[j] == i && a < 0.0;
        if (a < 0.0 && scratch.slot[j] >= 0)
            scratch.weights[scratch.slot[j]].value += a;
        else if (strong && kind[j] != PointKind::Coarse)
            distribute(matrix, j, a, scratch);
        else
            diagonal += a;
    }
}

bool weighsMore(const Weight& a, const Weight& b) {
    const double sizeA = std::abs(a.value), sizeB = std::abs(b.value);
    return sizeA > sizeB || (sizeA == sizeB && a.row < b.row);
}

/// Keeps the largest weights, largest first; the rest is put on them in proportion, so that the sum stays.
void truncate(std::vector<Weight>& weights) {
    if (weights.size() <= MaxWeights) return;
    double all = 0.0, sum = 0.0;
    std::array<Weight, MaxWeights> kept;
    std::size_t count = 0;
    for (const Weight& weight : weights) {
        all += weight.value;
        if (count == MaxWeights && !weighsMore(weight, kept.back())) continue;
        std::size_t place = count < MaxWeights ? count++ : MaxWeights - 1;
        for (; place > 0 && weighsMore(weight, kept[place - 1]); --place) kept[place] = kept[place - 1];
        kept[place] = weight;
    }
    weights.assign(kept.begin(), kept.end());
    for (const Weight& weight : weights) sum += weight.value;
    if (sum == 0.0) return;
    for (Weight& weight : weights) weight.value *= all / sum;
}

void appendRow(std::span<const int> coarseNumber, RowScratch& scratch, SparseRows& result) {
    for (const Weight& weight : scratch.weights) scratch.slot[weight.row] = -1;
    const double denominator = scratch.weights.back().value;
    scratch.weights.pop_back();
    if (!(denominator > 0.0)) return;
    truncate(scratch.weights);
    for (const Weight& weight : scratch.weights) {
        if (weight.value == 0.0) continue;
        result.column.push_back(coarseNumber[weight.row]);
        result.value.push_back(-weight.value / denominator);
    }
}

/// Row i of the interpolation.
void interpolateRow(const SparseMatrix& matrix, const StrengthGraph& graph, const StrengthGraph& coarse,
                    std::span<const PointKind> kind, std::span<const int> coarseNumber, int i,
                    RowScratch& scratch, SparseRows& result) {
    if (kind[i] == PointKind::Coarse) {
        result.column.push_back(coarseNumber[i]);
        result.value.push_back(1.0);
        return;
    }
    if (graph.start[i] == graph.start[i + 1]) return;
    collectCoarse(i, graph, coarse, kind, scratch);
    formWeights(matrix, i, kind, scratch);
    appendRow(coarseNumber, scratch, result);
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
    const StrengthGraph coarse = strongCoarse(graph, kind);
    const auto longest = static_cast<std::size_t>(longestRow(matrix));
    const RowRanges ranges = cutRows(matrix.rows, ShortestSetUpRange);
    std::vector<SparseRows> pieces(static_cast<std::size_t>(ranges.count));
#pragma omp parallel if (ranges.count > 1)
    {
        RowScratch scratch(rows, longest);
#pragma omp for schedule(dynamic, 1)
        for (int r = 0; r < ranges.count; ++r) {
            SparseRows piece;
            reserveRows(ranges[r], MaxWeights, piece);
            for (int i = ranges[r].first; i < ranges[r].end; ++i) {
                interpolateRow(matrix, graph, coarse, kind, coarseNumber, i, scratch, piece);
                closeRow(piece);
            }
            pieces[r] = std::move(piece);
        }
    }
    return joined(ranges, coarsePoints, pieces);
}

}  // namespace kvr
