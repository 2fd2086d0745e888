#pragma once

#include "base/console.hpp"
#include "deck/options.hpp"
#include "fluid/state_recovery.hpp"
#include "fluid/tables.hpp"
#include "model/grid.hpp"
#include "pressure/records/cell_state.hpp"
#include "pressure/records/surface_volumes.hpp"

#include <span>

namespace kvr {

/// Every property of every active cell from its pressure, saturations, Rs and Pb, without touching
/// those: pore volume, formation factors, viscosities, densities, relative permeabilities, mobilities,
/// phase pressures. The full update at the start of a step and after transport.
/// A live oil table without under-saturated rows gives no property above the bubble point; the cell then
/// takes those at its bubble point.
void refreshProperties(const GridModel& grid, const FluidTables& tables, CellState& state);

/// The update between pressure iterations. With gas every cell that holds free gas or stands below its
/// bubble point is flashed anew at its pressure, always from `flashAmounts` (per pore volume) and never
/// from the last iterate, so that no mass drifts with the number of iterations. Then the limits and
/// scaling of saturations, Rs brought back into the table (a line to the log with the debug flag), and
/// every property; relative permeabilities only unless they are held. flashAmounts may be empty without gas.
void UpdateProperties(const Console& console, const RunOptions& options, const GridModel& grid,
                      const FluidTables& tables, const CellAmounts& flashAmounts, CellState& state,
                      bool relPermsHeld = false);

/// Arrays of a state that something else than the tables has filled.
using GivenArrays = std::span<CellArray<double> CellState::*const>;

/// Every property of every active cell that is not among the given ones, from its pressure and saturations
/// and from those: a cell with free gas is saturated, one without it holds the Rs that stands there, at most
/// that of its pressure. Densities follow the formation factors, mobilities the relative permeabilities and
/// viscosities, wherever these are from.
void completeProperties(const GridModel& grid, const FluidTables& tables, GivenArrays given,
                        CellState& state);

/// What a change of saturations alone asks for: relative permeabilities, mobilities, phase pressures.
void refreshMobilities(const GridModel& grid, const FluidTables& tables, CellState& state);

/// State of a cell of a run with gas that holds `amounts` per pore volume at pressure p: gas beyond what the
/// oil dissolves at p is free, and the oil factor is that of the resulting bubble point.
PhaseState flashCell(const FluidTables& tables, const SaturationTable& table, bool keepEndPoints, double p,
                     const CellState& state, CellId cell, const ConservedAmounts& amounts);

/// Surface amounts per pore volume that the state of a cell shows.
inline ConservedAmounts shownAmounts(const CellState& state, CellId cell) {
    const auto shown = surfaceVolumes<double>({state.Sw[cell], state.So[cell], state.Sg[cell], state.Rs[cell],
                                               state.Bw[cell], state.Bo[cell], state.Bg[cell]});
    return {shown.water, shown.oil, shown.gas};
}

/// All 0, one for every cell.
void sizeAmounts(CellId count, CellAmounts& amounts);

/// Amounts of every active cell as its state shows them, times its pore volume; 0 elsewhere.
void measureAmounts(const GridModel& grid, const CellState& state, CellAmounts& amounts);

/// The same with what is carried beyond the saturations; nothing is where `carried` is empty.
void measureWholeAmounts(const GridModel& grid, const CellState& state, const CellAmounts& carried,
                         CellAmounts& amounts);

/// Whether steps hand on what cells hold beyond their saturations: in IMPES, and in streamline runs that pass
/// amounts through faces, which all do but those that ask for the average of the lines.
bool carriesAmounts(const RunOptions& options);

/// carried = whole - shown by the state. Where amounts are carried it has to follow every change of the
/// saturations that is no flow: a driver that puts old saturations back calls it with timeLevelAmounts.
void measureCarried(const GridModel& grid, const CellState& state, const CellAmounts& whole,
                    CellAmounts& carried);

}  // namespace kvr
