#include "pressure/solvers/cycle.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

namespace kvr {

namespace {

constexpr int CoarsestSweeps = 10;        // symmetric sweeps where the coarsest matrix is not factored
constexpr double WeightGrid = 2097152.0;  // 2^21: multiples of its inverse below 8 are floats
constexpr double LargestOnGrid = 4.0;     // of a weight, so that a correction leaves it below 8

/// y_i = sum of row i of the matrix times x.
void multiplyRows(const Transfer& matrix, RowRange range, const double* x, double* y) {
    for (int i = range.first; i < range.end; ++i) {
        double sum = 0.0;
        for (int k = matrix.start[i]; k < matrix.start[i + 1]; ++k)
            sum += static_cast<double>(matrix.weight[k]) * x[matrix.column[k]];
        y[i] = sum;
    }
}

void restrictResidual(const MultigridLevel& level, std::span<const double> residual,
                      std::vector<double>& coarse) {
    forRanges(cutRows(level.restriction.rows, ShortestTransferRange), [&](RowRange range) {
        multiplyRows(level.restriction, range, residual.data(), coarse.data());
    });
}

void addInterpolated(const Transfer& interpolation, const std::vector<double>& coarse,
                     std::vector<double>& x) {
    forRanges(cutRows(interpolation.rows, ShortestTransferRange), [&](RowRange range) {
        for (int i = range.first; i < range.end; ++i) {
            double sum = x[i];
            for (int k = interpolation.start[i]; k < interpolation.start[i + 1]; ++k)
                sum += static_cast<double>(interpolation.weight[k]) * coarse[interpolation.column[k]];
            x[i] = sum;
        }
    });
}

double onGrid(double weight) {
    return std::nearbyint(weight * WeightGrid) / WeightGrid;
}

/// Rounds the weights of a row; what their sum loses goes to the largest.
void roundRow(std::span<double> weights) {
    if (weights.empty()) return;
    double sum = 0.0, rounded = 0.0;
    double* largest = weights.data();
    for (double& weight : weights) {
        sum += weight;
        if (std::abs(weight) > std::abs(*largest)) largest = &weight;
    }
    const bool fits = std::abs(*largest) < LargestOnGrid;
    for (double& weight : weights) {
        weight = fits ? onGrid(weight) : static_cast<double>(static_cast<float>(weight));
        rounded += weight;
    }
    if (fits) *largest += onGrid(sum) - rounded;
}

void solveCoarsest(const Hierarchy& hierarchy, MultigridLevel& level, std::span<double> scratch) {
    if (hierarchy.coarsestFactored) {
        level.x = level.b;
        solveFactored(level.matrix.rows, hierarchy.coarsest.matrix, hierarchy.coarsest.pivot, level.x);
        return;
    }
    std::fill(level.x.begin(), level.x.end(), 0.0);
    for (int sweep = 0; sweep < CoarsestSweeps; ++sweep) {
        std::copy(level.b.begin(), level.b.end(), scratch.begin());
        sweepForward(level.matrix, scratch, level.x);
        std::copy(level.b.begin(), level.b.end(), scratch.begin());
        sweepBackward(level.matrix, scratch, level.x);
    }
}

}  // namespace

void roundWeights(SparseMatrix& interpolation) {
    forRanges(cutRows(interpolation.rows, ShortestVectorRange), [&](RowRange range) {
        for (int i = range.first; i < range.end; ++i)
            roundRow({interpolation.value.data() + interpolation.start[i],
                      static_cast<std::size_t>(interpolation.start[i + 1] - interpolation.start[i])});
    });
}

Transfer transferOf(SparseMatrix& matrix) {
    Transfer transfer;
    transfer.rows = matrix.rows;
    transfer.start = std::move(matrix.start);
    transfer.column = std::move(matrix.column);
    transfer.weight.resize(matrix.value.size());
    std::transform(matrix.value.begin(), matrix.value.end(), transfer.weight.begin(),
                   [](double weight) { return static_cast<float>(weight); });
    matrix = {};
    return transfer;
}

void sizeVectors(MultigridLevel& level) {
    for (std::vector<double>* v : {&level.x, &level.b})
        v->resize(static_cast<std::size_t>(level.matrix.rows));
}

void applyCycle(Hierarchy& hierarchy, std::span<const double> b, std::span<double> x) {
    std::vector<MultigridLevel>& levels = hierarchy.levels;
    const std::size_t last = levels.size() - 1;
    const RowRanges rows = cutRows(static_cast<int>(b.size()), ShortestVectorRange);
    forRanges(rows, [&](RowRange range) {
        for (int i = range.first; i < range.end; ++i) {
            const int row = hierarchy.order[i];
            levels.front().b[i] = hierarchy.rowScale[row] * b[row];
        }
    });
    for (std::size_t l = 0; l < last; ++l) {
        sweepForwardFromZero(levels[l].matrix, levels[l].b, levels[l].x);
        formSweptResidual(levels[l].matrix, levels[l].x, x);
        restrictResidual(levels[l], x, levels[l + 1].b);
    }
    solveCoarsest(hierarchy, levels[last], x);
    for (std::size_t l = last; l-- > 0;) {
        addInterpolated(levels[l].interpolation, levels[l + 1].x, levels[l].x);
        sweepBackward(levels[l].matrix, levels[l].b, levels[l].x);
    }
    forRanges(rows, [&](RowRange range) {
        for (int i = range.first; i < range.end; ++i) x[hierarchy.order[i]] = levels.front().x[i];
    });
}

}  // namespace kvr
