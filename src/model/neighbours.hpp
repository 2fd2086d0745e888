#pragma once

#include "model/connections.hpp"
#include "model/grid.hpp"

#include <array>

namespace kvr {

/// Offsets (di, dj, dk) of direction 1..26, at [direction - 1]. Rows 9, 11, 12 and 13 repeat other rows: that
/// is the table as defined. Smoothing counts the repeated rows as often as they stand, so they must not be
/// tidied into a full 3x3x3 pattern.
inline constexpr std::array<std::array<int, 3>, 26> DirectionOffset = {{
    {-1, 0, 0},  {1, 0, 0},   {0, -1, 0},  {0, 1, 0},  {0, 0, -1},  {0, 0, 1},  {-1, -1, -1},
    {0, -1, -1}, {0, -1, -1}, {-1, 0, -1}, {0, 0, -1}, {-1, 0, -1}, {0, 0, -1}, {1, 1, -1},
    {-1, -1, 0}, {1, -1, 0},  {-1, 1, 0},  {1, 1, 0},  {-1, -1, 1}, {0, -1, 1}, {1, -1, 1},
    {-1, 0, 1},  {1, 0, 1},   {-1, 1, 1},  {0, 1, 1},  {1, 1, 1},
}};

/// The cell at the offset of direction 1..26 from a cell, 0 where the offset leaves the box, or
/// its half with dual porosity. Active or not; up and down it is the first that is not pinched out.
CellId neighbourOf(const GridModel& grid, CellId cell, int direction);

/// Fills the first NDIR columns of Neighbour, those of faces alone where there are further connections. An
/// inactive cell has none; an inactive neighbour stays.
void buildNeighbours(const GridModel& grid, ConnectionTable& connections);

/// No transmissibility to or from inactive cells: for cells that the files of another simulator have taken
/// out of a model whose connections stand.
void closeInactiveCells(const GridModel& grid, ConnectionTable& connections);

}  // namespace kvr
