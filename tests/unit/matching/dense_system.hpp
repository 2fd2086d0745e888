#pragma once

#include "matching/matching_system.hpp"

#include <cmath>
#include <utility>
#include <vector>

namespace kvr {

using DenseRows = std::vector<std::vector<double>>;

/// The rows of a system written out from their definition, one column for each cell of the box; columns of
/// inactive cells are 0.
inline DenseRows denseRows(const GridModel& grid, const WellData& data, const ConstraintWeights& weights) {
    const auto cells = static_cast<std::size_t>(grid.NCELLS);
    DenseRows rows;
    for (std::size_t r = 0; r < data.rows.count(); ++r) {
        rows.emplace_back(cells, 0.0);
        for (std::size_t n = data.rows.start[r]; n < data.rows.start[r + 1]; ++n)
            rows.back()[static_cast<std::size_t>(data.rows.cell[n]) - 1] = data.rows.value[n];
    }
    const auto isActive = [&](int i, int j, int k) {
        return i >= 1 && j >= 1 && k >= 1 && i <= grid.NX && j <= grid.NY && k <= grid.NZ &&
               grid.Active[cellIndex(grid, i, j, k)] == 1;
    };
    const auto forActive = [&](const auto& work) {
        for (int k = 1; k <= grid.NZ; ++k)
            for (int j = 1; j <= grid.NY; ++j)
                for (int i = 1; i <= grid.NX; ++i)
                    if (isActive(i, j, k)) work(i, j, k);
    };
    const auto column = [&](int i, int j, int k) {
        return static_cast<std::size_t>(cellIndex(grid, i, j, k)) - 1;
    };
    if (weights[0] > 0.0)
        forActive([&](int i, int j, int k) {
            rows.emplace_back(cells, 0.0);
            rows.back()[column(i, j, k)] = weights[0];
        });
    for (int axis = 0; axis < 3; ++axis) {
        const double weight = axis == 2 ? weights[2] : weights[1];
        if (weight <= 0.0) continue;
        forActive([&](int i, int j, int k) {
            rows.emplace_back(cells, 0.0);
            for (const int d : {-1, 1}) {
                const int ni = i + (axis == 0 ? d : 0), nj = j + (axis == 1 ? d : 0),
                          nk = k + (axis == 2 ? d : 0);
                if (!isActive(ni, nj, nk)) continue;
                rows.back()[column(ni, nj, nk)] = -0.5 * weight;
                rows.back()[column(i, j, k)] = weight;
            }
        });
    }
    return rows;
}

/// Least squares by normal equations in extended precision: Gauss elimination with row exchange. Columns
/// without an entry have the solution 0.
inline std::vector<double> solveNormalEquations(const DenseRows& rows, const std::vector<double>& data) {
    const std::size_t n = rows.front().size();
    std::vector<std::vector<long double>> a(n, std::vector<long double>(n + 1, 0.0L));
    for (std::size_t r = 0; r < rows.size(); ++r)
        for (std::size_t i = 0; i < n; ++i) {
            for (std::size_t j = 0; j < n; ++j)
                a[i][j] += static_cast<long double>(rows[r][i]) * static_cast<long double>(rows[r][j]);
            if (r < data.size())
                a[i][n] += static_cast<long double>(rows[r][i]) * static_cast<long double>(data[r]);
        }
    for (std::size_t i = 0; i < n; ++i)
        if (a[i][i] == 0.0L) a[i][i] = 1.0L;
    for (std::size_t p = 0; p < n; ++p) {
        std::size_t best = p;
        for (std::size_t i = p + 1; i < n; ++i)
            if (std::abs(a[i][p]) > std::abs(a[best][p])) best = i;
        std::swap(a[p], a[best]);
        for (std::size_t i = 0; i < n; ++i) {
            if (i == p) continue;
            const long double factor = a[i][p] / a[p][p];
            for (std::size_t j = p; j <= n; ++j) a[i][j] -= factor * a[p][j];
        }
    }
    std::vector<double> x(n);
    for (std::size_t i = 0; i < n; ++i) x[i] = static_cast<double>(a[i][n] / a[i][i]);
    return x;
}

}  // namespace kvr
