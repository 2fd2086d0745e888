#pragma once

#include "pressure/solvers/krylov.hpp"
#include "pressure/solvers/solver_table.hpp"

namespace kvr {

struct IncompleteFactors;

/// Biconjugate gradients (Fletcher 1976) preconditioned with incomplete factors, from the x given:
/// stops at ||r|| / ||b|| <= tolerance, at a breakdown, at the iteration limit or without progress.
KrylovOutcome bicg(const LinearSystem& system, const IncompleteFactors& factors, const KrylovLimits& limits,
                   std::span<double> x, KrylovVectors& work);

/// Route of `gmres`, `cg` and `bicg`, which share one branch: ILU(0)-BiCG, started again from where it
/// stands after a breakdown, then ILU(0)-BiCGSTAB. NotConverged when the true residual stays above
/// AcceptedResidual, NotANumber when the solution is not finite.
SolveResult solveBicg(const LinearSystem& system, std::span<double> solution, SolverMemory& memory);

}  // namespace kvr
