#pragma once

#include "model/grid.hpp"

namespace kvr {

/// The box with every 0 replaced by the end of the range in that direction.
CellBox wholeWhereZero(const GridModel& grid, const CellBox& box);

/// Lower limits not above upper ones, and all of the box inside the grid. Zeros count as the whole range.
bool boxFits(const GridModel& grid, const CellBox& box);

/// Calls visit(CellId) for each cell of a box that fits, in natural order; nothing when it does not fit.
template <class Visit>
void forEachCell(const GridModel& grid, const CellBox& box, Visit visit) {
    if (!boxFits(grid, box)) return;
    const CellBox b = wholeWhereZero(grid, box);
    for (int k = b.k1; k <= b.k2; ++k)
        for (int j = b.j1; j <= b.j2; ++j)
            for (int i = b.i1; i <= b.i2; ++i) visit(cellIndex(grid, i, j, k));
}

}  // namespace kvr
