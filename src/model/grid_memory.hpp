#pragma once

#include "model/grid.hpp"

namespace kvr {

/// Whether a box of cells can be held at all.
enum class GridSize {
    Usable,
    NotPositive,   // a dimension is 0 or less
    TooManyCells,  // cell or node numbers would not fit 32 bits
    TooBig,        // the records of a run would not fit the machine's memory
};

/// Verdict on dimensions as a deck gives them. Never fails and never allocates.
GridSize checkGridSize(int nx, int ny, int nz);

/// Sizes every per-cell array of the grid for its NX, NY, NZ, sets NCELLS and the I, J, K of each cell.
/// PORO, permeabilities, sizes, tops, volumes and corners start at 0, NTG and JFactor at 1, every cell
/// active, SATNUM 1. COORD and ZCORN stay empty until they are read. The dimensions have passed
/// `checkGridSize`. False when the memory is not granted: the arrays are then unusable.
bool allocateGrid(GridModel& grid);

}  // namespace kvr
