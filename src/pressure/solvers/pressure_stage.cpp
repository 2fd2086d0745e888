#include "pressure/solvers/pressure_stage.hpp"

#include "pressure/solvers/block_kernels.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

/// Rows of the pressure matrix: cells with the diagonal first, a column for each completion, then wells.
void layOutPressure(const BlockSystem& system, const ScaledBlocks& scaled, CoupledPressure& stage) {
    LinearSystem& p = stage.system;
    const int wells = static_cast<int>(scaled.wellIndex.size());
    p.cellRows = system.rows;
    p.size = system.rows + wells;
    std::vector<std::vector<int>> wellsOf(static_cast<std::size_t>(system.rows));
    for (int w = 0; w < wells; ++w) {
        for (int c = scaled.wellStart[w]; c < scaled.wellStart[w + 1]; ++c)
            wellsOf[scaled.wellCell[c]].push_back(w);
    }
    p.rowStart.assign(1, 0);
    p.column.clear();
    for (int i = 0; i < system.rows; ++i) {
        p.column.push_back(i);
        for (int k = system.rowStart[i]; k < system.rowStart[i + 1]; ++k) {
            if (system.column[k] != i) p.column.push_back(system.column[k]);
        }
        for (const int w : wellsOf[i]) p.column.push_back(system.rows + w);
        p.rowStart.push_back(static_cast<std::int64_t>(p.column.size()));
    }
    for (int w = 0; w < wells; ++w) {
        p.column.push_back(system.rows + w);
        for (int c = scaled.wellStart[w]; c < scaled.wellStart[w + 1]; ++c)
            p.column.push_back(scaled.wellCell[c]);
        p.rowStart.push_back(static_cast<std::int64_t>(p.column.size()));
    }
    p.value.resize(p.column.size());
    ++p.patternStamp;
    stage.rhs.resize(static_cast<std::size_t>(p.size));
    stage.pressure.resize(static_cast<std::size_t>(p.size));
    stage.blockStamp = system.patternStamp;
    stage.wellIndex = scaled.wellIndex;
    stage.wellCell = scaled.wellCell;
}

/// w with w' K e_u = 0 for u > 0, sum |w| = 1. False where K leaves it open.
bool weightsFrom(const double* k, int n, double* w) {
    if (n == 2) {
        w[0] = k[3];
        w[1] = -k[1];
    } else {
        w[0] = k[4] * k[8] - k[5] * k[7];
        w[1] = k[2] * k[7] - k[1] * k[8];
        w[2] = k[1] * k[5] - k[2] * k[4];
    }
    double sum = 0.0;
    for (int e = 0; e < n; ++e) sum += std::abs(w[e]);
    if (!(sum > 0.0) || !std::isfinite(sum)) return false;
    for (int e = 0; e < n; ++e) w[e] /= sum;
    return true;
}

template <int N>
double weightedPressure(const double* w, const double* block) {
    double sum = 0.0;
    for (int e = 0; e < N; ++e) sum += w[e] * block[e * N];
    return sum;
}

/// Weights of row i with the sign that makes the pressure diagonal positive.
template <int N>
void chooseWeights(const BlockSystem& system, int i, double* w) {
    const std::size_t size = N * N;
    const double* diagonal = &system.value[static_cast<std::size_t>(system.diagonal[i]) * size];
    const bool accumulated = system.accumulation.size() >= static_cast<std::size_t>(system.rows) * size;
    const bool found =
        (accumulated && weightsFrom(&system.accumulation[static_cast<std::size_t>(i) * size], N, w)) ||
        weightsFrom(diagonal, N, w);
    if (!found) std::fill(w, w + N, 1.0 / N);
    if (weightedPressure<N>(w, diagonal) < 0.0) {
        for (int e = 0; e < N; ++e) w[e] = -w[e];
    }
}

template <int N>
void fillCellRow(const BlockSystem& system, int i, const double* w, LinearSystem& p) {
    std::int64_t at = p.rowStart[i] + 1;
    for (int k = system.rowStart[i]; k < system.rowStart[i + 1]; ++k) {
        const double entry = weightedPressure<N>(w, &system.value[static_cast<std::size_t>(k) * N * N]);
        if (system.column[k] != i) {
            p.value[at++] = entry;
        } else {
            p.value[p.rowStart[i]] = entry != 0.0 ? entry : 1.0;
        }
    }
    for (; at < p.rowStart[i + 1]; ++at) p.value[at] = 0.0;
}

