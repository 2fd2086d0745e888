#pragma once

#include "deck/options.hpp"
#include "deck/schedule.hpp"
#include "run/records/clock.hpp"

namespace kvr {

/// Days to the next entry of the schedule: the earliest of report end, solver phase end, time-step end, well
/// event and end of the run. 0 when one of them is already reached.
double wayToNextEntry(const RunOptions& options, const Schedule& schedule, const RunClock& clock);

/// Length of the next step, days: to the next entry of the schedule, never longer than MAXDT.
double nextStepLength(const RunOptions& options, const Schedule& schedule, const RunClock& clock);

/// Step length under OPTTSTEP: `dt` scaled down so that the largest pressure change of the last converged
/// step would have been the control value; never below a thousandth of a day, never above `dt`.
double pressureLimitedStep(double dt, double largestDeltaP, double controlValue);

/// The pressure field is solved anew in this step.
bool pressureIsUpdated(const RunOptions& options, const RunClock& clock);

/// Moves `time` onto `target` when the two are the same time. True when they are.
bool snapTo(double target, double& time);

}  // namespace kvr
