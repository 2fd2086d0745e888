#pragma once

#include "deck/options.hpp"
#include "fluid/tables.hpp"
#include "streamline/line_kernels.hpp"
#include "streamline/solver_line.hpp"

#include <string_view>
#include <vector>

namespace kvr {

/// How explicit transport steps.
struct ExplicitControl {
    double cfl = 0.8;
    double minimumStep = 0.01;        // days; goes before the CFL number, the remaining time goes before it
    double maximumStep = 1e7;         // days
    bool firstStep = false;           // simulated time is 0: the first substep is cut by five
    std::string_view upwind = "SPU";  // "SPU" upstream, anything else limited ("2PU", "3PU", "Leonard")
    bool keepEndPoints = false;
};

/// The control of a step; `time` is the simulated time at its start.
ExplicitControl explicitControl(const RunOptions& options, double time);

/// What flows out of a node over one of its substeps: fluxes, and the amounts that they belong to.
struct FlowRecord {
    double until = 0.0;  // days since the start of the step
    NodeFlow flow;
};

/// Nodes of a line that step together.
struct Stretch {
    int last = 0;
    int length = 0;
    double least = 0.0;  // days, shortest residence time
};

/// Growing scratch of explicit transport, one a thread: it reaches its size within the first lines.
struct ExplicitScratch {
    std::vector<Stretch> stretches;
    std::vector<FlowRecord> inflow, outflow;
};

/// Advances a loaded line over `step` days by explicit upstream transport in time of flight:
///   C_p(i) -= dt/DeltaTof(i) (F_p(i) - F_p(i-1)) + dt source_p(i)
/// The source is the expansion of the node's cell times F_p: of the node itself where the cell lets fluid
/// out, of the node before where it takes fluid up. Every substep has dt = CFL over the largest wave speed,
/// within the limits of the control. States are recovered after each substep; a bad saturation takes the
/// value of the node before. At least one substep. Leaves states, substep count and mean outlet fluxes.
///
/// A line whose residence times lie within a factor of four goes as one. Any other is cut into stretches,
/// where that saves work. Upstream weighting looks only upstream, so each stretch can be taken over the
/// whole step by that same rule, fed by what the stretch before let out (local time stepping after Osher
/// and Sanders 1983, conservative: inflow is integrated over each substep). A node that a line merely
/// grazes then makes no other node take its small substeps. A line with limited fluxes, tracers or
/// along-line gravity goes as one.
void advanceExplicit(const FluidTables& tables, const ExplicitControl& control, double step,
                     ExplicitScratch& scratch, SolverLine& line);

/// The same with the whole line in one piece, whatever its residence times.
void advanceTogether(const FluidTables& tables, const ExplicitControl& control, double step,
                     SolverLine& line);

}  // namespace kvr
