#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// The whole run: banner, input, deck, initial state, connections, time loop, end. Returns when the
/// schedule is finished; hard failures and early stops end the process from where they happen.
void runSimulation(Simulation& simulation);

}  // namespace kvr
