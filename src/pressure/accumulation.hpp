#pragma once

#include "fluid/tables.hpp"
#include "model/grid.hpp"
#include "pressure/pressure_matrix.hpp"
#include "pressure/records/cell_state.hpp"

namespace kvr {

/// Compressibilities of a cell in one iteration, 1/psi.
struct CellCompressibility {
    double CompressO = 0.0;  // -(dBo/dp)/Bo; along the saturated curve in a saturated cell
    double CompressW = 0.0;
    double CompressG = 0.0;  // (d density/dp)/density
    double CompressR = 0.0;
    double rsSlope = 0.0;  // dRs/dp in a saturated cell, else 0
};

/// Forward differences with 0.0001 psi at the state of an active cell. A cell with gas counts as saturated
/// when it holds free gas at its bubble point, or when its bubble point has fallen since the time level.
CellCompressibility cellCompressibility(const FluidTables& tables, double bubblePointAtTimeLevel,
                                        const CellState& state, CellId cell);

/// Storage of every active cell into MatDiag and, as a residual, into MatRhs; both are set, not added to.
/// Cells with next to no pores store nothing. The first iteration takes the residual linear in the change
/// of pressure since the time level, later ones the exact difference of amounts, whose old part is
/// `old` (timeLevelAmounts).
void accumulateTwoPhase(int firstIteration, double dt, const GridModel& grid, const FluidTables& tables,
                        const CellState& timeLevel, const CellAmounts& old, const CellState& state,
                        PressureMatrix& matrix);
/// The same with a gas phase, whose dissolved part is weighted out of the oil: oil weight Bo - Bg*Rs. In a
/// saturated cell the gas that the oil gives off or takes up adds PoreFraction*So/Bo*dRs/dp to the gas
/// storage.
void accumulateThreePhase(int firstIteration, double dt, const GridModel& grid, const FluidTables& tables,
                          const CellState& timeLevel, const CellAmounts& old, const CellState& state,
                          PressureMatrix& matrix);

}  // namespace kvr
