#pragma once

#include "deck/options.hpp"
#include "fluid/tables.hpp"
#include "streamline/transport/explicit_control.hpp"
#include "streamline/transport/solver_line.hpp"
#include "streamline/transport/stretch_transport.hpp"

namespace kvr {

/// The control of a step; `time` is the simulated time at its start.
ExplicitControl explicitControl(const RunOptions& options, double time);

/// Advances a loaded line over `step` days by explicit upstream transport in time of flight:
///   C_p(i) -= dt/DeltaTof(i) (F_p(i) - F_p(i-1)) + dt source_p(i)
/// The source is the expansion of the node's cell times F_p: of the node itself where the cell lets fluid
/// out, of the node before where it takes fluid up. Every substep has dt = CFL over the largest wave speed,
/// within the limits of the control. States are recovered after each substep; a bad saturation takes the
/// value of the node before. At least one substep. Leaves states, substep count and mean outlet fluxes.
///
/// Lines of uneven residence times go in stretches, each with substeps of its own by that rule; see
/// stretch_transport. A line with tracers or along-line gravity goes as one.
void advanceExplicit(const FluidTables& tables, const ExplicitControl& control, double step,
                     ExplicitScratch& scratch, SolverLine& line);

/// The same with the whole line in one piece, whatever its residence times.
void advanceTogether(const FluidTables& tables, const ExplicitControl& control, double step,
                     SolverLine& line);

/// One substep of the whole line with its limited fluxes: amounts and states, outlet sums, tracers.
void takeSubstep(const FluidTables& tables, const ExplicitControl& control, double dt, SolverLine& line);

}  // namespace kvr