/// Columns of the wells in the rows of their completions, and the wells' own rows.
template <int N>
void fillWells(const BlockSystem& system, const ScaledBlocks& scaled, const std::vector<double>& weights,
               LinearSystem& p) {
    for (std::size_t w = 0; w < scaled.wellIndex.size(); ++w) {
        const WellBorder& well = system.wells[scaled.wellIndex[w]];
        const int row = system.rows + static_cast<int>(w);
        const double diagonal = wellDiagonal(well);
        const double sign = diagonal < 0.0 ? -1.0 : 1.0;
        std::int64_t at = p.rowStart[row];
        p.value[at++] = sign * diagonal;
        for (std::size_t c = 0; c < well.cells.size(); ++c) {
            const int i = well.cells[c];
            p.value[at++] = sign * well.rowBlocks[c * N];
            double entry = 0.0;
            for (int e = 0; e < N; ++e)
                entry += weights[static_cast<std::size_t>(i) * N + e] * well.columnBlocks[c * N + e];
            for (std::int64_t k = p.rowStart[i] + 1; k < p.rowStart[i + 1]; ++k) {
                if (p.column[k] == row) p.value[k] = entry;
            }
        }
    }
}

bool sameRows(const BlockSystem& system, const ScaledBlocks& scaled, const CoupledPressure& stage) {
    return stage.blockStamp == system.patternStamp && stage.system.cellRows == system.rows &&
           stage.wellIndex == scaled.wellIndex && stage.wellCell == scaled.wellCell;
}

}  // namespace

template <int N>
bool formPressureStage(const BlockSystem& system, const ScaledBlocks& scaled, bool renew,
                       CoupledPressure& stage) {
    const bool kept = sameRows(system, scaled, stage);
    if (!kept) layOutPressure(system, scaled, stage);
    stage.weights.resize(static_cast<std::size_t>(system.rows) * N);
    for (int i = 0; i < system.rows; ++i) {
        double* w = &stage.weights[static_cast<std::size_t>(i) * N];
        chooseWeights<N>(system, i, w);
        fillCellRow<N>(system, i, w, stage.system);
    }
    fillWells<N>(system, scaled, stage.weights, stage.system);
    for (std::size_t k = 0; k < stage.weights.size(); ++k) stage.weights[k] /= scaled.rowScale[k];
    const bool fresh = !kept || renew || stage.multigrid.worn;
    if (fresh) {
        setUpHierarchy(stage.system, stage.multigrid);
    } else {
        refreshFinest(stage.system, stage.multigrid);
    }
    return fresh;
}

template <int N>
void applyPressureStage(const ScaledBlocks& scaled, std::span<const double> r, CoupledPressure& stage) {
    const int rows = stage.system.cellRows;
    for (int i = 0; i < rows; ++i) {
        double sum = 0.0;
        for (int e = 0; e < N; ++e) {
            const std::size_t at = static_cast<std::size_t>(i) * N + e;
            sum += stage.weights[at] * r[at];
        }
        stage.rhs[i] = sum;
    }
    std::fill(stage.rhs.begin() + rows, stage.rhs.end(), 0.0);
    applyCycle(stage.multigrid.hierarchy, stage.rhs, stage.pressure);
    const double inverse = 1.0 / scaled.pressureScale;
    for (int i = 0; i < rows; ++i) stage.pressure[i] *= inverse;
}

template bool formPressureStage<2>(const BlockSystem&, const ScaledBlocks&, bool, CoupledPressure&);
template bool formPressureStage<3>(const BlockSystem&, const ScaledBlocks&, bool, CoupledPressure&);
template void applyPressureStage<2>(const ScaledBlocks&, std::span<const double>, CoupledPressure&);
template void applyPressureStage<3>(const ScaledBlocks&, std::span<const double>, CoupledPressure&);

}  // namespace kvr
