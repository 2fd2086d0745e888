#pragma once

#include "base/console.hpp"
#include "deck/options.hpp"
#include "fluid/components/component_state.hpp"
#include "fluid/initial_conditions.hpp"
#include "fluid/tables.hpp"
#include "model/grid.hpp"
#include "pressure/records/cell_state.hpp"

namespace kvr {

/// Overall composition over depth: linear between rows, that of the first and the last row beyond them.
struct CompositionByDepth {
    Column Depth;  // ft, rising
    std::vector<Composition> z;
};
Composition compositionAt(const CompositionByDepth& rows, double depth);

/// By the keywords of the deck: NEI or ZMF (one row a layer, the mean of its cells), else ZMFVD, else ZI;
/// empty where none is given.
CompositionByDepth initialComposition(const GridModel& grid, const FluidTables& tables,
                                      const InitialConditions& initial);

/// Density in lb/ft3 of a phase of a mixture: of the liquid for oil, of the vapour for gas; a phase that is
/// not there takes that of the one that is. `state` keeps the flash.
double phaseDensity(const ComponentSet& set, const Composition& feed, double pressure, bool isLiquid,
                    FlashState& state);

/// Pressures, saturations and compositions of every cell of a run with components before the first step, from
/// EQUIL by columns in hydrostatic balance or from the arrays of the SOLUTION section. Water by its capillary
/// curve or contact; the rest of the pores is shared by the volumes that the cell's composition splits into
/// at its pressure. With arrays the saturations of oil and gas come from there too, and only their sum
/// counts. Sets the direct solver for fewer than 27 cells, with its warning. Stops without a composition, and
/// where a column has no pressure.
void SETEQUILIBRIUM_COMPS(const Console& console, const GridModel& grid, const FluidTables& tables,
                          const InitialConditions& initial, RunOptions& options, CellState& state,
                          ComponentState& components);

/// Densities and viscosities of oil and gas of a cell by the flash that it holds.
void refreshPhases(const ComponentSet& set, CellId cell, const ComponentState& components, CellState& state);

}  // namespace kvr
