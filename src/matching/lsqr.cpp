#include "matching/lsqr.hpp"

#include "base/hard_stop.hpp"

#include <algorithm>
#include <cmath>
#include <new>
#include <string_view>

namespace kvr {

namespace {

constexpr double ResidualLimit = 1e-8;  // of the rotated residual, units of the data
// Relative to the matrix norm met so far:
constexpr double BreakdownLimit = 1e-14;  // of alpha and beta
constexpr double GradientLimit = 1e-14;   // of |A^T r| / |r|; behind it rounding errors alone are solved for
constexpr int ToldSingly = 9, ToldEvery = 10;

double norm(std::span<const double> vector) {
    double sum = 0.0;
    for (const double value : vector) sum += value * value;
    return std::sqrt(sum);
}

void scale(double factor, std::span<double> vector) {
    for (double& value : vector) value *= factor;
}

/// Brings a vector to length 1 and gives its length; one of length 0 stays.
double normalise(std::span<double> vector) {
    const double length = norm(vector);
    if (length > 0.0) scale(1.0 / length, vector);
    return length;
}

void allocateOrStop(const Console& console, std::size_t size, std::string_view name,
                    std::vector<double>& vector) {
    try {
        vector.assign(size, 0.0);
    } catch (const std::bad_alloc&) {
        both(console, "Memory Allocation failure: Variable -> {}", name);
        hardStop(console);
    }
}

/// Numbers of the bidiagonalisation and of the plane rotations, by the letters of the paper.
struct Rotation {
    double alpha = 0.0, beta = 0.0;
    double rhobar = 0.0, phibar = 0.0;  // |rhobar| of the next rotation is |A^T r| / |r|
    double squares = 0.0;               // of all alpha and beta: the square of the matrix norm met so far
};

/// Next u, v, alpha and beta. What is 0 to rounding becomes 0; its vector then is noise and is not used.
void bidiagonalise(const MatchingSystem& system, Rotation& step, LsqrVectors& vectors) {
    scale(-step.alpha, vectors.u);
    apply_A(system, vectors.v, vectors.u);
    step.beta = normalise(vectors.u);
    step.squares += step.beta * step.beta;
    if (step.beta <= BreakdownLimit * std::sqrt(step.squares)) {
        step.beta = step.alpha = 0.0;
        return;
    }
    scale(-step.beta, vectors.v);
    apply_At(system, vectors.u, vectors.v);
    step.alpha = normalise(vectors.v);
    step.squares += step.alpha * step.alpha;
    if (step.alpha <= BreakdownLimit * std::sqrt(step.squares)) step.alpha = 0.0;
}

void rotate(Rotation& step, LsqrVectors& vectors) {
    const double rho = std::hypot(step.rhobar, step.beta);
    const double c = step.rhobar / rho, s = step.beta / rho;
    const double theta = s * step.alpha, phi = c * step.phibar;
    step.rhobar = -c * step.alpha;
    step.phibar = s * step.phibar;
    for (std::size_t n = 0; n < vectors.x.size(); ++n) {
        vectors.x[n] += phi / rho * vectors.w[n];
        vectors.w[n] = vectors.v[n] - theta / rho * vectors.w[n];
    }
}

bool isSolved(const Rotation& step) {
    return step.beta == 0.0 || std::abs(step.rhobar) <= GradientLimit * std::sqrt(step.squares);
}

void tellProgress(const Console& console, int iteration, double residual, double first) {
    if (iteration <= ToldSingly || iteration % ToldEvery == 0)
        both(console, " LSQR iteration : {:5}  residual : {:.6E}  ratio : {:.6E}", iteration, residual,
             residual / first);
}

}  // namespace

void allocateLsqr(const Console& console, const MatchingSystem& system, LsqrVectors& vectors) {
    allocateOrStop(console, system.columns(), "x", vectors.x);
    allocateOrStop(console, system.columns(), "v", vectors.v);
    allocateOrStop(console, system.columns(), "w", vectors.w);
    allocateOrStop(console, rowCount(system), "u", vectors.u);
}

LsqrResult solveByLsqr(const Console& console, const MatchingSystem& system, int iterationLimit,
                       LsqrVectors& vectors) {
    const std::vector<double>& b = system.data->rightSide;
    for (std::vector<double>* vector : {&vectors.x, &vectors.v, &vectors.u})
        std::fill(vector->begin(), vector->end(), 0.0);
    std::copy(b.begin(), b.end(), vectors.u.begin());
    Rotation step;
    step.beta = step.phibar = normalise(vectors.u);
    const double first = step.phibar;
    LsqrResult result{0, first};
    if (step.beta == 0.0) return result;
    apply_At(system, vectors.u, vectors.v);
    step.alpha = step.rhobar = normalise(vectors.v);
    step.squares = step.alpha * step.alpha;
    if (step.alpha == 0.0) return result;
    vectors.w = vectors.v;
    while (result.iterations < iterationLimit) {
        bidiagonalise(system, step, vectors);
        rotate(step, vectors);
        ++result.iterations;
        result.residualNorm = std::abs(step.phibar);
        tellProgress(console, result.iterations, result.residualNorm, first);
        if (result.residualNorm < ResidualLimit || isSolved(step)) break;
    }
    return result;
}

}  // namespace kvr
