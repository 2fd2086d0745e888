#pragma once

#include "pressure/solvers/linear_system.hpp"

#include <span>
#include <vector>

namespace kvr {

/// Scale of each well row: its column's size over its own, so that the scaled matrix is near symmetric
/// whatever units the row has.
void formWellScale(const LinearSystem& system, std::vector<double>& scale);

/// Factors s of the rows that bring the column sums of the matrix near its row sums,
///   sum_i s_i a_ij = sum_i a_ji.
/// Multigrid restricts with the transposed interpolation, which is right for matrices whose rows and columns
/// sum to nearly nothing; aggregation theory for unsymmetric M-matrices asks for the same (Notay 2012).
/// Rows sum so in a pressure matrix, columns do not where couplings differ by direction (one-sided
/// multipliers). The equations are those of a stationary distribution, solved by BalanceSweeps Gauss-Seidel
/// sweeps from s = 1: a symmetric matrix keeps s = 1. Where wells are scaled, the sums are those of the
/// scaled matrix. Factors stay positive and within 1/LargestBalance .. LargestBalance.
void balanceRows(const LinearSystem& system, std::span<const double> wellScale, std::vector<double>& factor);

inline constexpr int BalanceSweeps = 6;
inline constexpr double LargestBalance = 1e3;

}  // namespace kvr
