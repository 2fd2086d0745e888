#include "pressure/solvers/row_scale.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double SmallestChange = 1e-3;  // of a factor, relative, that is worth passing on

double scaleOf(const LinearSystem& system, std::span<const double> wellScale, int i) {
    return i < system.cellRows ? 1.0 : wellScale[i - system.cellRows];
}

/// Row sums less column sums of the matrix with its wells scaled.
std::vector<double> imbalance(const LinearSystem& system, std::span<const double> wellScale) {
    std::vector<double> open(static_cast<std::size_t>(system.size), 0.0);
    for (int i = 0; i < system.size; ++i) {
        const double scale = scaleOf(system, wellScale, i);
        double sum = 0.0;
        for (std::int64_t k = system.rowStart[i]; k < system.rowStart[i + 1]; ++k) {
            const double a = scale * system.value[k];
            sum += a;
            open[system.column[k]] -= a;
        }
        open[i] += sum;
    }
    return open;
}

/// Solves equation i of the factors for s_i and passes the change on; false where nothing changes.
bool balanceRow(const LinearSystem& system, double scale, int i, std::vector<double>& factor,
                std::vector<double>& open) {
    const double diagonal = scale * system.value[system.rowStart[i]];
    const double wanted = std::clamp(factor[i] + open[i] / diagonal, 1.0 / LargestBalance, LargestBalance);
    const double change = wanted - factor[i];
    if (!(diagonal > 0.0) || !(std::abs(change) > SmallestChange * factor[i])) return false;
    factor[i] = wanted;
    for (std::int64_t k = system.rowStart[i]; k < system.rowStart[i + 1]; ++k)
        open[system.column[k]] -= change * scale * system.value[k];
    return true;
}

}  // namespace

void formWellScale(const LinearSystem& system, std::vector<double>& scale) {
    const int wells = system.size - system.cellRows;
    scale.assign(static_cast<std::size_t>(wells), 1.0);
    if (wells == 0) return;
    std::vector<double> columnSum(static_cast<std::size_t>(wells), 0.0);
    for (int i = 0; i < system.cellRows; ++i) {
        for (std::int64_t k = system.rowStart[i]; k < system.rowStart[i + 1]; ++k) {
            const int j = system.column[k] - system.cellRows;
            if (j >= 0) columnSum[j] += std::abs(system.value[k]);
        }
    }
    for (int w = 0; w < wells; ++w) {
        double rowSum = 0.0;
        const std::int64_t first = system.rowStart[system.cellRows + w];
        for (std::int64_t k = first + 1; k < system.rowStart[system.cellRows + w + 1]; ++k)
            rowSum += std::abs(system.value[k]);
        if (rowSum > 0.0 && columnSum[w] > 0.0) scale[w] = columnSum[w] / rowSum;
    }
}

void balanceRows(const LinearSystem& system, std::span<const double> wellScale, std::vector<double>& factor) {
    factor.assign(static_cast<std::size_t>(system.size), 1.0);
    std::vector<double> open = imbalance(system, wellScale);
    bool changing = true;
    for (int sweep = 0; changing && sweep < BalanceSweeps; ++sweep) {
        changing = false;
        for (int n = 0; n < system.size; ++n) {
            const int i = sweep % 2 == 0 ? n : system.size - 1 - n;
            changing = balanceRow(system, scaleOf(system, wellScale, i), i, factor, open) || changing;
        }
    }
}

}  // namespace kvr
