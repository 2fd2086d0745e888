#pragma once

#include "base/cell_array.hpp"
#include "pressure/records/iteration_history.hpp"
#include "pressure/records/upstream_sides.hpp"
#include "pressure/solvers/linear_system.hpp"
#include "pressure/solvers/solver_table.hpp"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kvr {

/// Where the coefficients of one connection of a rate well stand in the values of the system.
struct WellRowEntry {
    std::size_t connection = 0;  // 0-based, in the well's list
    std::int64_t inCellRow = 0;  // column of the bottom-hole pressure
    std::int64_t inWellRow = 0;  // column of the cell
};

/// The extra row of a rate well; its unknown is the change of the bottom-hole pressure.
struct WellRow {
    std::size_t well = 0;  // 0-based
    int row = 0;           // of the system
    std::vector<WellRowEntry> entries;
};

/// The pressure equation of one iteration: volume balances of the cells, each phase weighted by its
/// formation volume factor there. Row of a cell: inflows minus storage, so diagonals are negative and the
/// others positive; MatRhs is the residual R in volume a day, inflow positive. With M this matrix the
/// system that is solved is (-M) dP = R.
struct PressureMatrix {
    CellArray<double> MatDiag;      // storage and connections, then minus the sum of MatOff as well
    DirectionArray<double> MatOff;  // by direction of ConnectionTable
    CellArray<double> MatRhs;
    double storage = 0.0;  // of the field, volume a day per psi
    UpstreamSides upstream;
    CellArray<double> through;  // volume a day that crosses the connections of a cell, where sides are held
    CellArray<double> astray;   // the part of it that the present potentials would take from the other side

    LinearSystem system;
    DirectionArray<std::uint8_t> offPlace;  // place of a direction's entry behind the row's diagonal
    std::vector<WellRow> wellRows;
    std::vector<int> patternKey;  // rate wells and their cells: what the pattern was built for
};

/// What the solves of a run share: the memory of the routes, the solution vector, the info file.
struct PressureSolver {
    SolverMemoryPointer memory;
    std::vector<double> solution;  // [system.size] psi; cells, then rate wells
    bool infoFileOpened = false;
};

/// Working records of the pressure stage; sized at its first call, kept for the run.
struct PressureWork {
    PressureMatrix matrix;
    PressureSolver solver;
    IterationHistory history;  // of the running iteration, for its acceleration
};

}  // namespace kvr
