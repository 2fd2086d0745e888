#include "run/traced_step.hpp"

#include "base/constants.hpp"
#include "base/stopwatch.hpp"
#include "eclipse/outside_run.hpp"
#include "eclipse/restart_time.hpp"
#include "eclipse/step_decks.hpp"
#include "pressure/outside_pressure.hpp"
#include "report/material_balance.hpp"
#include "run/banners.hpp"
#include "run/outside_decks.hpp"
#include "run/start_up.hpp"
#include "run/status_line.hpp"
#include "run/step_attempt.hpp"
#include "run/step_level.hpp"
#include "streamline/streamline_step.hpp"

#include <algorithm>
#include <optional>

namespace kvr {

namespace {

constexpr double LatestRestart = 1e7;  // days; a file that tells another time is none to start from

/// The outside run of each step is a deck of its own.
bool runsStepDecks(const RunOptions& options) {
    return options.useEclipsePressure || optimisesOutsideRun(options);
}

/// A run that goes on from a restart counts its steps as that run does.
bool traceWholeRun(Simulation& s) {
    RunClock& clock = s.clock;
    const int step = std::max(clock.stepCount, s.options.restartStep + 1);
    if (!RUN_ECL(s, step)) return false;
    clock.stepCount = step;
    return true;
}

/// A repeated pass over the step starts where the first one did.
void returnToStart(Simulation& s) {
    const RunClock now = s.clock;
    returnToStepLevel(s.stepLevel, s);
    s.clock = now;
}

bool runStepDeck(Simulation& s) {
    if (!s.options.useEclipsePressure) return forward_restart_run(s);
    if (s.clock.iteration > 0) returnToStart(s);
    beginOutsideStep(s);
    rewriteStepDeck(s, s.clock.reportIndex, s.clock.dt);
    writeStepSolution(s.console, s.options, s.units, s.state, s.clock.reportIndex);
    if (!forward_restart_run(s)) return false;
    keepOutsidePressure(s);
    return true;
}

bool outsideStage(Simulation& s) {
    const StageTimer timer(s.times.pressure);
    return runsStepDecks(s.options) ? runStepDeck(s) : traceWholeRun(s);
}

/// Lines on the field of the restart; the cells are the outside run's.
void traceStage(Simulation& s) {
    const RunClock& clock = s.clock;
    const StageTimer timer(s.times.lines);
    for (int substep = 1; substep <= s.options.mapCount; ++substep) {
        s.clock.workDt = clock.dt / s.options.mapCount;
        const double covered = clock.time + substep * clock.workDt;
        StreamlineRestartStep(s, s.options.globalIterations - clock.iteration, clock.iteration,
                              clock.endTime - covered,
                              tableTime(s.schedule.reportEnd, clock.reportIndex) - covered);
    }
    s.clock.workDt = clock.dt;
}

void passEntries(const std::vector<double>& table, double time, int ahead, int& index) {
    while (tableTime(table, index + ahead) < time - TimeTolerance) ++index;
}

}  // namespace

bool takeTracedStep(Simulation& s) {
    RunClock& clock = s.clock;
    if (s.options.globalIterations > 0) {
        s.iterationStart = s.state;
        keepStepLevel(s, s.stepLevel);
    }
    for (;;) {
        if (!outsideStage(s)) return false;
        updateStatus(s);
        clock.stepsSinceEvent += 1;
        clock.workDt = clock.dt;
        if (s.options.useEclipsePressure) {
            reportGlobalIterationErrors(s);
            saturationStage(s);
        } else {
            traceStage(s);
        }
        if (clock.iteration >= s.options.globalIterations) return true;
        clock.iteration += 1;
        clock.stepsSinceEvent -= 1;
        if (optimisesOutsideRun(s.options)) rewriteStepDeck(s, clock.reportIndex, NoStepLength);
    }
}

void startAtRestart(Simulation& s) {
    if (!s.options.traceFromRestart || s.options.restartStep <= 0) return;
    const std::optional<double> time = timeOfNamedRestart(s.options);
    if (!time || !(*time > 0.0) || !(*time < LatestRestart)) return;
    Schedule& schedule = s.schedule;
    const bool whole = s.options.restartInside || tableTime(schedule.stepEnd, 2) > *time + TimeTolerance;
    if (!whole) {
        for (std::vector<double>* table :
             {&schedule.stepEnd, &schedule.reportEnd, &schedule.wellEventTime, &s.options.solverPhaseEnd})
            for (double& entry : *table) entry += *time;
        schedule.endTime += *time;
        s.clock.endTime += *time;
    }
    s.clock.time = *time;
    advanceCalendar(*time, s.clock);
    both(s.console, "The run goes on from restart {} at {} days", s.options.restartStep, number(*time));
}

void passTableEntries(Simulation& s) {
    RunClock& clock = s.clock;
    passEntries(s.schedule.reportEnd, clock.time, 0, clock.reportIndex);
    passEntries(s.schedule.stepEnd, clock.time, 1, clock.tstepIndex);
    passEntries(s.options.solverPhaseEnd, clock.time, 0, clock.solverPhaseIndex);
}

void passTablesAtRestart(Simulation& s) {
    if (s.clock.time <= 0.0) return;
    const double time = s.clock.time;
    s.clock.time += 3.0 * TimeTolerance;
    passTableEntries(s);
    s.clock.time = time;
}

void passWellEvents(Simulation& s) {
    RunClock& clock = s.clock;
    const int before = clock.wellChangeIndex;
    passEntries(s.schedule.wellEventTime, clock.time, 2, clock.wellChangeIndex);
    if (clock.wellChangeIndex == before) return;
    printWellBanner(s.console);
    for (int entry = before + 2; entry <= clock.wellChangeIndex + 1; ++entry) applyFaultMultipliers(entry, s);
    rebuildWells(clock.wellChangeIndex + 1, s);
    clock.stepsSinceEvent = 0;
}

}  // namespace kvr
