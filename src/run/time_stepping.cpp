#include "run/time_stepping.hpp"

#include <algorithm>

namespace kvr {

namespace {

constexpr double ShortestControlledStep = 1e-3;  // days, floor of the pressure-limited step

double phaseEnd(const RunOptions& options, const RunClock& clock) {
    return tableTime(options.solverPhaseEnd, clock.solverPhaseIndex);
}

}  // namespace

double wayToNextEntry(const RunOptions& options, const Schedule& schedule, const RunClock& clock) {
    const double target =
        std::min({tableTime(schedule.reportEnd, clock.reportIndex), phaseEnd(options, clock),
                  tableTime(schedule.stepEnd, clock.tstepIndex + 1),
                  tableTime(schedule.wellEventTime, clock.wellChangeIndex + 2), clock.endTime});
    return std::max(0.0, target - clock.time);
}

double nextStepLength(const RunOptions& options, const Schedule& schedule, const RunClock& clock) {
    return std::min(wayToNextEntry(options, schedule, clock), options.maxDt);
}

double pressureLimitedStep(double dt, double largestDeltaP, double controlValue) {
    if (controlValue <= 0.0 || largestDeltaP <= controlValue) return dt;
    return std::min(dt, std::max(ShortestControlledStep, dt * controlValue / largestDeltaP));
}

bool pressureIsUpdated(const RunOptions& options, const RunClock& clock) {
    return clock.stepsSinceEvent == 0 || clock.stepsSinceEvent % options.pressureUpdateFrequency == 0;
}

bool snapTo(double target, double& time) {
    if (!sameTime(target, time)) return false;
    time = target;
    return true;
}

}  // namespace kvr
