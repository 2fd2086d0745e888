#include "pressure/pressure_matrix.hpp"

#include "base/constants.hpp"
#include "base/threads.hpp"
#include "model/dual_porosity.hpp"
#include "pressure/wells/well_rates.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double EmptyDiagonal = -1.0;  // of a row without any coefficient

/// Column numbers of the cell rows' well entries, by cell: (cell, well row) pairs in order of the wells.
struct WellColumn {
    CellId cell = 0;
    std::size_t wellRow = 0;
    std::size_t entry = 0;
};

std::vector<int> keyOf(const WellRecord& wells) {
    std::vector<int> key;
    for (std::size_t w = 0; w < wells.wells.size(); ++w) {
        if (!isRateControlled(wells.wells[w])) continue;
        key.push_back(-static_cast<int>(w) - 1);
        for (const WellConnection& connection : wells.wells[w].connections)
            key.push_back(connection.ConnCell);
    }
    return key;
}

/// The rate wells with one entry per connection, their places still open; returns the cell columns they
/// need, sorted by cell. A cell that a well is connected to twice has one column for both.
std::vector<WellColumn> collectWellRows(const WellRecord& wells, int cellRows,
                                        std::vector<WellRow>& wellRows) {
    wellRows.clear();
    std::vector<WellColumn> columns;
    for (std::size_t w = 0; w < wells.wells.size(); ++w) {
        const Well& well = wells.wells[w];
        if (!isRateControlled(well)) continue;
        WellRow row;
        row.well = w;
        row.row = cellRows + static_cast<int>(wellRows.size());
        row.entries.resize(well.connections.size());
        for (std::size_t n = 0; n < well.connections.size(); ++n) {
            row.entries[n].connection = n;
            columns.push_back({well.connections[n].ConnCell, wellRows.size(), n});
        }
        wellRows.push_back(std::move(row));
    }
    std::stable_sort(columns.begin(), columns.end(),
                     [](const WellColumn& a, const WellColumn& b) { return a.cell < b.cell; });
    return columns;
}

/// Diagonal and neighbours of a cell. Directions that lead to the same neighbour share one entry.
void appendNeighbours(const ConnectionTable& connections, CellId cell, PressureMatrix& matrix) {
    LinearSystem& system = matrix.system;
    const std::size_t start = system.column.size();
    system.column.push_back(cell - 1);
    for (int d = 1; d <= connections.NDIR; ++d) {
        const CellId neighbour = connections.Neighbour(cell, d);
        if (neighbour <= 0) continue;
        auto place = std::find(system.column.begin() + static_cast<std::ptrdiff_t>(start),
                               system.column.end(), neighbour - 1);
        if (place == system.column.end()) {
            system.column.push_back(neighbour - 1);
            place = system.column.end() - 1;
        }
        const auto offset = place - system.column.begin() - static_cast<std::ptrdiff_t>(start);
        matrix.offPlace(cell, d) = static_cast<std::uint8_t>(offset);
    }
}

/// Columns of the rate wells completed in a cell; `next` walks the sorted list.
void appendWellColumns(const std::vector<WellColumn>& columns, CellId cell, std::size_t& next,
                       PressureMatrix& matrix) {
    LinearSystem& system = matrix.system;
    int lastRow = -1;
    for (; next < columns.size() && columns[next].cell == cell; ++next) {
        WellRow& row = matrix.wellRows[columns[next].wellRow];
        if (row.row != lastRow) system.column.push_back(row.row);
        lastRow = row.row;
        WellRowEntry& entry = row.entries[columns[next].entry];
        entry.inCellRow = static_cast<std::int64_t>(system.column.size()) - 1;
    }
}

void appendWellRow(const Well& well, WellRow& row, LinearSystem& system) {
    const std::size_t start = system.column.size();
    system.column.push_back(row.row);
    for (WellRowEntry& entry : row.entries) {
        const int cell = well.connections[entry.connection].ConnCell - 1;
        auto place =
            std::find(system.column.begin() + static_cast<std::ptrdiff_t>(start), system.column.end(), cell);
        entry.inWellRow = place - system.column.begin();
        if (place == system.column.end()) system.column.push_back(cell);
    }
}

