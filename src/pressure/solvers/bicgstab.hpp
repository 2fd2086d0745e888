#pragma once

#include "base/row_ranges.hpp"
#include "pressure/solvers/krylov.hpp"
#include "pressure/solvers/solver_table.hpp"
#include "pressure/solvers/system_products.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace bicgstab_detail {

/// p = r + beta (p - omega v)
inline void advanceDirection(double beta, double omega, std::span<const double> r, std::span<const double> v,
                             std::span<double> p) {
    forRanges(cutRows(static_cast<int>(p.size()), ShortestVectorRange), [&](RowRange range) {
        for (int i = range.first; i < range.end; ++i) p[i] = r[i] + beta * (p[i] - omega * v[i]);
    });
}

/// y += a x; returns ||y||
inline double addScaled(double a, std::span<const double> x, std::span<double> y) {
    return std::sqrt(
        sumOverRanges(cutRows(static_cast<int>(y.size()), ShortestVectorRange), [&](RowRange range) {
            double sum = 0.0;
            for (int i = range.first; i < range.end; ++i) {
                y[i] += a * x[i];
                sum += y[i] * y[i];
            }
            return sum;
        }));
}

}  // namespace bicgstab_detail

/// BiCGSTAB (van der Vorst 1992) with right preconditioning, so that the residual of the recurrence is
/// the one of the system; starts from the x given. precondition(r, z) writes z = M^-1 r. Stops at
/// ||r|| <= tolerance * rightSideSize, at a breakdown, at the iteration limit or without progress. A System
/// has a right side `rhs` and the functions `multiply`, `formResidual` and `rightSideSize`.
template <class System, class Preconditioner>
KrylovOutcome bicgstab(const System& system, const KrylovLimits& limits, std::span<double> x,
                       KrylovVectors& work, const Preconditioner& precondition) {
    using bicgstab_detail::addScaled;
    KrylovOutcome outcome;
    const double scale = 1.0 / rightSideSize(system);
    std::vector<double>&r = work.r, &shadow = work.rt, &p = work.p, &v = work.q, &t = work.qt;
    outcome.residual = formResidual(system, x, r) * scale;
    std::copy(r.begin(), r.end(), shadow.begin());
    std::fill(p.begin(), p.end(), 0.0);
    std::fill(v.begin(), v.end(), 0.0);
    double rho = 1.0, alpha = 1.0, omega = 1.0;
    StallWatch watch;
    while (outcome.residual > limits.tolerance && outcome.iterations < limits.iterations) {
        const double newRho = dotProduct(shadow, r);
        bicgstab_detail::advanceDirection((newRho / rho) * (alpha / omega), omega, r, v, p);
        rho = newRho;
        precondition(std::span<const double>(p), std::span<double>(work.z));
        multiply(system, work.z, v);
        alpha = rho / dotProduct(shadow, v);
        if (!std::isfinite(alpha) || alpha == 0.0) break;
        ++outcome.iterations;
        outcome.residual = addScaled(-alpha, v, r) * scale;
        addScaled(alpha, work.z, x);
        if (!(outcome.residual > limits.tolerance)) break;
        precondition(std::span<const double>(r), std::span<double>(work.z));
        multiply(system, work.z, t);
        omega = dotProduct(t, r) / dotProduct(t, t);
        if (!std::isfinite(omega) || omega == 0.0) break;
        outcome.residual = addScaled(-omega, t, r) * scale;
        addScaled(omega, work.z, x);
        if (!std::isfinite(outcome.residual) || watch.stalled(outcome.residual, limits.patience)) break;
    }
    return outcome;
}

/// ILU(0)-BiCGSTAB with restarts from the x given, the second resort of the iterative routes. Adds its
/// iterations to those of `result` and judges x anew; a solution that is not finite starts again from 0.
void resortToIncomplete(const LinearSystem& system, std::span<double> solution, SolverMemory& memory,
                        SolveResult& result);

/// Marks an iterative result that is finite but not good enough as NotConverged.
void judgeConvergence(const LinearSystem& system, SolveResult& result);

}  // namespace kvr
