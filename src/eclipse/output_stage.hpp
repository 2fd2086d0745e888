#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// The binary files of a run, each behind its switch. At the start: .SLNSPEC; then, unless the run traces
/// from outside restarts, the clearing of an earlier run where that is asked for, .INIT, .SMSPEC, .EGRID,
/// and .X and .S of time zero.
void startEclipseFiles(Simulation& simulation);

/// The summary vectors of the step just finished, kept for the next .S file.
void takeSummaryStep(Simulation& simulation);

/// At a report time, unless the run traces from outside restarts: .RFT, .X and .S of the report step.
void reportEclipseFiles(Simulation& simulation);

/// Conversion mode: runs the outside simulator, takes its grid and turns its restarts into plot files. Leaves
/// early where a signal has asked the run to end.
void convertOutsideRun(Simulation& simulation);

/// At the end of the run: closes .RFT and leaves .ECLEND; not in runs that stand on an outside run, nor,
/// where one is there, at a stop before the first file of the run.
void finishEclipseFiles(Simulation& simulation);

}  // namespace kvr
