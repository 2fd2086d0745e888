#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// Whether half of the exchange of a step goes ahead of the transport: splitting that is symmetric about the
/// transport is of second order in the step (Strang, SIAM J. Numer. Anal. 5, 1968). Runs with the printed
/// mapping, lines that take gravity along, and runs with gas have it behind the transport as a whole: gas is
/// taken back of what transport has brought, and ahead of it there is none.
bool exchangesAhead(const Simulation& simulation);

/// The half of the exchange ahead of the transport, over half of clock.workDt; nothing where there is none.
void exchangeAheadOfTransport(Simulation& simulation);

/// Gravity and capillary exchange between neighbouring cells over clock.workDt, or over its second half
/// where the first has gone ahead of the transport, explicit in substeps. Water and oil that transport has
/// moved with gravity (BuoyantFlow) are exchanged by what gravity drives beyond that. The surface amounts of
/// each phase are carried through the stage and changed only by face fluxes, so that every phase is conserved
/// over faces whose two transmissibilities are equal; saturations are recovered from them at the pressure of
/// the cell and at formation factors held over the stage.
///
/// A substep takes dt = CFLg / R, at least minCflgStep, at most 100 days and what is left. R is the
/// largest rate of change of a saturation by phase volumes; of a phase that a cell loses it is the share
/// of what is there. Beyond that no cell is asked for more than it holds, see boundByContents. Ends by
/// clearing CellVisited, which tells the orthogonal projection the cells that lie on a line.
void OSPLIT_GRVANDPC_GENERAL2(Simulation& simulation);

/// Length of a substep at the rate R: CFLg / R, but at least minCflgStep, then at most 100 days and `left`.
double splittingSubstep(const RunOptions& options, double rate, double left);

/// Largest depth difference over the four lateral faces of any cell, ft.
double largestLateralDepthDifference(const GridModel& grid, const ConnectionTable& connections);

}  // namespace kvr
