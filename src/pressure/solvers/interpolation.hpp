#pragma once

#include "pressure/solvers/coarsening.hpp"
#include "pressure/solvers/sparse_matrix.hpp"

#include <span>
#include <vector>

namespace kvr {

/// Interpolation from the coarse points to all rows, [rows x coarse points], coarse points numbered in
/// row order. Extended+i formula (De Sterck, Falgout, Nolting and Yang 2008): fine row i interpolates from
/// the coarse points C within strong distance two,
///   w_ij = -(a_ij + sum_k a_ik a_kj / s_ik) / d_i,  k strong fine neighbours of i,
///   s_ik = sum of the negative a_kl over l in C and l = i,
///   d_i = a_ii + couplings that are not strong (positive ones among them) + sum_k a_ik a_ki / s_ik.
/// Each row keeps its MaxWeights largest weights, scaled so that its sum stays. A row that reaches no
/// coarse point is empty.
SparseMatrix extendedInterpolation(const SparseMatrix& matrix, const StrengthGraph& graph,
                                   std::span<const PointKind> kind);

inline constexpr int MaxWeights = 4;

}  // namespace kvr
