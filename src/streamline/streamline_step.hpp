#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// Start-up memory of the streamline stage: mapping sums, visited flags, line records, launch settings.
void allocateStreamlines(Simulation& simulation);

/// One saturation advance over clock.workDt on the frozen velocity field: launch, trace, transport on
/// every line, mapping to the cells, producer rates from the lines.
/// remainingToEnd, remainingToReport: days from the end of this sub-step.
void StreamlineStep(Simulation& simulation, int iterationsLeft, int iteration, double remainingToEnd,
                    double remainingToReport);

}  // namespace kvr