void sizeCoefficients(const GridModel& grid, const ConnectionTable& connections, PressureMatrix& matrix) {
    matrix.MatDiag.assign(grid.NCELLS, 0.0);
    matrix.MatRhs.assign(grid.NCELLS, 0.0);
    matrix.MatOff.assign(grid.NCELLS, connections.NDIR, 0.0);
}

/// Entries of all rows, at most: diagonals, neighbours, and each cell of a rate well in its own row and in
/// the well's.
std::size_t mostEntries(const ConnectionTable& connections, const std::vector<WellColumn>& columns,
                        const LinearSystem& system) {
    const std::vector<CellId>& all = connections.Neighbour.slots;
    const auto neighbours = std::count_if(all.begin(), all.end(), [](CellId n) { return n > 0; });
    return static_cast<std::size_t>(system.size) + static_cast<std::size_t>(neighbours) + 2 * columns.size();
}

/// Row of one rate well. Its coefficients are surface rates; scaled to the reservoir volume of its
/// connections they are of the size of the cell rows, which the iterative solvers need.
void fillWellRow(const UnitSystem& units, const FluidTables& tables, const CellState& state,
                 double averagePressure, const Well& well, const WellRow& row, LinearSystem& system) {
    double surface = 0.0, reservoir = 0.0, current = 0.0;
    const auto diagonal = static_cast<std::size_t>(system.rowStart[static_cast<std::size_t>(row.row)]);
    for (const WellRowEntry& entry : row.entries) {
        const ConnectionCoefficients c = connectionCoefficients(units, tables, state, averagePressure, well,
                                                                well.connections[entry.connection]);
        const double term = rowTerm(well, c);
        surface += term;
        reservoir += c.reservoir;
        current += term * c.dp;
        system.value[static_cast<std::size_t>(entry.inCellRow)] -= c.reservoir;
        system.value[static_cast<std::size_t>(entry.inWellRow)] -= term;
    }
    double& rhs = system.rhs[static_cast<std::size_t>(row.row)];
    if (surface <= SmallestNormal) {  // no share can be formed: the well keeps its pressure
        system.value[diagonal] = 1.0;
        rhs = 0.0;
        return;
    }
    const double scale = reservoir / surface;
    system.value[diagonal] = reservoir;
    for (auto k = diagonal + 1;
         k < static_cast<std::size_t>(system.rowStart[static_cast<std::size_t>(row.row) + 1]); ++k)
        system.value[k] *= scale;
    rhs = (rowTarget(well) - current) * scale;
}

double completedDiagonal(const ConnectionTable& connections, CellId cell, const PressureMatrix& matrix) {
    double diagonal = matrix.MatDiag[cell];
    const double* off = matrix.MatOff.row(cell);
    for (int d = 0; d < connections.NDIR; ++d) diagonal -= off[d];
    return std::abs(diagonal) <= SmallestNormal ? EmptyDiagonal : diagonal;
}

void fillCellRow(const GridModel& grid, const ConnectionTable& connections, CellId cell,
                 PressureMatrix& matrix) {
    LinearSystem& system = matrix.system;
    const auto start = static_cast<std::size_t>(system.rowStart[static_cast<std::size_t>(cell) - 1]);
    matrix.MatDiag[cell] = completedDiagonal(connections, cell, matrix);
    system.value[start] = -matrix.MatDiag[cell];
    for (int d = 1; d <= connections.NDIR; ++d)
        if (connections.Neighbour(cell, d) > 0)
            system.value[start + matrix.offPlace(cell, d)] -= matrix.MatOff(cell, d);
    if (grid.Active[cell] == 0) matrix.MatRhs[cell] = 0.0;
    system.rhs[static_cast<std::size_t>(cell) - 1] = matrix.MatRhs[cell];
}

}  // namespace

