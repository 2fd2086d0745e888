#pragma once

#include "pressure/solvers/linear_system.hpp"

#include <span>

namespace kvr {

/// y = A x.
void multiply(const LinearSystem& system, std::span<const double> x, std::span<double> y);

/// y = A x and yt = A' xt in one pass over the matrix.
void multiplyBoth(const LinearSystem& system, std::span<const double> x, std::span<double> y,
                  std::span<const double> xt, std::span<double> yt);

/// r = b - A x; returns ||r||, the Euclidean norm.
double formResidual(const LinearSystem& system, std::span<const double> x, std::span<double> r);

/// What residuals are measured against: the larger of ||b|| and the system's reference, 1 if both are 0.
/// Iterations of a step share the reference of its first one, so that later ones, whose right side has
/// shrunk by decades already, are not solved more finely than it was.
double rightSideSize(const LinearSystem& system);

double dotProduct(std::span<const double> x, std::span<const double> y);
double euclideanNorm(std::span<const double> x);

/// The result of a finished solve: ||b - A x|| of the solution as it stands over the right-side size, and
/// NotANumber when the solution is not finite. `scratch` takes the residual vector.
SolveResult judgeSolution(const LinearSystem& system, std::span<const double> solution, int iterations,
                          std::span<double> scratch);

/// True when two solves share the pattern, so that what depends on it alone can be kept. A stamp of 0
/// means that the system was never stamped: nothing is kept then.
struct PatternKey {
    std::uint64_t stamp = 0;
    int size = 0;
    std::size_t entries = 0;
};
PatternKey patternKey(const LinearSystem& system);
bool samePattern(const PatternKey& key, const LinearSystem& system);

}  // namespace kvr
