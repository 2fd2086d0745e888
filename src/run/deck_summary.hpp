#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// What the deck holds, in a dozen lines: grid, fluids, method, schedule, wells, fluids in place. Comes when
/// the initial state stands. Only for a run whose deck was named on the command line, or that only checks.
void tellDeckSummary(Simulation& simulation);

}  // namespace kvr
