#include "run/outside_decks.hpp"

#include "base/constants.hpp"
#include "eclipse/outside_run.hpp"
#include "eclipse/schedule_files.hpp"
#include "eclipse/step_decks.hpp"
#include "optimization/rate_optimization.hpp"
#include "pressure/wells/well_controls.hpp"

namespace kvr {

namespace {

/// Place (1-based) of the entry of the schedule in force behind `time`.
int entryBehind(const Schedule& schedule, double time) {
    int entry = 1;
    for (int n = 2; n <= static_cast<int>(schedule.steps.size()); ++n)
        if (tableTime(schedule.wellEventTime, n) <= time + TimeTolerance) entry = n;
    return entry;
}

/// The wells as they stand, or, for a step that lies ahead, as its entry of the schedule sets them.
WellRecord wellsOf(const Simulation& s, int entry) {
    WellRecord wells = s.wells;
    if (entry == s.clock.wellChangeIndex + 1) return wells;
    Console quiet;
    quiet.screen = nullptr;
    AssignWells(entry, quiet, s.options, s.units, s.schedule, s.grid, wells);
    takeGivenRates(s.optimization, wells);
    return wells;
}

}  // namespace

void rewriteStepDeck(Simulation& s, int step, double dt) {
    if (s.schedule.steps.empty()) return;
    const bool isGiven = dt > 0.0;
    const double start = isGiven ? s.clock.time : tableTime(s.schedule.reportEnd, step - 1);
    const double length = isGiven ? dt : tableTime(s.schedule.reportEnd, step) - start;
    const int entry = entryBehind(s.schedule, start);
    splitDeck(s.console, s.options, step);
    Write_ECLSchedule_forOP(s.console, s.options, s.units,
                            s.schedule.steps[static_cast<std::size_t>(entry) - 1], wellsOf(s, entry), start,
                            step, length);
}

bool optimisesOutsideRun(const RunOptions& options) {
    return options.traceFromRestart && (options.rateOptimization || options.equalArrival);
}

void rewriteNextStepDeck(Simulation& s) {
    if (!optimisesOutsideRun(s.options) || s.optimization.changes == 0) return;
    if (s.clock.time >= s.clock.endTime - TimeTolerance) return;
    rewriteStepDeck(s, s.clock.reportIndex, NoStepLength);
}

bool prepareStepDecks(Simulation& s) {
    if (!first_outside_run(s)) return false;
    for (int step = 1; step <= static_cast<int>(s.schedule.reportEnd.size()); ++step) {
        rewriteStepDeck(s, step, NoStepLength);
        if (s.options.useEclipsePressure)
            writeStepSolution(s.console, s.options, s.units, s.state, step);
        else
            writeRestartSolution(s.console, s.options, step);
    }
    return true;
}

}  // namespace kvr
