#include "model/neighbours.hpp"

#include "base/threads.hpp"
#include "model/dual_porosity.hpp"

namespace kvr {

namespace {

constexpr int LowZ = 5, HighZ = 6;

bool inside(int index, int count) {
    return index >= 1 && index <= count;
}

/// The cell that `cell` may be connected to in a direction. Matrix cells of dual porosity have nobody but
/// their fractures.
CellId connectedTo(const GridModel& grid, CellId cell, int direction) {
    if (!grid.dual.isSet) return neighbourOf(grid, cell, direction);
    if (direction == TransferDirection) {
        const CellId partner = partnerOf(grid, cell);
        return grid.Active[partner] != 0 ? partner : 0;
    }
    return isMatrixCell(grid, cell) ? 0 : neighbourOf(grid, cell, direction);
}

}  // namespace

CellId neighbourOf(const GridModel& grid, CellId cell, int direction) {
    const auto& offset = DirectionOffset[direction - 1];
    const int i = grid.CellI[cell] + offset[0];
    const int j = grid.CellJ[cell] + offset[1];
    int k = grid.CellK[cell] + offset[2];
    if (!inside(i, grid.NX) || !inside(j, grid.NY) || !inside(k, grid.NZ)) return 0;
    CellId found = cellIndex(grid, i, j, k);
    const bool mayJump = !grid.PinchedOut.empty() && (direction == LowZ || direction == HighZ);
    while (mayJump && grid.PinchedOut[found] != 0) {
        k += offset[2];
        if (!inside(k, grid.NZ)) return 0;
        found = cellIndex(grid, i, j, k);
    }
    return isMatrixCell(grid, found) == isMatrixCell(grid, cell) ? found : 0;
}

void buildNeighbours(const GridModel& grid, ConnectionTable& connections) {
#pragma omp parallel for schedule(static) if (grid.NCELLS >= ParallelCells)
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell)
        for (int d = 1; d <= (connections.further.empty() ? connections.NDIR : FaceCount); ++d)
            connections.Neighbour(cell, d) = grid.Active[cell] != 0 ? connectedTo(grid, cell, d) : 0;
}

void closeInactiveCells(const GridModel& grid, ConnectionTable& connections) {
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        if (grid.Active[cell] != 0) continue;
        for (int d = 1; d <= connections.Trans.width; ++d) {
            connections.Trans(cell, d) = 0.0;
            if (!connections.further.empty() && d > FaceCount) continue;
            const CellId beside = neighbourOf(grid, cell, d);
            if (beside <= 0) continue;
            for (int back = 1; back <= connections.Trans.width; ++back)
                if (connections.Neighbour(beside, back) == cell) connections.Trans(beside, back) = 0.0;
        }
    }
}

}  // namespace kvr
