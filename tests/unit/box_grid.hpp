#pragma once

#include "model/grid.hpp"

#include <initializer_list>

namespace kvr {

/// A box of active cells but for those named, without geometry.
inline GridModel boxGrid(int nx, int ny, int nz, std::initializer_list<CellId> inactive = {}) {
    GridModel grid;
    grid.NX = nx;
    grid.NY = ny;
    grid.NZ = nz;
    grid.NCELLS = nx * ny * nz;
    grid.Active.assign(grid.NCELLS, 1);
    for (const CellId cell : inactive) grid.Active[cell] = 0;
    return grid;
}

}  // namespace kvr
