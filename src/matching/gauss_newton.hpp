#pragma once

#include "matching/matching_system.hpp"

#include <vector>

namespace kvr {

/// Most unknowns of a dense normal matrix: 0.8 GB, n^3/6 multiplications by Cholesky factors and some 9 n^3
/// by eigenvectors.
inline constexpr std::size_t MostDenseUnknowns = 10000;

/// Whether the normal equations of a system can be solved densely: always where it has no constraints, since
/// they are then solved in the space of the data.
bool gaussNewtonFits(const MatchingSystem& system);

/// Least squares by dense normal equations, A^T A x = A^T b, by Cholesky factors. Where the constraints leave
/// columns free, by the eigenvectors whose eigenvalues are above rounding; without constraints as
/// x = A^T (A A^T)^+ b. Both give the solution of least norm, as LSQR does,
/// but for eigenvalues below 1e-13 of the largest, which count as rounding: a row whose norm is 3e-7 of
/// another's is not matched. x by column, 0 where there is no memory for the matrix or the factorisation
/// fails, which the result tells.
bool solveByGaussNewton(const MatchingSystem& system, std::vector<double>& x);

}  // namespace kvr
