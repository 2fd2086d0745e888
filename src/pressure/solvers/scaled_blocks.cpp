#include "pressure/solvers/scaled_blocks.hpp"

#include "pressure/solvers/block_kernels.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

/// The pressure unit that makes pressure entries of the diagonal blocks as large as the others on the whole.
double choosePressureScale(const BlockSystem& system) {
    const int n = system.blockSize;
    double ofPressure = 0.0, ofOthers = 0.0;
    for (int i = 0; i < system.rows; ++i) {
        const double* block = &system.value[static_cast<std::size_t>(system.diagonal[i]) * n * n];
        double pressure = 0.0, other = 0.0;
        for (int e = 0; e < n; ++e) {
            pressure = std::max(pressure, std::abs(block[e * n]));
            for (int u = 1; u < n; ++u) other = std::max(other, std::abs(block[e * n + u]));
        }
        ofPressure += pressure;
        ofOthers += other;
    }
    const double scale = ofOthers / ofPressure;
    return std::isfinite(scale) && scale > 0.0 ? scale : 1.0;
}

void chooseRowScale(const BlockSystem& system, ScaledBlocks& scaled) {
    const int n = system.blockSize;
    scaled.rowScale.resize(static_cast<std::size_t>(system.rows) * n);
    for (int i = 0; i < system.rows; ++i) {
        const double* block = &system.value[static_cast<std::size_t>(system.diagonal[i]) * n * n];
        for (int e = 0; e < n; ++e) {
            double largest = std::abs(block[e * n]) * scaled.pressureScale;
            for (int u = 1; u < n; ++u) largest = std::max(largest, std::abs(block[e * n + u]));
            scaled.rowScale[static_cast<std::size_t>(i) * n + e] =
                largest > 0.0 && std::isfinite(largest) ? 1.0 / largest : 1.0;
        }
    }
}

/// Scales the blocks and the right side; returns a sum that is finite when every entry is.
double scaleCells(const BlockSystem& system, ScaledBlocks& scaled) {
    const int n = system.blockSize;
    scaled.value.resize(system.value.size());
    scaled.rhs.resize(system.rhs.size());
    double check = 0.0;
    for (int i = 0; i < system.rows; ++i) {
        const double* rowScale = &scaled.rowScale[static_cast<std::size_t>(i) * n];
        for (int k = system.rowStart[i]; k < system.rowStart[i + 1]; ++k) {
            const std::size_t first = static_cast<std::size_t>(k) * n * n;
            for (int e = 0; e < n; ++e) {
                for (int u = 0; u < n; ++u) {
                    const std::size_t at = first + static_cast<std::size_t>(e) * n + u;
                    const double scale = u == 0 ? rowScale[e] * scaled.pressureScale : rowScale[e];
                    scaled.value[at] = system.value[at] * scale;
                    check += std::abs(scaled.value[at]);
                }
            }
        }
        for (int e = 0; e < n; ++e) {
            const std::size_t at = static_cast<std::size_t>(i) * n + e;
            scaled.rhs[at] = system.rhs[at] * rowScale[e];
            check += std::abs(scaled.rhs[at]);
        }
    }
    return check;
}

bool holdsRate(const WellBorder& well) {
    return std::any_of(well.rowBlocks.begin(), well.rowBlocks.end(), [](double c) { return c != 0.0; });
}

/// Takes one well out of the system: its right side goes to the cells, its rows and columns are kept when
/// they couple cells.
double eliminateWell(const BlockSystem& system, int w, ScaledBlocks& scaled) {
    const WellBorder& well = system.wells[w];
    const auto n = static_cast<std::size_t>(system.blockSize);
    const double inverse = 1.0 / wellDiagonal(well);
    const bool couples = holdsRate(well);
    double check = std::abs(inverse) + std::abs(well.rhs);
    for (std::size_t c = 0; c < well.cells.size(); ++c) {
        const std::size_t row = static_cast<std::size_t>(well.cells[c]) * n;
        for (std::size_t e = 0; e < n; ++e) {
            const double column = well.columnBlocks[c * n + e] * scaled.rowScale[row + e] * inverse;
            scaled.rhs[row + e] -= column * well.rhs;
            check += std::abs(column) + std::abs(well.rowBlocks[c * n + e]);
            if (!couples) continue;
            scaled.wellColumn.push_back(column);
            scaled.wellRow.push_back(well.rowBlocks[c * n + e] * (e == 0 ? scaled.pressureScale : 1.0));
        }
        if (couples) scaled.wellCell.push_back(well.cells[c]);
    }
    if (couples) {
        scaled.wellIndex.push_back(w);
        scaled.wellStart.push_back(static_cast<int>(scaled.wellCell.size()));
    }
    return check;
}

