#pragma once

#include "base/constants.hpp"
#include "model/block_grid.hpp"
#include "model/corner_point.hpp"
#include "model/grid_memory.hpp"

#include <vector>

namespace kvr {

/// A grid of its size with porosity 0.2 and 100 md everywhere; geometry still to be built.
inline GridModel rockOnly(int nx, int ny, int nz) {
    GridModel grid;
    grid.NX = nx;
    grid.NY = ny;
    grid.NZ = nz;
    allocateGrid(grid);
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        grid.PORO[cell] = 0.2;
        grid.PERMX[cell] = grid.PERMY[cell] = grid.PERMZ[cell] = 100.0;
    }
    return grid;
}

inline void setCells(CellArray<double>& array, const std::vector<double>& values) {
    for (std::size_t n = 0; n < values.size(); ++n) array[static_cast<CellId>(n + 1)] = values[n];
}

/// Equal blocks under one flat top at 1000 ft.
inline GridModel uniformBlocks(int nx, int ny, int nz, double dx, double dy, double dz) {
    GridModel grid = rockOnly(nx, ny, nz);
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        grid.DX[cell] = dx;
        grid.DY[cell] = dy;
        grid.DZ[cell] = dz;
        grid.TOPS[cell] = 1000.0;
    }
    fillTopsBelow(grid);
    buildBlockGrid(grid, CubicFeetPerBarrel);
    return grid;
}

/// Vertical pillars at the given x and y, ZCORN to be filled.
inline void verticalPillars(GridModel& grid, const std::vector<float>& xs, const std::vector<float>& ys,
                            float z1, float z2) {
    grid.COORD.clear();
    for (const float y : ys)
        for (const float x : xs) grid.COORD.insert(grid.COORD.end(), {x, y, z1, x, y, z2});
    grid.ZCORN.assign(8 * static_cast<std::size_t>(grid.NCELLS), 0.0F);
}

/// One cell's eight depths as its top and bottom.
inline void setDepths(GridModel& grid, int i, int j, int k, float top, float bottom) {
    for (int n = 1; n <= 8; ++n) grid.ZCORN[zcornIndex(grid, i, j, k, n)] = n <= 4 ? top : bottom;
}

}  // namespace kvr
