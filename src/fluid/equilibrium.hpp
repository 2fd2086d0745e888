#pragma once

#include "base/console.hpp"
#include "deck/options.hpp"
#include "fluid/depth_table.hpp"
#include "fluid/initial_conditions.hpp"
#include "fluid/tables.hpp"
#include "model/grid.hpp"
#include "pressure/records/cell_state.hpp"

#include <vector>

namespace kvr {

/// Pressures, saturations, Rs and bubble points of every cell before the first step, from EQUIL by phase
/// columns in hydrostatic balance, or from the arrays of the SOLUTION section. Active cells only; the others
/// keep what they hold. A cell with free gas is saturated, any other has the Rs of its depth or array. Sets
/// the direct solver for fewer than 27 cells, with its warning. The caller runs the full property update
/// afterwards and prints "SUCCESSFULLY INITIALIZED.". Stops when a cell names a saturation region that has
/// no table.
void initialiseBlackOil(const Console& console, const GridModel& grid, const FluidTables& tables,
                        const InitialConditions& initial, RunOptions& options, CellState& state);

/// Every active cell has a record of EQUIL and saturation tables, or the run stops: what follows indexes them
/// unasked. Cells whose state arrays give need no record.
void requireRegions(const Console& console, const GridModel& grid, const FluidTables& tables,
                    const InitialConditions& initial);

/// The columns of every equilibrium region that has cells, with the fluids of its first one; EQUIL is given.
std::vector<InitDepthTable> equilibriumColumns(const Console& console, const GridModel& grid,
                                               const FluidTables& tables, const InitialConditions& initial,
                                               bool hasWater);

/// The lines that tell whether the initial state follows from EQUIL or from arrays.
void tellInitialBranch(const Console& console, bool byDepth);

/// The direct solver for fewer than 27 cells, with its warning.
void chooseDirectSolver(const Console& console, const GridModel& grid, RunOptions& options);

/// Gives back the arrays by cell, which no later stage reads.
void releaseInitialArrays(InitialConditions& initial);

}  // namespace kvr
