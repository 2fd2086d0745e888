#pragma once

#include "model/grid.hpp"

#include <string>

namespace kvr {

/// Tops of the layers below the first: top of the cell above plus its DZ. Only the tops of the first layer
/// are input, whatever else was read.
void fillTopsBelow(GridModel& grid);

/// Corners, nodes, centres and first volumes from DX, DY, DZ and TOPS. From (0, 0) x adds up along each row
/// of cells and y along each column; z of a cell runs from its own top to its own top plus DZ, so that
/// neighbours of different depth keep both. Nodes keep the later cell's value.
void buildBlockGrid(GridModel& grid, double volumeFactor);

/// Pillars at which columns of blocks do not join: corners of one cell or more lie beside the straight line
/// that a corner-point grid would have there, so that such a grid is not this one.
int unjoinedPillars(const GridModel& grid);

/// Writes COORD, ZCORN and ACTNUM of the built grid to `path`, replacing it, so that outside tools can read a
/// grid that has no corner-point input; depths and lengths are divided by `lengthFactor` (deck length to ft),
/// six values a line. Returns 0, or the system's error number when the file cannot be written.
int writeCornerPointDeck(const GridModel& grid, double lengthFactor, const std::string& path);

/// Name of that file, in the run folder.
inline constexpr const char* CornerPointDeckName = "_COORD_BYKVR.tmp";

}  // namespace kvr
