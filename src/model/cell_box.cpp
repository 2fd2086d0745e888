#include "model/cell_box.hpp"

namespace kvr {

namespace {

bool rangeFits(int low, int high, int count) {
    return low >= 1 && low <= high && high <= count;
}

}  // namespace

CellBox wholeWhereZero(const GridModel& grid, const CellBox& box) {
    CellBox whole = box;
    if (box.i1 == 0) whole.i1 = 1;
    if (box.j1 == 0) whole.j1 = 1;
    if (box.k1 == 0) whole.k1 = 1;
    if (box.i2 == 0) whole.i2 = grid.NX;
    if (box.j2 == 0) whole.j2 = grid.NY;
    if (box.k2 == 0) whole.k2 = grid.NZ;
    return whole;
}

bool boxFits(const GridModel& grid, const CellBox& box) {
    const CellBox b = wholeWhereZero(grid, box);
    return rangeFits(b.i1, b.i2, grid.NX) && rangeFits(b.j1, b.j2, grid.NY) && rangeFits(b.k1, b.k2, grid.NZ);
}

}  // namespace kvr
