#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// Tests the producers of the step that has just ended against their economic limits (WECON). A well below a
/// least rate is shut; for a ratio above its limit the workover of the deck closes the worst connection, or
/// that and those behind it in the well, or the well. What is closed stays so until the deck sets the status
/// of the well again. One line each; wells and what follows from them are rebuilt. A limit that ends the run
/// brings its end to the next report.
void applyEconomicLimits(Simulation& simulation);

}  // namespace kvr
