#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// Length of a step that is not given: that of its report step.
inline constexpr double NoStepLength = -1.0;

/// Writes the deck that the outside simulator runs for one report step, with the controls of the wells and
/// `dt` days of schedule; without a length, with those of the schedule at its begin and the whole report
/// step. The initial state is the caller's.
void rewriteStepDeck(Simulation& simulation, int step, double dt);

/// Before an optimisation over an outside run: the run as a whole, then a deck for every report step. False:
/// a signal has asked the run to end.
bool prepareStepDecks(Simulation& simulation);

/// Behind a step of such a run: the deck of the next report step, with the rates that the optimisation has
/// given the wells.
void rewriteNextStepDeck(Simulation& simulation);

/// Rates are optimised over an outside run.
bool optimisesOutsideRun(const RunOptions& options);

}  // namespace kvr
