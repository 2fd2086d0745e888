#pragma once

#include "pressure/solvers/dense.hpp"
#include "pressure/solvers/sparse_matrix.hpp"

#include <span>
#include <vector>

namespace kvr {

/// A matrix as Gauss-Seidel sweeps want it: strict triangles apart, diagonal inverted.
struct SweepMatrix {
    int rows = 0;
    std::vector<int> lowerStart, upperStart;  // [rows + 1]
    std::vector<int> lowerColumn, upperColumn;
    std::vector<double> lower, upper;
    std::vector<double> inverseDiagonal;  // [rows]
};

/// Triangles of a matrix; a diagonal of 0 counts as 1.
void splitTriangles(const SparseMatrix& matrix, SweepMatrix& split);

/// One level of the hierarchy with its work vectors.
struct MultigridLevel {
    SweepMatrix matrix;
    SparseMatrix interpolation;    // from the next coarser level; empty on the coarsest
    SparseMatrix restriction;      // its transposed
    std::vector<double> residual;  // [rows]; unused on the coarsest level
    std::vector<double> x, b;      // [rows]; unused on the finest level
};

struct Hierarchy {
    std::vector<MultigridLevel> levels;  // finest first
    DenseStorage coarsest;               // LU factors of the coarsest matrix when it is small enough
    bool coarsestFactored = false;
    double operatorComplexity = 0.0;  // stored entries of all levels over those of the finest
};

/// One V-cycle x = M^-1 b from the zero vector: forward Gauss-Seidel going down, backward going up, a
/// direct solve on the coarsest level (sweeps where that is too large to factor).
void applyCycle(Hierarchy& hierarchy, std::span<const double> b, std::span<double> x);

}  // namespace kvr
