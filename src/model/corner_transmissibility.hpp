#pragma once

#include "model/cell_geometry.hpp"
#include "model/connections.hpp"
#include "model/grid.hpp"

namespace kvr {

/// Absolute components of the vector from a cell's centre to the centre of its own face 1..6, ft.
Vector3 centreToFace(const GridModel& grid, CellId cell, int face);

/// Half of a connection through an area (ft2) of a cell's face 1..6, whatever lies behind it: HalfTrans of
/// connectByCornerFormula.
double halfTransmissibility(const GridModel& grid, CellId cell, int face, double area);

/// Lateral faces only: the centres of the two cells are further apart in depth than the mean extent of the
/// cell's face, so the cells do not communicate.
bool isDisplaced(const GridModel& grid, CellId cell, CellId neighbour, int face);

/// Corner formula (each cell's half from its centre to its own face). Integrates BulkVolume of every active
/// cell, then fills columns 1..6 for each of its neighbours, (dx, dy, dz) being `centreToFace`:
///   ConnArea   projected area of the cell's face
///   ConnLength = L_i + L_j,  L = sqrt(dx^2 + eps + dy^2 + dz^2)
///   HarmonicPerm = ConnLength/(L_j/k_j + L_i/k_i) * DarcyConstant
///   HalfTrans  = d_axis ConnArea k_i/(dx^2 + dy^2 + dz^2) * DarcyConstant, 0 when displaced
///   Trans      = 1/(1/HalfTrans(i, d) + 1/HalfTrans(j, d'))
/// k = perm*NTG + eps laterally, PERMZ + eps vertically. The neighbour's k_j takes the NTG of cell i: that is
/// required, and reaches HarmonicPerm only. Trans and HalfTrans are 0 on a connection with an inactive end.
void connectByCornerFormula(GridModel& grid, ConnectionTable& connections, double volumeFactor);

/// Columns of one face (1..6) of an active cell and of its neighbour there, which it has got since.
void connectFaceByCornerFormula(const GridModel& grid, ConnectionTable& connections, CellId cell, int face);

}  // namespace kvr
