#pragma once

#include "model/grid.hpp"

namespace kvr {

/// 0-based place in ZCORN of the depth of corner n (1..8) of cell (i, j, k):
///   (2i-2+ib) + (2j-2+jb)*2*NX + (2k-2+kb)*4*NX*NY
std::size_t zcornIndex(const GridModel& grid, int i, int j, int k, int corner);

/// x, y where a pillar (X1 Y1 Z1 X2 Y2 Z2) passes depth z: linear between its ends. A pillar whose ends are
/// not at least epsilon apart counts as flat and gives X1, Y1.
void pointOnPillar(const float* pillar, double z, double& x, double& y);

/// Corner coordinates, node coordinates, centres, nominal sizes and first volumes of every cell from COORD
/// and ZCORN; TOPS becomes the mean depth of the cell's upper corners. Cells are visited in CellId order:
/// where cells disagree about a shared node, across a fault, the node keeps the later one's value, the
/// corners of each cell stay its own. volumeFactor: ft3 per internal volume unit. COORD and ZCORN are
/// complete.
void CALC_RESERVOIR_COORDINATE_FRMCOORD(GridModel& grid, double volumeFactor);

/// Nodes from the corners that the cells hold, and from these centres, nominal sizes and TOPS; the same rule
/// for shared nodes as above. What an outside grid file brings is corners.
void nodesFromCorners(GridModel& grid);
void sizesFromCorners(GridModel& grid);

/// BulkVolume = DX*DY*DZ/volumeFactor, the first estimate, for every cell.
void estimateVolumes(GridModel& grid, double volumeFactor);

}  // namespace kvr
