#pragma once

#include "pressure/solvers/cycle.hpp"
#include "pressure/solvers/solver_table.hpp"
#include "pressure/solvers/system_products.hpp"

namespace kvr {

/// Which check of the matrix failed; the codes that the callers' texts go by.
enum class MultigridCode : int {
    SmallGrid = -1,  // of ours: a model too small for the method; start-up takes the direct solver for those
    None = 0,
    Memory = 6,
    DiagonalNotFirst = 13,
    DiagonalSign = 14,
    RowPointer = 15,
    ColumnIndex = 16,
};

/// The hierarchy of one pattern, kept from solve to solve.
struct MultigridMemory {
    PatternKey key;
    Hierarchy hierarchy;
    std::vector<double> wellScale;    // [wells] of the rows behind the cells
    std::vector<double> wellBalance;  // [wells] their balance at the set-up
    double freshPace = 0.0;           // iterations per decade of the first solve behind the set-up
    double pace = 0.0;                // the same of the slowest with a kept hierarchy
    bool worn = true;                 // the next solve sets up anew
};

/// Checks the rows: pointers rising, columns in range, diagonal first and positive.
MultigridCode checkRows(const LinearSystem& system);

/// Builds the hierarchy from the system's present values.
void setUpHierarchy(const LinearSystem& system, MultigridMemory& memory);

/// Puts the system's values on the finest level and leaves the coarser ones as they are.
void refreshFinest(const LinearSystem& system, MultigridMemory& memory);

/// Route of `amg` and `samg`: one V-cycle of algebraic multigrid (Ruge and Stueben 1987) preconditions
/// BiCGSTAB. Rate wells stay on the coarse levels as points of their own; their rows are scaled to the
/// size of their columns, which makes up for surface units, and all rows so that columns sum as rows do. The
/// hierarchy is kept while the pattern
/// stands and built again where a solve would take so many more iterations than behind the set-up that a new
/// one pays. A solve that
/// comes to a halt goes on with ILU(0)-BiCGSTAB and, if small, ends with the dense factorisation. Failures:
/// BadMatrix with a MultigridCode, Memory, NotConverged, NotANumber.
SolveResult solveMultigrid(const LinearSystem& system, std::span<double> solution, SolverMemory& memory);

}  // namespace kvr
