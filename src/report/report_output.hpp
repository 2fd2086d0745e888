#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// The field files of one report time, by the output switches. `timeLeft`: days to the end of the run.
void reportOutput(Simulation& simulation, int stepNumber, double timeLeft);

}  // namespace kvr
