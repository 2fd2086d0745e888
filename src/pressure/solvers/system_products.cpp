#include "pressure/solvers/system_products.hpp"

#include "base/row_ranges.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

void multiply(const LinearSystem& system, std::span<const double> x, std::span<double> y) {
    const std::int64_t* start = system.rowStart.data();
    const int* column = system.column.data();
    const double* value = system.value.data();
    forRanges(cutRows(system.size, ShortestVectorRange), [&](RowRange range) {
        for (int i = range.first; i < range.end; ++i) {
            double sum = 0.0;
            for (std::int64_t k = start[i]; k < start[i + 1]; ++k) sum += value[k] * x[column[k]];
            y[i] = sum;
        }
    });
}

void multiplyBoth(const LinearSystem& system, std::span<const double> x, std::span<double> y,
                  std::span<const double> xt, std::span<double> yt) {
    const std::int64_t* start = system.rowStart.data();
    const int* column = system.column.data();
    const double* value = system.value.data();
    std::fill(yt.begin(), yt.end(), 0.0);
    for (int i = 0; i < system.size; ++i) {
        const double xti = xt[i];
        double sum = 0.0;
        for (std::int64_t k = start[i]; k < start[i + 1]; ++k) {
            sum += value[k] * x[column[k]];
            yt[column[k]] += value[k] * xti;
        }
        y[i] = sum;
    }
}

double formResidual(const LinearSystem& system, std::span<const double> x, std::span<double> r) {
    multiply(system, x, r);
    return std::sqrt(sumOverRanges(cutRows(system.size, ShortestVectorRange), [&](RowRange range) {
        double sum = 0.0;
        for (int i = range.first; i < range.end; ++i) {
            r[i] = system.rhs[i] - r[i];
            sum += r[i] * r[i];
        }
        return sum;
    }));
}

double dotProduct(std::span<const double> x, std::span<const double> y) {
    return sumOverRanges(cutRows(static_cast<int>(x.size()), ShortestVectorRange), [&](RowRange range) {
        double sum = 0.0;
        for (int i = range.first; i < range.end; ++i) sum += x[i] * y[i];
        return sum;
    });
}

double euclideanNorm(std::span<const double> x) {
    return std::sqrt(dotProduct(x, x));
}

double rightSideSize(const LinearSystem& system) {
    const double size = std::max(euclideanNorm(system.rhs), system.reference);
    return size > 0.0 ? size : 1.0;
}

SolveResult judgeSolution(const LinearSystem& system, std::span<const double> solution, int iterations,
                          std::span<double> scratch) {
    SolveResult result;
    result.iterations = iterations;
    result.residual = formResidual(system, solution, scratch) / rightSideSize(system);
    if (!std::isfinite(result.residual)) result.failure = SolveFailure::NotANumber;
    return result;
}

PatternKey patternKey(const LinearSystem& system) {
    return {system.patternStamp, system.size, system.column.size()};
}

bool samePattern(const PatternKey& key, const LinearSystem& system) {
    return system.patternStamp != 0 && key.stamp == system.patternStamp && key.size == system.size &&
           key.entries == system.column.size();
}

}  // namespace kvr
