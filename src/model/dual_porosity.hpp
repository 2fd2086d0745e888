#pragma once

#include "model/connections.hpp"
#include "model/grid.hpp"

namespace kvr {

// Two continua in one grid. Fractures flow among themselves and have the wells; a matrix cell exchanges fluid
// with the fracture cell in its place alone (dual porosity, single permeability; Warren and Root 1963). Flow
// of a phase from the matrix cell m to its fracture cell f, reservoir volume a day:
//   q = Vk lambda_up (Phi_m - Phi_f),   Vk = sigma DarcyConstant k V
// with the shape factor sigma (1/ft2), the permeability k of the matrix along x (md) and the volume V of the
// cell (ft3). Phi is the pressure of the phase, and with gravity drainage the head of transferHead on it.

inline CellId matrixCells(const GridModel& grid) {
    return grid.dual.isSet ? grid.NCELLS / 2 : 0;
}
inline bool isMatrixCell(const GridModel& grid, CellId cell) {
    return cell <= matrixCells(grid);
}
/// The other cell of the pair, in a grid of two continua.
inline CellId partnerOf(const GridModel& grid, CellId cell) {
    return isMatrixCell(grid, cell) ? cell + matrixCells(grid) : cell - matrixCells(grid);
}

/// What the deck has left out of the fractures, DPGRID: sizes, porosity, permeability and net-to-gross of
/// which the lower half holds nothing yet become those of the matrix.
void fillFracturesFromMatrix(GridModel& grid);

/// Sizes of the matrix for both halves, before a geometry of blocks is built of them.
void shareSizes(GridModel& grid);

/// Behind the geometry: fracture cells stand where their matrix cells do.
void shareGeometry(GridModel& grid);

/// Permeability of fracture cells, read as that of the fractures alone, becomes that of the bulk: times their
/// porosity.
void makeFracturePermeabilityEffective(GridModel& grid);

/// Transfer connections of active pairs, in TransferDirection of both cells.
void connectContinua(double volumeFactor, const GridModel& grid, ConnectionTable& connections);

/// Either half as a grid of its own, for maps: geometry alone.
GridModel geometryOf(const GridModel& grid);

}  // namespace kvr
