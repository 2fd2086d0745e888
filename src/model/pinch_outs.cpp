#include "model/pinch_outs.hpp"

#include "model/box_transmissibility.hpp"
#include "model/corner_transmissibility.hpp"
#include "model/neighbours.hpp"

namespace kvr {

namespace {

constexpr int Top = 5, Bottom = 6;  // faces

void markPinchedOut(const CellArray<std::uint8_t>& before, GridModel& grid) {
    grid.PinchedOut.assign(grid.NCELLS, 0);
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        if (grid.Active[cell] != 0) continue;
        const bool closed = grid.pinch.acrossSmall && before[cell] != 0;
        grid.PinchedOut[cell] = closed || grid.DZ[cell] <= grid.pinch.thickness ? 1 : 0;
    }
}

void join(bool cornerFormula, CellId above, CellId below, const GridModel& grid,
          ConnectionTable& connections) {
    connections.Neighbour(above, Bottom) = below;
    connections.Neighbour(below, Top) = above;
    if (cornerFormula) return connectFaceByCornerFormula(grid, connections, above, Bottom);
    connectFaceByBoxFormula(grid, connections, above, Bottom);
    connectFaceByBoxFormula(grid, connections, below, Top);
}

}  // namespace

CellId joinAcrossPinchOuts(bool cornerFormula, const CellArray<std::uint8_t>& before, GridModel& grid,
                           ConnectionTable& connections) {
    markPinchedOut(before, grid);
    CellId joined = 0;
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        const CellId below = neighbourOf(grid, cell, Bottom);
        if (grid.Active[cell] == 0 || below <= 0 || grid.Active[below] == 0) continue;
        if (below == connections.Neighbour(cell, Bottom)) continue;  // they touch
        join(cornerFormula, cell, below, grid, connections);
        ++joined;
    }
    return joined;
}

}  // namespace kvr
