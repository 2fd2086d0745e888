#pragma once

#include "pressure/ordered_transport.hpp"
#include "run/records/simulation.hpp"

namespace kvr {

/// The one transport of amounts, over clock.workDt on the frozen flow field: advanceInOrder with what is
/// known of the make-up of flows, then the state of every cell from its amounts. Wells report what their
/// connections gave, as means since the pressure step. Leaves saturations, Rs, bubble points and properties,
/// and what saturations do not show in PressureStage::carried. Mobilities and volume factors are to be up to
/// date. `tracers`: they move with the water; lines bring their own.
void transportAmounts(const MakeUp& makeUp, bool tracers, Simulation& simulation);

/// Whether the transport takes gravity along: where water and oil go by amounts, without lines that take it
/// along themselves. Faces of cells with free gas are left to the exchange of phases behind it.
bool gravityInTransport(const Simulation& simulation);

/// Gravity for advanceInOrder, at the saturations of the state.
Buoyancy buoyancyOf(const Simulation& simulation);

/// Exchange of matrix and fractures for advanceInOrder, by the flux of the field.
MatrixTransfer transferOf(const Simulation& simulation);

/// State of a cell that holds the given amounts, at its present pressure. Without gas factors, Rs and bubble
/// point stand.
PhaseState stateOfAmounts(const RunOptions& options, const GridModel& grid, const FluidTables& tables,
                          const CellAmounts& amounts, const CellState& state, CellId cell);

}  // namespace kvr
