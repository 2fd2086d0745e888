#pragma once

#include "base/console.hpp"
#include "matching/matching_system.hpp"

#include <vector>

namespace kvr {

/// Working vectors of LSQR, made once for a system.
struct LsqrVectors {
    std::vector<double> x, v, w;  // by column; x is the solution
    std::vector<double> u;        // by row
};

/// Makes the vectors. Where there is no memory it prints "Memory Allocation failure: Variable -> " with the
/// vector's name and stops the run.
void allocateLsqr(const Console& console, const MatchingSystem& system, LsqrVectors& vectors);

struct LsqrResult {
    int iterations = 0;         // plane rotations applied
    double residualNorm = 0.0;  // |b - A x| over the rows of all kinds
};

/// Least squares by the bidiagonalisation of Paige and Saunders (1982), from x = 0; of systems with many
/// solutions it gives the one of least norm. Ends after `iterationLimit` rotations, where the rotated
/// residual is below 1e-8 in the units of the data (never in a system whose constraints hold the data off),
/// or where nothing is left to be solved for: beta, alpha or A^T r is 0 to rounding. A right side of 0 gives
/// x = 0 without an iteration. Iterations 1 to 9 and every tenth are told in one line: residual norm, and its
/// ratio to the first.
LsqrResult solveByLsqr(const Console& console, const MatchingSystem& system, int iterationLimit,
                       LsqrVectors& vectors);

}  // namespace kvr
