#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// Gravity and capillary exchange between neighbouring cells over clock.workDt, explicit in substeps. The
/// surface amounts of each phase are carried through the stage and changed only by face fluxes, so that
/// every phase is conserved over faces whose two transmissibilities are equal; saturations are recovered
/// from them at the pressure of the cell and at formation factors held over the stage.
///
/// A substep takes dt = CFLg / R, at least minCflgStep, at most 100 days and what is left. R is the
/// largest rate of change of a saturation by phase volumes; of a phase that a cell loses it is the share
/// of what is there, so that no cell gives away more than it has. Ends by clearing CellVisited, which
/// tells the orthogonal projection the cells that lie on a line.
void OSPLIT_GRVANDPC_GENERAL2(Simulation& simulation);

/// Length of a substep at the rate R: CFLg / R, but at least minCflgStep, then at most 100 days and `left`.
double splittingSubstep(const RunOptions& options, double rate, double left);

/// Largest depth difference over the four lateral faces of any cell, ft.
double largestLateralDepthDifference(const GridModel& grid, const ConnectionTable& connections);

}  // namespace kvr
