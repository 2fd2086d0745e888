#pragma once

#include "pressure/solvers/dense.hpp"
#include "pressure/solvers/sparse_matrix.hpp"
#include "pressure/solvers/sweeps.hpp"

#include <span>
#include <vector>

namespace kvr {

/// Weights between two levels in single precision. The coarse matrix is formed from the weights as they are
/// stored here: the cycle then stays a Galerkin one, and the rounding does not show in it.
struct Transfer {
    int rows = 0;
    std::vector<int> start;  // [rows + 1]
    std::vector<int> column;
    std::vector<float> weight;
};

/// Rounds the weights of an interpolation to what a Transfer holds, to multiples of 2^-21, and keeps the sum
/// of each row to that grid: rows that interpolate a constant exactly still do, without which a closed box
/// with hardly any storage would not converge.
void roundWeights(SparseMatrix& interpolation);

/// The weights of a matrix, which is used up; they must be rounded already.
Transfer transferOf(SparseMatrix& matrix);

/// One level of the hierarchy with its work vectors, [rows] each.
struct MultigridLevel {
    SweepMatrix matrix;
    Transfer interpolation;  // from the next coarser level; empty on the coarsest
    Transfer restriction;    // its transposed
    std::vector<double> x, b;
};

struct Hierarchy {
    std::vector<MultigridLevel> levels;  // finest first
    std::vector<int> order;              // row of the system for each row of the finest level
    std::vector<double> rowScale;        // scale of each row of the system on the finest level
    DenseStorage coarsest;               // LU factors of the coarsest matrix when it is small enough
    bool coarsestFactored = false;
    double operatorComplexity = 0.0;  // stored entries of all levels over those of the finest
};

/// Work vectors of a level for the matrix it holds.
void sizeVectors(MultigridLevel& level);

/// One V-cycle x = M^-1 b from the zero vector: forward Gauss-Seidel going down, backward going up, a
/// direct solve on the coarsest level (sweeps where that is too large to factor). x and b are numbered and
/// scaled as the rows of the system are; residuals of all levels stand in x meanwhile.
void applyCycle(Hierarchy& hierarchy, std::span<const double> b, std::span<double> x);

}  // namespace kvr
