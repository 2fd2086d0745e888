#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// The whole run: banner, input, deck, initial state, connections, time loop, end. Returns the exit status
/// when the schedule is finished, when the deck has been checked, or behind the step in which a signal came;
/// hard failures and early stops end the process from where they happen.
int runSimulation(Simulation& simulation);

}  // namespace kvr
