#pragma once

#include "base/units.hpp"
#include "fluid/tables.hpp"
#include "model/connections.hpp"
#include "model/grid.hpp"
#include "pressure/records/cell_state.hpp"
#include "pressure/records/pressure_work.hpp"
#include "pressure/wells/wells.hpp"

#include <span>

namespace kvr {

/// Sizes the arrays and builds the pattern for the rate wells in force: the diagonal, every neighbour,
/// the rows and columns of the wells. Does nothing when it stands already; otherwise takes a new stamp.
void buildPattern(const GridModel& grid, const ConnectionTable& connections, const WellRecord& wells,
                  PressureMatrix& matrix);

/// Adds the connections of all wells to the cell rows: WI * mobility to the diagonal and times the
/// drawdown to the residual.
void addWellTerms(const UnitSystem& units, const FluidTables& tables, const CellState& state,
                  double averagePressure, const WellRecord& wells, PressureMatrix& matrix);

/// Completes the diagonals and writes the system with reversed signs: cell rows, the columns of the
/// bottom-hole pressures, and the rows of the rate wells, sum of surface terms * (dBhp - dp) = target
/// minus current rate, each scaled to the reservoir volume of its connections. A well without a flowing
/// connection keeps its pressure.
void fillSystem(const UnitSystem& units, const GridModel& grid, const ConnectionTable& connections,
                const FluidTables& tables, const CellState& state, double averagePressure,
                const WellRecord& wells, PressureMatrix& matrix);

/// A matrix cell m is connected to its fracture cell f alone: its unknown leaves the row of f,
///   A_ff -= A_fm A_mf/A_mm,   b_f -= A_fm b_m/A_mm,
/// and the row of m is left with its diagonal and no right side. What the pair exchanges, far above all else
/// in the rows of both with a large shape factor, is thus gone from the size of the right side, by which
/// iterative routes know when to end.
void eliminateMatrixCells(const GridModel& grid, const ConnectionTable& connections, PressureMatrix& matrix);

/// The unknowns of matrix cells by those of their fractures, x_m = (b_m - A_mf x_f)/A_mm.
void solveMatrixCells(const GridModel& grid, const ConnectionTable& connections, const PressureMatrix& matrix,
                      std::span<double> solution);

/// Gives back the coefficients, which stand in the system by now; buildPattern makes room for the next ones.
void releaseCoefficients(PressureMatrix& matrix);

}  // namespace kvr
