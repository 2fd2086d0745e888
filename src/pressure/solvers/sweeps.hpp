#pragma once

#include "base/row_ranges.hpp"
#include "pressure/solvers/sparse_matrix.hpp"

#include <span>
#include <vector>

namespace kvr {

/// What rows see of their own range and of the tail, in compressed rows without the diagonal, the strict
/// lower part of each row before the upper one. Single precision: sweeps move more entries than anything else
/// in a run.
struct Couplings {
    std::vector<int> start;   // [rows + 1]
    std::vector<int> middle;  // [rows] first entry of the upper part
    std::vector<int> column;
    std::vector<float> value;
};

/// Couplings across the borders of ranges, of the rows that have any.
struct BorderRows {
    std::vector<int> row;    // rising
    std::vector<int> start;  // [rows here + 1]
    std::vector<int> column;
    std::vector<double> value;
    std::vector<double> surplus;  // what the diagonal of the sweep has beyond that of the matrix
    std::vector<int> rangeStart;  // [ranges + 1] first of each range in the lists above
};

/// A matrix as Gauss-Seidel sweeps want it. The rows before `tail` are cut into a number of ranges that
/// depends on their number alone and are swept side by side, each with the values that the others had before
/// the sweep; the rows behind (rate wells, coupled to cells of many ranges) follow one by one in a forward
/// sweep and precede in a backward one. Couplings across borders stand apart. A row with such couplings has
/// BorderShare of their absolute sum added to its diagonal, which keeps the sweep convergent (Baker, Falgout,
/// Kolev and Yang 2011). What the rounding of the triangles takes from a row's sum goes to its diagonal: the
/// sum is the storage of the cell, which may be far below the rounding of a coupling.
struct SweepMatrix {
    int rows = 0;
    int tail = 0;  // first row behind the ranges
    RowRanges ranges;
    Couplings inner;
    BorderRows border;
    std::vector<double> inverseDiagonal;  // [rows]
};

inline constexpr double BorderShare = 0.5;

/// Splits a matrix whose last `tailRows` rows are the tail; a diagonal of 0 counts as 1.
void splitForSweeps(const SparseMatrix& matrix, int tailRows, SweepMatrix& split);

/// Forward sweep for A x = b from the zero vector.
void sweepForwardFromZero(const SweepMatrix& a, std::span<const double> b, std::span<double> x);

/// r = b - A x behind a forward sweep from zero, which has solved all but what it had not seen yet.
void formSweptResidual(const SweepMatrix& a, std::span<const double> x, std::span<double> r);

/// Sweeps from the x given. `b` is scratch: couplings across borders are moved into it.
void sweepForward(const SweepMatrix& a, std::span<double> b, std::span<double> x);
void sweepBackward(const SweepMatrix& a, std::span<double> b, std::span<double> x);

}  // namespace kvr
