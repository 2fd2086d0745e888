#pragma once

#include "pressure/solvers/linear_system.hpp"

#include <cmath>
#include <utility>
#include <vector>

namespace kvr::sample {

/// Gauss elimination with row pivoting on the full matrix: the slow twin of every route.
inline std::vector<double> solveByElimination(const LinearSystem& system) {
    const auto n = static_cast<std::size_t>(system.size);
    std::vector<std::vector<double>> a(n, std::vector<double>(n + 1, 0.0));
    for (std::size_t r = 0; r < n; ++r) {
        for (auto k = static_cast<std::size_t>(system.rowStart[r]);
             k < static_cast<std::size_t>(system.rowStart[r + 1]); ++k)
            a[r][static_cast<std::size_t>(system.column[k])] += system.value[k];
        a[r][n] = system.rhs[r];
    }
    for (std::size_t p = 0; p < n; ++p) {
        std::size_t best = p;
        for (std::size_t r = p + 1; r < n; ++r)
            if (std::abs(a[r][p]) > std::abs(a[best][p])) best = r;
        std::swap(a[p], a[best]);
        for (std::size_t r = p + 1; r < n; ++r) {
            const double factor = a[r][p] / a[p][p];
            for (std::size_t c = p; c <= n; ++c) a[r][c] -= factor * a[p][c];
        }
    }
    std::vector<double> x(n, 0.0);
    for (std::size_t r = n; r-- > 0;) {
        double sum = a[r][n];
        for (std::size_t c = r + 1; c < n; ++c) sum -= a[r][c] * x[c];
        x[r] = sum / a[r][r];
    }
    return x;
}

}  // namespace kvr::sample
