#include "model/grid_memory.hpp"

#include <cstdint>
#include <limits>
#include <new>
#include <unistd.h>

namespace kvr {

namespace {

constexpr double NoTop = -1.0;  // ft, of a cell whose top no keyword has given: tops below zero are refused

/// Bytes that all records of a black-oil run take per cell, from below: corners, connections, two time
/// levels, velocities, matrix, lines. See "Memory of a run" in docs/code-map.md.
constexpr double LeastBytesPerCell = 1000.0;

double machineMemory() {
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageSize = sysconf(_SC_PAGE_SIZE);
    if (pages <= 0 || pageSize <= 0) return std::numeric_limits<double>::infinity();
    return static_cast<double>(pages) * static_cast<double>(pageSize);
}

void numberCells(GridModel& grid) {
    grid.CellI.assign(grid.NCELLS, 0);
    grid.CellJ.assign(grid.NCELLS, 0);
    grid.CellK.assign(grid.NCELLS, 0);
    CellId cell = 0;
    for (int k = 1; k <= grid.NZ; ++k)
        for (int j = 1; j <= grid.NY; ++j)
            for (int i = 1; i <= grid.NX; ++i) {
                ++cell;
                grid.CellI[cell] = i;
                grid.CellJ[cell] = j;
                grid.CellK[cell] = k;
            }
}

void sizeGeometry(GridModel& grid) {
    const std::size_t nodes = static_cast<std::size_t>(grid.NX + 1) * static_cast<std::size_t>(grid.NY + 1) *
                              static_cast<std::size_t>(grid.NZ + 1);
    grid.NodeX.assign(nodes, 0.0);
    grid.NodeY.assign(nodes, 0.0);
    grid.NodeZ.assign(nodes, 0.0);
    grid.xyz_3d.assign((static_cast<std::size_t>(grid.NCELLS) + 1) * 24, 0.0F);
    grid.CellCentre.assign(grid.NCELLS, 3, 0.0);
    for (CellArray<double>* size : {&grid.DX, &grid.DY, &grid.DZ, &grid.BulkVolume})
        size->assign(grid.NCELLS, 0.0);
    grid.TOPS.assign(grid.NCELLS, NoTop);
}

void sizeRock(GridModel& grid) {
    for (CellArray<double>* rock : {&grid.PORO, &grid.PERMX, &grid.PERMY, &grid.PERMZ})
        rock->assign(grid.NCELLS, 0.0);
    grid.NTG.assign(grid.NCELLS, 1.0);
    grid.JFactor.assign(grid.NCELLS, 1.0);
    grid.Active.assign(grid.NCELLS, 1);
    grid.SATNUM.assign(grid.NCELLS, 1);
}

}  // namespace

GridSize checkGridSize(int nx, int ny, int nz) {
    if (nx <= 0 || ny <= 0 || nz <= 0) return GridSize::NotPositive;
    const double nodes = (nx + 1.0) * (ny + 1.0) * (nz + 1.0);
    if (nodes > static_cast<double>(std::numeric_limits<CellId>::max())) return GridSize::TooManyCells;
    const double cells = static_cast<double>(nx) * ny * nz;
    return cells * LeastBytesPerCell > machineMemory() ? GridSize::TooBig : GridSize::Usable;
}

bool allocateGrid(GridModel& grid) {
    grid.NCELLS = grid.NX * grid.NY * grid.NZ;
    try {
        numberCells(grid);
        sizeGeometry(grid);
        sizeRock(grid);
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}

}  // namespace kvr
