#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// Keeps what a run has at its start, behind start-up.
void keepRunStart(Simulation& simulation);

/// Puts a run back to its start with the permeability that stands in the grid: connections, state, wells of
/// schedule entry 1, clock, totals, files by step; the working records of the stages are as they are in a new
/// process, so that the run that comes is the same as one of a new process. The iteration stays.
void rewindRun(Simulation& simulation);

}  // namespace kvr
