#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// Misfits of the forward run that has just ended: reads WELL_OBSERVED.DATA and WELL_CALCULATED.DATA, brings
/// the histories of each producer to the same times, and leaves its shift and pressure misfit in
/// `match.wells` and all misfits in `run`. Tells them well by well. Stops where a file cannot be read.
void SL_MISFIT(Simulation& simulation, RunMisfit& run);

/// Reads the observed histories ahead of the first run, so that a mistake in them does not wait for its end.
/// Not where the run itself makes them.
void checkObserved(const Simulation& simulation);

/// Names of the producers of the run, in the order of the wells.
std::vector<std::string> producerNames(const WellRecord& wells);

}  // namespace kvr
