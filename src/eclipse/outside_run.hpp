#pragma once

#include "run/records/simulation.hpp"

#include <string>

namespace kvr {

/// The outside run whose restart `step` this step of the run traces: in the first step runs the simulator,
/// until the restart is there and its end file has no errors, reads the response of the wells and leaves it
/// as a history schedule; then, once, grid, activity, connections and step 0; then restart `step` into cells,
/// wells and flow field. False: a signal has asked the run to end.
bool RUN_ECL(Simulation& simulation, int step);

/// The same for the deck of the present report step, `restartDeckName`, which is run every time. With
/// useEclipsePressure its first restart is read, else that of the report step.
bool forward_restart_run(Simulation& simulation);

/// The outside run as a whole, unless its first restart is there already. A command that ends with a failure
/// stops. False as above.
bool first_outside_run(Simulation& simulation);

/// Runs IX by its own command; from then on the run traces from an outside run. A command that ends with a
/// failure stops; one that a signal has ended leaves that to the caller.
void ix_run(Simulation& simulation);

/// The number behind the word "Errors" in the first 100 lines of an end file; 0 without the word, 1 where
/// there is no file or no number.
void Check_ECLEND(const Console& console, const std::string& path, int& errors);

}  // namespace kvr
