#pragma once

#include "model/grid.hpp"
#include "pressure/records/cell_state.hpp"
#include "unit/box_grid.hpp"

namespace kvr {

/// A box of nx * ny * nz cells of size 10 x 20 x 5 ft with its top at 1000 ft, all active.
inline GridModel boxModel(int nx, int ny, int nz) {
    constexpr double SizeX = 10.0, SizeY = 20.0, SizeZ = 5.0, Top = 1000.0;
    GridModel grid = boxGrid(nx, ny, nz);
    grid.BulkVolume.assign(grid.NCELLS, 1000.0);
    grid.CellCentre.assign(grid.NCELLS, 3, 0.0);
    grid.xyz_3d.assign(static_cast<std::size_t>(24) * (static_cast<std::size_t>(grid.NCELLS) + 1), 0.0F);
    for (int k = 0; k <= nz; ++k)
        for (int j = 0; j <= ny; ++j)
            for (int i = 0; i <= nx; ++i) {
                grid.NodeX.push_back(SizeX * i);
                grid.NodeY.push_back(SizeY * j);
                grid.NodeZ.push_back(Top + SizeZ * k);
            }
    for (int k = 1; k <= nz; ++k)
        for (int j = 1; j <= ny; ++j)
            for (int i = 1; i <= nx; ++i) {
                const CellId cell = cellIndex(grid, i, j, k);
                grid.CellCentre(cell, 1) = SizeX * (i - 0.5);
                grid.CellCentre(cell, 2) = SizeY * (j - 0.5);
                grid.CellCentre(cell, 3) = Top + SizeZ * (k - 0.5);
                for (int n = 1; n <= 8; ++n) {
                    const auto& offset = CornerOffset[static_cast<std::size_t>(n) - 1];
                    float* corner = cornerOf(grid, cell, n);
                    corner[0] = static_cast<float>(SizeX * (i - 1 + offset[0]));
                    corner[1] = static_cast<float>(SizeY * (j - 1 + offset[1]));
                    corner[2] = static_cast<float>(Top + SizeZ * (k - 1 + offset[2]));
                }
            }
    return grid;
}

/// Values 1, 2, 3 ... in natural order.
inline CellArray<double> countingValues(const GridModel& grid) {
    CellArray<double> values;
    values.assign(grid.NCELLS, 0.0);
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) values[cell] = cell;
    return values;
}

}  // namespace kvr
