#pragma once

#include "pressure/solvers/linear_system.hpp"
#include "pressure/solvers/solver_table.hpp"

#include <array>
#include <string_view>
#include <vector>

namespace kvr {

/// How the linear system of a line is solved.
enum class LineRoute {
    Forward,  // band storage, node by node from the inlet: exact where no node looks downstream
    Banded,   // band storage, elimination with row pivoting
    Dense,    // full storage, elimination with row pivoting
    Sparse    // compressed rows, an iterative route of the pressure solvers
};

/// The route of the solver word: "dgesv" dense, "amg" sparse, "gband" and blank band storage, which goes
/// forward wherever nothing couples downstream.
LineRoute lineRouteOf(std::string_view word);

/// Linear system of one line: a block row per node 0..nodes-1, coupled with the node before, and with the
/// one behind unless `upstreamOnly`. Blocks are row-major, unknowns by unknowns, at [node * unknowns^2].
struct LineMatrix {
    int unknowns = 1;  // per node, 1 or 3
    int nodes = 0;
    bool upstreamOnly = true;
    std::vector<double> lower, diagonal, upper;
    std::vector<double> rhs;  // [nodes * unknowns]; the solution once solved

    // What the slower routes store.
    std::vector<double> full;  // the full matrix, column-major, or what elimination leaves of its rows
    std::vector<int> pivot;
    LinearSystem sparse;
    std::vector<double> solution;
    SolverMemoryPointer memory;
};

void sizeLineMatrix(int unknowns, int nodes, LineMatrix& matrix);

/// Solves in place: rhs becomes the solution, the blocks are used up. A route that cannot take the structure
/// gives way: Forward to Banded where nodes look downstream, Dense to Banded from 4000 rows on. False for a
/// singular matrix; rhs is undefined then.
bool solveLineMatrix(LineRoute route, LineMatrix& matrix);

/// b := A^-1 b for one block of m by m, row-major, with row pivoting; A is overwritten. False where a pivot
/// vanishes or is not a number.
bool solveBlock(int m, std::array<double, 9>& a, double* b);

/// Entry of a scalar row and column, 0 outside the blocks.
double entryAt(const LineMatrix& matrix, int row, int column);

}  // namespace kvr
