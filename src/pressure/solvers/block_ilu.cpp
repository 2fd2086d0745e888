#include "pressure/solvers/block_ilu.hpp"

#include "pressure/solvers/block_kernels.hpp"

#include <algorithm>

namespace kvr {

namespace {

/// Subtracts column times row of each well from the blocks that the pattern has.
template <int N>
void addWellBlocks(const BlockSystem& system, const ScaledBlocks& scaled, BlockFactors& factors) {
    for (std::size_t w = 0; w < scaled.wellIndex.size(); ++w) {
        const int first = scaled.wellStart[w], end = scaled.wellStart[w + 1];
        for (int c = first; c < end; ++c) factors.completion[scaled.wellCell[c]] = c;
        for (int c = first; c < end; ++c) {
            const double* column = &scaled.wellColumn[static_cast<std::size_t>(c) * N];
            const int i = scaled.wellCell[c];
            for (int k = system.rowStart[i]; k < system.rowStart[i + 1]; ++k) {
                const int other = factors.completion[system.column[k]];
                if (other < 0) continue;
                const double* row = &scaled.wellRow[static_cast<std::size_t>(other) * N];
                double* block = &factors.value[static_cast<std::size_t>(k) * N * N];
                for (int e = 0; e < N; ++e) {
                    for (int u = 0; u < N; ++u) block[e * N + u] -= column[e] * row[u];
                }
            }
        }
        for (int c = first; c < end; ++c) factors.completion[scaled.wellCell[c]] = -1;
    }
}

/// Eliminates row i with the finished rows above it.
template <int N>
void eliminateBlockRow(const BlockSystem& system, int i, BlockFactors& f) {
    const int first = system.rowStart[i], end = system.rowStart[i + 1];
    for (int k = first; k < end; ++k) f.place[system.column[k]] = k;
    for (int k = first; k < system.diagonal[i]; ++k) {
        const int j = system.column[k];
        double* entry = &f.value[static_cast<std::size_t>(k) * N * N];
        double multiplier[N * N];
        setBlockProduct<N>(entry, &f.inversePivot[static_cast<std::size_t>(j) * N * N], multiplier);
        std::copy(multiplier, multiplier + N * N, entry);
        for (int m = system.diagonal[j] + 1; m < system.rowStart[j + 1]; ++m) {
            const int at = f.place[system.column[m]];
            if (at >= 0)
                subtractBlockProduct<N>(multiplier, &f.value[static_cast<std::size_t>(m) * N * N],
                                        &f.value[static_cast<std::size_t>(at) * N * N]);
        }
    }
    for (int k = first; k < end; ++k) f.place[system.column[k]] = -1;
}

template <int N>
void invertPivot(const BlockSystem& system, const ScaledBlocks& scaled, int i, BlockFactors& f) {
    const std::size_t at = static_cast<std::size_t>(system.diagonal[i]) * N * N;
    double* inverse = &f.inversePivot[static_cast<std::size_t>(i) * N * N];
    if (invertBlock<N>(&f.value[at], inverse) || invertBlock<N>(&scaled.value[at], inverse)) return;
    for (int e = 0; e < N; ++e) {
        for (int u = 0; u < N; ++u) inverse[e * N + u] = e == u ? 1.0 : 0.0;
    }
}

}  // namespace

template <int N>
void factorBlocks(const BlockSystem& system, const ScaledBlocks& scaled, BlockFactors& factors) {
    const auto rows = static_cast<std::size_t>(system.rows);
    factors.value = scaled.value;
    factors.inversePivot.resize(rows * N * N);
    factors.place.assign(rows, -1);
    factors.completion.assign(rows, -1);
    addWellBlocks<N>(system, scaled, factors);
    for (int i = 0; i < system.rows; ++i) {
        eliminateBlockRow<N>(system, i, factors);
        invertPivot<N>(system, scaled, i, factors);
    }
}

template <int N>
void applyBlockFactors(const BlockSystem& system, const BlockFactors& factors, std::span<const double> r,
                       std::span<double> z) {
    const int* start = system.rowStart.data();
    const int* column = system.column.data();
    const int* diagonal = system.diagonal.data();
    const double* value = factors.value.data();
    double sum[N];
    for (int i = 0; i < system.rows; ++i) {
        const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(i) * N;
        for (int e = 0; e < N; ++e) sum[e] = r[at + e];
        for (int k = start[i]; k < diagonal[i]; ++k)
            subtractBlockTimes<N>(value + static_cast<std::ptrdiff_t>(k) * N * N,
                                  &z[static_cast<std::size_t>(column[k]) * N], sum);
        for (int e = 0; e < N; ++e) z[at + e] = sum[e];
    }
    for (int i = system.rows - 1; i >= 0; --i) {
        const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(i) * N;
        for (int e = 0; e < N; ++e) sum[e] = z[at + e];
        for (int k = diagonal[i] + 1; k < start[i + 1]; ++k)
            subtractBlockTimes<N>(value + static_cast<std::ptrdiff_t>(k) * N * N,
                                  &z[static_cast<std::size_t>(column[k]) * N], sum);
        setBlockTimes<N>(&factors.inversePivot[static_cast<std::size_t>(at) * N], sum, &z[at]);
    }
}

template void factorBlocks<2>(const BlockSystem&, const ScaledBlocks&, BlockFactors&);
template void factorBlocks<3>(const BlockSystem&, const ScaledBlocks&, BlockFactors&);
template void applyBlockFactors<2>(const BlockSystem&, const BlockFactors&, std::span<const double>,
                                   std::span<double>);
template void applyBlockFactors<3>(const BlockSystem&, const BlockFactors&, std::span<const double>,
                                   std::span<double>);

}  // namespace kvr
