#include "base/constants.hpp"
#include "base/messages.hpp"
#include "deck/sections/schedule_section.hpp"
#include "deck/sections/schedule_times.hpp"

#include <algorithm>
#include <array>
#include <cmath>

namespace kvr {

namespace {

constexpr double MaxRepeatedSteps = 1e6;  // of the last step length, up to SIMEND

std::vector<double> endsOf(const std::vector<double>& lengths) {
    std::vector<double> ends = {0.0};
    for (const double length : lengths) ends.push_back(ends.back() + length);
    return ends;
}

/// Repeats the last step length until the end of the run is covered; one step to the end where that is
/// no length or would take too many.
void extendToEnd(Schedule& schedule) {
    const double missing = schedule.endTime - schedule.stepEnd.back();
    if (missing <= TimeTolerance) return;
    const double last = schedule.stepLength.empty() ? 0.0 : schedule.stepLength.back();
    const bool repeats = last > TimeTolerance && missing / last < MaxRepeatedSteps;
    const double length = repeats ? last : missing;
    while (schedule.endTime - schedule.stepEnd.back() > TimeTolerance) {
        schedule.stepLength.push_back(length);
        schedule.stepEnd.push_back(schedule.stepEnd.back() + length);
    }
}

/// Ends of the given steps before the end of the run, and the end.
std::vector<double> reportTimes(const std::vector<double>& givenEnds, double endTime) {
    std::vector<double> times;
    for (std::size_t n = 1; n < givenEnds.size(); ++n)
        if (givenEnds[n] < endTime - TimeTolerance) times.push_back(givenEnds[n]);
    times.push_back(endTime);
    return times;
}

/// Start of every schedule step: the very numbers of the step table, so that times meet exactly.
std::vector<double> eventTimes(const Schedule& schedule, const std::vector<double>& givenEnds) {
    std::vector<double> times;
    std::size_t stepsBefore = 0;
    for (const ScheduleStep& step : schedule.steps) {
        times.push_back(givenEnds[std::min(stepsBefore, givenEnds.size() - 1)]);
        stepsBefore = static_cast<std::size_t>(step.cumulativeSteps);
    }
    return times;
}

}  // namespace

namespace {

/// Wells that no row of the whole schedule connects to a cell, or gives a control.
void tellIdleWells(const Console& console, const ScheduleStep& last) {
    for (const ScheduleWell& well : last.wells) {
        const bool connected = std::any_of(last.completions.begin(), last.completions.end(),
                                           [&well](const auto& row) { return row.wellName == well.name; });
        if (!connected)
            warnAt(console, well.place, "COMPDAT", "WARNING :: WELL {} HAS NO CONNECTION, IT DOES NOT FLOW",
                   well.name);
        if (!well.hasControl)
            warnAt(console, well.place, "WCONPROD", "WARNING :: WELL {} HAS NO CONTROL, IT DOES NOT FLOW",
                   well.name);
    }
}

}  // namespace

void closeSchedule(const Console& console, Schedule& schedule) {
    openScheduleStep(schedule);
    if (schedule.stepLength.empty()) {
        warn(console, "WARNING :: Time-step was not given. Want Initial conditon?");
        constexpr std::array NoTime = {0.0};
        closeScheduleStep(NoTime, schedule);
    }
    if (schedule.steps.back().wells.empty()) warn(console, "WARNING :: Number of well is zero ");
    tellIdleWells(console, schedule.steps.back());
    schedule.steps.pop_back();
}

void buildTimeTables(const Console& console, ScheduleRecords& records) {
    Schedule& schedule = records.schedule;
    const auto given =
        static_cast<std::size_t>(schedule.steps.empty() ? 0 : schedule.steps.back().cumulativeSteps);
    schedule.stepLength.resize(std::min(given, schedule.stepLength.size()));
    const std::vector<double> givenEnds = endsOf(schedule.stepLength);
    schedule.stepEnd = givenEnds;
    if (!schedule.endTimeGiven) schedule.endTime = givenEnds.back();
    extendToEnd(schedule);
    schedule.reportEnd = reportTimes(givenEnds, schedule.endTime);
    schedule.wellEventTime = eventTimes(schedule, givenEnds);
    records.clock.endTime = schedule.endTime;
    records.options.solverPhaseEnd.assign(1, schedule.endTime);

    lineToBoth(console, "-------- Report Date and Time Steps --------");
    for (std::size_t n = 1; n < schedule.stepEnd.size(); ++n)
        both(console, "TIME: {} STEP: {}", number(schedule.stepEnd[n]), n);
}

}  // namespace kvr
