#pragma once

#include "pressure/solvers/sparse_matrix.hpp"

namespace kvr {

/// Coarse matrix P' A P with `restriction` the transposed P, row by row: a coarse row gathers the rows of A
/// that interpolate from it, then spreads what it gathered over the coarse points. Diagonal first in each row
/// of the result.
SparseMatrix galerkinProduct(const SparseMatrix& matrix, const SparseMatrix& interpolation,
                             const SparseMatrix& restriction);

}  // namespace kvr
