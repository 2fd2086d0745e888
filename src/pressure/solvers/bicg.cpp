#include "pressure/solvers/bicg.hpp"

#include "pressure/solvers/bicgstab.hpp"
#include "pressure/solvers/ilu.hpp"
#include "pressure/solvers/solver_memory.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr int Restarts = 3;

/// Both directions at once: p = z + beta p, pt = zt + beta pt.
void advanceDirections(double beta, KrylovVectors& work) {
    for (std::size_t i = 0; i < work.p.size(); ++i) {
        work.p[i] = work.z[i] + beta * work.p[i];
        work.pt[i] = work.zt[i] + beta * work.pt[i];
    }
}

/// x += alpha p, r -= alpha q, rt -= alpha qt; returns ||r||.
double takeStep(double alpha, std::span<double> x, KrylovVectors& work) {
    double sum = 0.0;
    for (std::size_t i = 0; i < x.size(); ++i) {
        x[i] += alpha * work.p[i];
        work.r[i] -= alpha * work.q[i];
        work.rt[i] -= alpha * work.qt[i];
        sum += work.r[i] * work.r[i];
    }
    return std::sqrt(sum);
}

}  // namespace

KrylovOutcome bicg(const LinearSystem& system, const IncompleteFactors& factors, const KrylovLimits& limits,
                   std::span<double> x, KrylovVectors& work) {
    KrylovOutcome outcome;
    const double scale = 1.0 / rightSideSize(system);
    outcome.residual = formResidual(system, x, work.r) * scale;
    std::copy(work.r.begin(), work.r.end(), work.rt.begin());
    std::fill(work.p.begin(), work.p.end(), 0.0);
    std::fill(work.pt.begin(), work.pt.end(), 0.0);
    double rho = 1.0;
    StallWatch watch;
    while (outcome.residual > limits.tolerance && outcome.iterations < limits.iterations) {
        applyIncomplete(factors, work.r, work.z);
        applyIncompleteTransposed(factors, work.rt, work.zt);
        const double newRho = dotProduct(work.z, work.rt);
        advanceDirections(outcome.iterations == 0 ? 0.0 : newRho / rho, work);
        rho = newRho;
        multiplyBoth(system, work.p, work.q, work.pt, work.qt);
        const double alpha = rho / dotProduct(work.pt, work.q);
        if (!std::isfinite(alpha) || alpha == 0.0) break;
        ++outcome.iterations;
        outcome.residual = takeStep(alpha, x, work) * scale;
        if (!std::isfinite(outcome.residual) || watch.stalled(outcome.residual, limits.patience)) break;
    }
    return outcome;
}

SolveResult solveBicg(const LinearSystem& system, std::span<double> solution, SolverMemory& memory) {
    memory.vectors.resizeBoth(system.size);
    factorIncomplete(system, memory.factors);
    SolveResult result = judgeSolution(system, solution, 0, memory.vectors.r);
    int left = SolverIterations;
    for (int restart = 0; restart < Restarts && left > 0 && result.residual > system.tolerance; ++restart) {
        const KrylovLimits limits{system.tolerance, left};
        const KrylovOutcome outcome = bicg(system, memory.factors, limits, solution, memory.vectors);
        left -= outcome.iterations;
        result = judgeSolution(system, solution, result.iterations + outcome.iterations, memory.vectors.r);
        if (!(result.residual <= 1.0)) break;
    }
    if (!(result.residual <= accepted(system))) resortToIncomplete(system, solution, memory, result);
    judgeConvergence(system, result);
    return result;
}

}  // namespace kvr
