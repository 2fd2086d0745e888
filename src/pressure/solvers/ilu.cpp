#include "pressure/solvers/ilu.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

namespace kvr {

namespace {

/// A pivot smaller than this share of the matrix diagonal has cancelled away.
constexpr double VanishedPivot = 1e-12;

/// Off-diagonal entries of row i with their places in the system, sorted by column. Column numbers and
/// places fit the pair so that the sort moves both.
void sortedRow(const LinearSystem& system, int i, std::vector<std::pair<int, std::int64_t>>& row) {
    row.clear();
    for (std::int64_t k = system.rowStart[i]; k < system.rowStart[i + 1]; ++k) {
        if (system.column[k] != i) row.emplace_back(system.column[k], k);
    }
    std::sort(row.begin(), row.end());
}

void layOut(const LinearSystem& system, IncompleteFactors& factors) {
    const auto n = static_cast<std::size_t>(system.size);
    factors.lowerStart.assign(n + 1, 0);
    factors.upperStart.assign(n + 1, 0);
    for (auto* list : {&factors.lowerColumn, &factors.upperColumn}) {
        list->clear();
        list->reserve(system.column.size() / 2);
    }
    for (auto* list : {&factors.lowerSource, &factors.upperSource}) {
        list->clear();
        list->reserve(system.column.size() / 2);
    }
    std::vector<std::pair<int, std::int64_t>> row;
    for (int i = 0; i < system.size; ++i) {
        sortedRow(system, i, row);
        for (const auto& [column, source] : row) {
            auto& columns = column < i ? factors.lowerColumn : factors.upperColumn;
            auto& sources = column < i ? factors.lowerSource : factors.upperSource;
            columns.push_back(column);
            sources.push_back(source);
        }
        factors.lowerStart[i + 1] = static_cast<std::int64_t>(factors.lowerColumn.size());
        factors.upperStart[i + 1] = static_cast<std::int64_t>(factors.upperColumn.size());
    }
    factors.lower.resize(factors.lowerColumn.size());
    factors.upper.resize(factors.upperColumn.size());
    factors.inversePivot.resize(n);
    factors.place.assign(n, nullptr);
    factors.key = patternKey(system);
}

double diagonalOf(const LinearSystem& system, int i) {
    double sum = 0.0;
    for (std::int64_t k = system.rowStart[i]; k < system.rowStart[i + 1]; ++k) {
        if (system.column[k] == i) sum += system.value[k];
    }
    return sum;
}

/// Eliminates row i with the finished rows above it; returns its pivot.
double eliminateRow(IncompleteFactors& f, int i, double pivot) {
    for (std::int64_t k = f.lowerStart[i]; k < f.lowerStart[i + 1]; ++k)
        f.place[f.lowerColumn[k]] = &f.lower[k];
    for (std::int64_t k = f.upperStart[i]; k < f.upperStart[i + 1]; ++k)
        f.place[f.upperColumn[k]] = &f.upper[k];
    f.place[i] = &pivot;
    for (std::int64_t k = f.lowerStart[i]; k < f.lowerStart[i + 1]; ++k) {
        const int j = f.lowerColumn[k];
        const double multiplier = f.lower[k] * f.inversePivot[j];
        f.lower[k] = multiplier;
        for (std::int64_t m = f.upperStart[j]; m < f.upperStart[j + 1]; ++m) {
            if (double* entry = f.place[f.upperColumn[m]]) *entry -= multiplier * f.upper[m];
        }
    }
    for (std::int64_t k = f.lowerStart[i]; k < f.lowerStart[i + 1]; ++k) f.place[f.lowerColumn[k]] = nullptr;
    for (std::int64_t k = f.upperStart[i]; k < f.upperStart[i + 1]; ++k) f.place[f.upperColumn[k]] = nullptr;
    f.place[i] = nullptr;
    return pivot;
}

}  // namespace

void factorIncomplete(const LinearSystem& system, IncompleteFactors& factors) {
    if (!samePattern(factors.key, system)) layOut(system, factors);
    for (std::size_t k = 0; k < factors.lower.size(); ++k)
        factors.lower[k] = system.value[factors.lowerSource[k]];
    for (std::size_t k = 0; k < factors.upper.size(); ++k)
        factors.upper[k] = system.value[factors.upperSource[k]];
    for (int i = 0; i < system.size; ++i) {
        const double diagonal = diagonalOf(system, i);
        double pivot = eliminateRow(factors, i, diagonal);
        if (std::abs(pivot) <= VanishedPivot * std::abs(diagonal)) pivot = diagonal;
        factors.inversePivot[i] = pivot != 0.0 ? 1.0 / pivot : 1.0;
    }
}

void applyIncomplete(const IncompleteFactors& factors, std::span<const double> r, std::span<double> z) {
    const int n = static_cast<int>(r.size());
    const std::int64_t* lowerStart = factors.lowerStart.data();
    const std::int64_t* upperStart = factors.upperStart.data();
    for (int i = 0; i < n; ++i) {
        double sum = r[i];
        for (std::int64_t k = lowerStart[i]; k < lowerStart[i + 1]; ++k)
            sum -= factors.lower[k] * z[factors.lowerColumn[k]];
        z[i] = sum;
    }
    for (int i = n - 1; i >= 0; --i) {
        double sum = z[i];
        for (std::int64_t k = upperStart[i]; k < upperStart[i + 1]; ++k)
            sum -= factors.upper[k] * z[factors.upperColumn[k]];
        z[i] = sum * factors.inversePivot[i];
    }
}

void applyIncompleteTransposed(const IncompleteFactors& factors, std::span<const double> r,
                               std::span<double> z) {
    const int n = static_cast<int>(r.size());
    if (z.data() != r.data()) std::copy(r.begin(), r.end(), z.begin());
    for (int i = 0; i < n; ++i) {
        const double zi = z[i] * factors.inversePivot[i];
        z[i] = zi;
        for (std::int64_t k = factors.upperStart[i]; k < factors.upperStart[i + 1]; ++k)
            z[factors.upperColumn[k]] -= factors.upper[k] * zi;
    }
    for (int i = n - 1; i >= 0; --i) {
        const double zi = z[i];
        for (std::int64_t k = factors.lowerStart[i]; k < factors.lowerStart[i + 1]; ++k)
            z[factors.lowerColumn[k]] -= factors.lower[k] * zi;
    }
}

}  // namespace kvr
