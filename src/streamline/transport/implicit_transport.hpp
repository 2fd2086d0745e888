#pragma once

#include "deck/options.hpp"
#include "fluid/tables.hpp"
#include "streamline/transport/explicit_control.hpp"
#include "streamline/transport/line_newton.hpp"
#include "streamline/transport/solver_line.hpp"

namespace kvr {

/// How implicit transport steps.
struct ImplicitControl {
    NewtonControl newton;
    double maximumStep = 1e7;  // days
};

/// The control of a run's implicit lines; no dump.
ImplicitControl implicitControl(const RunOptions& options);

/// First step of an implicit line: a tenth of the step, no more than the maximum.
double firstImplicitStep(const ImplicitControl& control, double step);

/// Length behind a step that took `iterations`: fewer than four let it grow by 15 percent.
double nextImplicitStep(double dt, int iterations);

/// Advances a loaded line over `step` days by backward Euler steps; see newtonStep. A step that does not
/// converge is halved, down to a thousand-millionth of the step, behind which the line passes on what it
/// holds; behind one that stands it doubles again up to what it was, behind more of them where it had to be
/// halved anew. Upstream weighting of one point always, whatever the upwind word. Leaves states, mean outlet
/// fluxes and the count of steps.
void advanceImplicit(const FluidTables& tables, const ImplicitControl& control, double step,
                     LineNewton& newton, NewtonCounts& counts, SolverLine& line);

/// Explicit while that is cheap, then implicit: substeps of CFL over the largest wave speed, without floor,
/// as long as one is more than a tenth of the time left; the rest by implicit steps, the first of which
/// tries all of it. Upstream weighting of one point.
void advanceHybrid(const FluidTables& tables, const ExplicitControl& explicitly,
                   const ImplicitControl& implicitly, double step, LineNewton& newton, NewtonCounts& counts,
                   SolverLine& line);

}  // namespace kvr