void buildPattern(const GridModel& grid, const ConnectionTable& connections, const WellRecord& wells,
                  PressureMatrix& matrix) {
    LinearSystem& system = matrix.system;
    std::vector<int> key = keyOf(wells);
    if (system.cellRows == grid.NCELLS && matrix.offPlace.width == connections.NDIR &&
        system.patternStamp != 0 && key == matrix.patternKey) {
        if (matrix.MatDiag.empty()) sizeCoefficients(grid, connections, matrix);
        return;
    }
    matrix.patternKey = std::move(key);
    sizeCoefficients(grid, connections, matrix);
    matrix.offPlace.assign(grid.NCELLS, connections.NDIR, 0);
    const std::vector<WellColumn> columns = collectWellRows(wells, grid.NCELLS, matrix.wellRows);
    system.cellRows = grid.NCELLS;
    system.size = grid.NCELLS + static_cast<int>(matrix.wellRows.size());
    system.column.clear();
    system.column.reserve(mostEntries(connections, columns, system));
    system.rowStart.assign(1, 0);
    system.rowStart.reserve(static_cast<std::size_t>(system.size) + 1);
    std::size_t next = 0;
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        appendNeighbours(connections, cell, matrix);
        appendWellColumns(columns, cell, next, matrix);
        system.rowStart.push_back(static_cast<std::int64_t>(system.column.size()));
    }
    for (WellRow& row : matrix.wellRows) {
        appendWellRow(wells.wells[row.well], row, system);
        system.rowStart.push_back(static_cast<std::int64_t>(system.column.size()));
    }
    system.value.assign(system.column.size(), 0.0);
    system.rhs.assign(static_cast<std::size_t>(system.size), 0.0);
    ++system.patternStamp;
}

void releaseCoefficients(PressureMatrix& matrix) {
    matrix.MatDiag = {};
    matrix.MatRhs = {};
    matrix.MatOff = {};
}

void addWellTerms(const UnitSystem& units, const FluidTables& tables, const CellState& state,
                  double averagePressure, const WellRecord& wells, PressureMatrix& matrix) {
    for (const Well& well : wells.wells)
        for (const WellConnection& connection : well.connections) {
            const ConnectionCoefficients c =
                connectionCoefficients(units, tables, state, averagePressure, well, connection);
            matrix.MatDiag[connection.ConnCell] -= c.reservoir;
            matrix.MatRhs[connection.ConnCell] += c.reservoir * c.dp;
        }
}

void fillSystem(const UnitSystem& units, const GridModel& grid, const ConnectionTable& connections,
                const FluidTables& tables, const CellState& state, double averagePressure,
                const WellRecord& wells, PressureMatrix& matrix) {
    LinearSystem& system = matrix.system;
    std::fill(system.value.begin(), system.value.end(), 0.0);
#pragma omp parallel for schedule(static) if (grid.NCELLS >= ParallelCells)
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) fillCellRow(grid, connections, cell, matrix);
    for (const WellRow& row : matrix.wellRows)
        fillWellRow(units, tables, state, averagePressure, wells.wells[row.well], row, system);
}

void eliminateMatrixCells(const GridModel& grid, const ConnectionTable& connections, PressureMatrix& matrix) {
    LinearSystem& system = matrix.system;
    for (CellId m = 1; m <= matrixCells(grid); ++m) {
        const CellId f = partnerOf(grid, m);
        if (connections.Trans(m, TransferDirection) == 0.0) continue;
        const auto row = [](CellId cell) { return static_cast<std::size_t>(cell) - 1; };
        const auto diagonal = [&](CellId cell) {
            return static_cast<std::size_t>(system.rowStart[row(cell)]);
        };
        const auto other = [&](CellId cell) {
            return diagonal(cell) + matrix.offPlace(cell, TransferDirection);
        };
        const double factor = system.value[other(f)] / system.value[diagonal(m)];
        system.value[diagonal(f)] -= factor * system.value[other(m)];
        system.rhs[row(f)] -= factor * system.rhs[row(m)];
        system.value[other(f)] = system.value[other(m)] = 0.0;
        system.rhs[row(m)] = 0.0;
    }
}

void solveMatrixCells(const GridModel& grid, const ConnectionTable& connections, const PressureMatrix& matrix,
                      std::span<double> solution) {
    for (CellId m = 1; m <= matrixCells(grid); ++m) {
        if (connections.Trans(m, TransferDirection) == 0.0) continue;
        const double fracture = solution[static_cast<std::size_t>(partnerOf(grid, m)) - 1];
        solution[static_cast<std::size_t>(m) - 1] =
            -(matrix.MatRhs[m] + matrix.MatOff(m, TransferDirection) * fracture) / matrix.MatDiag[m];
    }
}

}  // namespace kvr
