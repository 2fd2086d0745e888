#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// Before the first step: what the deck asks of the wells. Stops where the numbers of the optimisation leave
/// no change at all.
void startRateOptimization(Simulation& simulation);

/// Behind a step that stands: pairs of wells by the lines of the step, and from them the rates of the next
/// step, each within its bounds and the totals kept. Rates stay where a step had no lines, before the first
/// step that is to be optimised, and at the end of the run. `report`: number of the report step that the step
/// belongs to; `dt`: its days.
void optimizeRates(int report, double dt, Simulation& simulation);

/// Behind a well event: a well of which the schedule asks what it asked before keeps the rate that it was
/// given. `entry`: 1-based place in the schedule.
void keepGivenRates(int entry, Simulation& simulation);
/// The same for wells of an entry that lies ahead.
void takeGivenRates(const OptimizationRecord& record, WellRecord& wells);

/// At the end of the run: the rates as a schedule.
void finishRateOptimization(const Simulation& simulation);

}  // namespace kvr