template <int N>
void multiplyCells(const BlockOperator<N>& system, const double* x, double* y) {
    const int* start = system.pattern->rowStart.data();
    const int* column = system.pattern->column.data();
    const double* value = system.scaled->value.data();
    for (int i = 0; i < system.pattern->rows; ++i) {
        double sum[N] = {};
        for (int k = start[i]; k < start[i + 1]; ++k)
            addBlockTimes<N>(value + static_cast<std::ptrdiff_t>(k) * N * N,
                             x + static_cast<std::ptrdiff_t>(column[k]) * N, sum);
        for (int e = 0; e < N; ++e) y[static_cast<std::ptrdiff_t>(i) * N + e] = sum[e];
    }
}

/// y += factor times the sum over wells of column (row x), which A x has with a minus; `size` entries of x
/// stand for each row, the pressure first.
template <int N>
void addWells(const ScaledBlocks& scaled, double factor, const double* x, int size, double* y) {
    for (std::size_t w = 0; w < scaled.wellIndex.size(); ++w) {
        double sum = 0.0;
        for (int c = scaled.wellStart[w]; c < scaled.wellStart[w + 1]; ++c) {
            const double* at = x + static_cast<std::ptrdiff_t>(scaled.wellCell[c]) * size;
            for (int u = 0; u < size; ++u) sum += scaled.wellRow[static_cast<std::size_t>(c) * N + u] * at[u];
        }
        sum *= factor;
        for (int c = scaled.wellStart[w]; c < scaled.wellStart[w + 1]; ++c) {
            double* at = y + static_cast<std::ptrdiff_t>(scaled.wellCell[c]) * N;
            for (int e = 0; e < N; ++e) at[e] += scaled.wellColumn[static_cast<std::size_t>(c) * N + e] * sum;
        }
    }
}

}  // namespace

double wellDiagonal(const WellBorder& well) {
    return well.diagonal != 0.0 ? well.diagonal : 1.0;
}

bool scaleBlocks(const BlockSystem& system, ScaledBlocks& scaled) {
    scaled.pressureScale = choosePressureScale(system);
    chooseRowScale(system, scaled);
    double check = scaleCells(system, scaled);
    scaled.wellStart.assign(1, 0);
    scaled.wellIndex.clear();
    scaled.wellCell.clear();
    scaled.wellColumn.clear();
    scaled.wellRow.clear();
    for (int w = 0; w < static_cast<int>(system.wells.size()); ++w) check += eliminateWell(system, w, scaled);
    return std::isfinite(check);
}

void restoreUnits(const BlockSystem& system, const ScaledBlocks& scaled, std::span<double> solution,
                  std::span<double> bhp) {
    const auto n = static_cast<std::size_t>(system.blockSize);
    for (std::size_t i = 0; i < solution.size(); i += n) solution[i] *= scaled.pressureScale;
    for (std::size_t w = 0; w < system.wells.size(); ++w) {
        const WellBorder& well = system.wells[w];
        double sum = well.rhs;
        for (std::size_t c = 0; c < well.cells.size(); ++c) {
            const double* x = &solution[static_cast<std::size_t>(well.cells[c]) * n];
            for (std::size_t u = 0; u < n; ++u) sum -= well.rowBlocks[c * n + u] * x[u];
        }
        bhp[w] = sum / wellDiagonal(well);
    }
}

template <int N>
void multiply(const BlockOperator<N>& system, std::span<const double> x, std::span<double> y) {
    multiplyCells<N>(system, x.data(), y.data());
    addWells<N>(*system.scaled, -1.0, x.data(), N, y.data());
}

template <int N>
double formResidual(const BlockOperator<N>& system, std::span<const double> x, std::span<double> r) {
    multiply<N>(system, x, r);
    double sum = 0.0;
    for (std::size_t i = 0; i < r.size(); ++i) {
        r[i] = system.rhs[i] - r[i];
        sum += r[i] * r[i];
    }
    return std::sqrt(sum);
}

template <int N>
void subtractPressureProduct(const BlockOperator<N>& system, std::span<const double> pressure,
                             std::span<double> r) {
    const int* start = system.pattern->rowStart.data();
    const int* column = system.pattern->column.data();
    const double* value = system.scaled->value.data();
    for (int i = 0; i < system.pattern->rows; ++i) {
        double sum[N] = {};
        for (int k = start[i]; k < start[i + 1]; ++k) {
            const double p = pressure[column[k]];
            for (int e = 0; e < N; ++e) sum[e] += value[(static_cast<std::ptrdiff_t>(k) * N + e) * N] * p;
        }
        for (int e = 0; e < N; ++e) r[static_cast<std::size_t>(i) * N + e] -= sum[e];
    }
    addWells<N>(*system.scaled, 1.0, pressure.data(), 1, r.data());
}

template void multiply<2>(const BlockOperator<2>&, std::span<const double>, std::span<double>);
template void multiply<3>(const BlockOperator<3>&, std::span<const double>, std::span<double>);
template double formResidual<2>(const BlockOperator<2>&, std::span<const double>, std::span<double>);
template double formResidual<3>(const BlockOperator<3>&, std::span<const double>, std::span<double>);
template void subtractPressureProduct<2>(const BlockOperator<2>&, std::span<const double>, std::span<double>);
template void subtractPressureProduct<3>(const BlockOperator<3>&, std::span<const double>, std::span<double>);

}  // namespace kvr
