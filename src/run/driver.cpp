#include "run/driver.hpp"

#include "base/constants.hpp"
#include "base/end_signal.hpp"
#include "base/messages.hpp"
#include "base/stopwatch.hpp"
#include "base/written_files.hpp"
#include "eclipse/output_stage.hpp"
#include "eclipse/schedule_files.hpp"
#include "eclipse/summary_reader.hpp"
#include "matching/adjoint_rows.hpp"
#include "optimization/rate_optimization.hpp"
#include "pressure/wells/aquifers.hpp"
#include "report/co2_stores.hpp"
#include "report/material_balance.hpp"
#include "report/region_balance.hpp"
#include "report/report_output.hpp"
#include "report/summary_table.hpp"
#include "report/well_tables.hpp"
#include "run/banners.hpp"
#include "run/closing_summary.hpp"
#include "run/economic_limits.hpp"
#include "run/history_match.hpp"
#include "run/ix_trace.hpp"
#include "run/outside_decks.hpp"
#include "run/process.hpp"
#include "run/report_rows.hpp"
#include "run/run_files.hpp"
#include "run/sensitivity_output.hpp"
#include "run/start_up.hpp"
#include "run/status_line.hpp"
#include "run/step_attempt.hpp"
#include "run/step_control.hpp"
#include "run/time_stepping.hpp"
#include "run/traced_step.hpp"

#include <filesystem>

namespace kvr {

namespace {

/// What the tables ask for, in even parts of what the steps before allow.
double chosenLength(double asked, const Simulation& s) {
    if (s.options.traceFromRestart) return asked;
    if (!underStepControl(s.options)) return evenPart(s.implicit.longestStep, asked);
    const double allowed = s.pressure.fieldStands ? s.control.longest : firstLength(asked);
    if (allowed < asked) return evenPart(allowed, asked);
    return partWithoutSplinter(s.options.maxDt, wayToNextEntry(s.options, s.schedule, s.clock));
}

/// Chooses the step and announces it; the calendar date of the banner is that of the step's start. False
/// where the next entry of the schedule is reached already. A step that cuts have left short is none of
/// these, however short it is: passed over, it would never grow again.
bool beginStep(Simulation& simulation) {
    RunClock& clock = simulation.clock;
    clock.iteration = 0;
    const double ahead = nextStepLength(simulation.options, simulation.schedule, clock);
    simulation.control.asked = ahead;
    clock.dt = chosenLength(ahead, simulation);
    clock.stepCount += 1;
    printStepBanner(simulation.console, simulation.schedule, clock);
    // Where no pressure is solved none changes: the step behind a solve is not held by it time and again.
    if (!simulation.options.optimalTstep || !pressureIsUpdated(simulation.options, clock))
        return ahead > TimeTolerance;
    const double limited =
        pressureLimitedStep(clock.dt, simulation.pressure.largestDeltaP, simulation.options.tstepControl);
    if (limited < clock.dt) {
        clock.dt = limited;
        both(simulation.console, "Optimal Pressure Control, Reduce Tstep: {}", number(clock.dt));
    }
    return ahead > TimeTolerance;
}

void reportStep(double executedDt, Simulation& simulation) {
    const StageTimer timer(simulation.times.reports);
    RunClock& clock = simulation.clock;
    advanceBalance(simulation, executedDt);
    reportWells(simulation);
    ReportMBE(simulation);
    addToSummaryTable(simulation);
    takeSummaryStep(simulation);
    noteCourse(simulation);
    reportRegions(simulation);
    reportStores(simulation);
    if (snapTo(tableTime(simulation.schedule.reportEnd, clock.reportIndex), clock.time)) {
        reportOutput(simulation, clock.stepCount, clock.endTime - clock.time);
        reportEclipseFiles(simulation);
        addReportRow(simulation);
        writeSensitivities(simulation);
        clock.reportIndex += 1;
    }
    clock.completedSteps += 1;
}

/// In a run from the three-file deck every phase goes on with explicit lines behind a well event.
void explicitBehindEvent(RunOptions& options) {
    if (options.inputMode != input_mode::NativeDeck) return;
    for (std::string& phase : options.solverPhaseName) phase = "mas";
}

/// A list of times behind which the deck says nothing of its wells: they go on, and so do the steps. Runs
/// that change rates themselves begin anew at every list.
bool leavesWells(const Simulation& simulation) {
    const RunOptions& options = simulation.options;
    const std::vector<ScheduleStep>& steps = simulation.schedule.steps;
    const auto now = static_cast<std::size_t>(simulation.clock.wellChangeIndex);
    if (options.rateOptimization || options.historyMatch || options.traceFromRestart) return false;
    return now > 0 && now < steps.size() && hasWellsOf(steps[now], steps[now - 1]);
}

void wellEvent(Simulation& simulation) {
    RunClock& clock = simulation.clock;
    if (!snapTo(tableTime(simulation.schedule.wellEventTime, clock.wellChangeIndex + 2), clock.time)) return;
    clock.wellChangeIndex += 1;
    printWellBanner(simulation.console);
    explicitBehindEvent(simulation.options);
    if (leavesWells(simulation)) return;
    applyFaultMultipliers(clock.wellChangeIndex + 1, simulation);
    rebuildWells(clock.wellChangeIndex + 1, simulation);
    clock.stepsSinceEvent = 0;
}

void nextTableEntries(Simulation& simulation) {
    RunClock& clock = simulation.clock;
    const Schedule& schedule = simulation.schedule;
    if (snapTo(tableTime(schedule.stepEnd, clock.tstepIndex + 1), clock.time)) clock.tstepIndex += 1;
    const double stepLength = tableTime(schedule.stepLength, clock.tstepIndex);
    if (stepLength <= clock.endTime) clock.dt = stepLength;
    if (clock.time == tableTime(simulation.options.solverPhaseEnd, clock.solverPhaseIndex))
        clock.solverPhaseIndex += 1;
}

/// How often steps were taken anew, where any were.
void printStepCounts(const Console& console, const StepControl& control) {
    if (control.rejected == 0 && control.implicitSteps == 0) return;
    lineToBoth(console, "");
    both(console, "Steps put back and taken anew    : {}", control.rejected);
    both(console, "Steps taken fully implicitly     : {}", control.implicitSteps);
}

/// What every end of a run leaves behind: message counts, the summary, an index of the files.
void leave(Simulation& simulation, std::string_view ending) {
    closeSummaryTable(simulation);
    finishEclipseFiles(simulation);
    tellClosingSummary(simulation, ending);
}

void closeFiles(Simulation& simulation) {
    checkWritten(simulation.console);
    closeOutputs(simulation.outputs);
    closeLog(simulation.outputs, simulation.console);
    removeEmptyFiles(simulation);
    writeFilesIndex(simulation);
}

bool folderStands(const Simulation& simulation) {
    std::error_code ignored;
    const std::string& folder = simulation.outputs.folder;
    return folder.empty() || std::filesystem::is_directory(folder, ignored);
}

/// A stop on an error: the reason has been told and stands last where the console is concise.
void leaveAtStop(Simulation& simulation) {
    simulation.console.atStop = nullptr;
    clearStatus(simulation.console);
    if (simulation.console.log == nullptr) return;
    if (folderStands(simulation)) finishEclipseFiles(simulation);
    if (!simulation.course.stepsBegun) return;
    Simulation& s = simulation;
    std::FILE* const screen = s.console.screen;
    if (!s.console.concise) s.console.screen = nullptr;
    tellClosingSummary(s, "ended by an error");
    s.console.screen = screen;
}

int finishBySignal(Simulation& simulation, std::string_view where) {
    endStatus(simulation);
    simulation.course.endSignal = endSignal();
    const int status = statusOfSignal(simulation.course.endSignal);
    leave(simulation, fmt::format("ended by {} {}", signalName(simulation.course.endSignal), where));
    closeFiles(simulation);
    return status;
}

void connectConsole(Simulation& simulation) {
    Console& console = simulation.console;
    console.messages = &simulation.messages;
    console.files = &simulation.written;
    console.account = &simulation.account;
    console.concise = isNamed(simulation.command) && !simulation.command.verbose;
    if (isNamed(simulation.command)) console.input = nullptr;  // nobody is asked
    simulation.atStop = [&simulation] { leaveAtStop(simulation); };
    console.atStop = &simulation.atStop;
}

/// Wells are those of another run, which closes them itself.
bool followsOutsideWells(const RunOptions& options) {
    return options.traceFromRestart && !options.useEclipsePressure;
}

/// What a run has given, as a history schedule for another.
void leaveWellHistory(Simulation& s) {
    if (!s.options.outputWellHistory) return;
    if (s.options.useEclipsePressure)  // its steps are runs of their own
        return warn(s.console, "WARNING :: OUTWHIST LEAVES NO HISTORY OF A RUN WITH USEECLP");
    RunOptions place = s.options;
    if (!s.options.traceFromRestart) place.deckFile.clear();  // own files stand where the results do
    if (solverPhase(s.options, s.clock.solverPhaseIndex) != "btf")
        read_ECL_response(s.console, place, s.schedule, s.options.headerName, 1, s.outside.response);
    Write_ECLSchedule_forHM(s.console, s.options, s.units, s.schedule, s.outside.response);
}

void finishRun(Simulation& simulation, std::string_view ending) {
    endStatus(simulation);
    warnOfBalance(simulation);
    warnOfCoarseSteps(simulation);
    printStageTimes(simulation.console, simulation.times);
    printLineNewton(simulation.console, simulation.lines.newton);
    if (simulation.options.method == "FIM")
        printImplicitCounts(simulation.console, simulation.implicit.counts);
    printStepCounts(simulation.console, simulation.control);
    leave(simulation, ending);
    printEnd(simulation.console, static_cast<float>(cpuSeconds()) - simulation.times.cpuAtStart);
    closeFiles(simulation);
}

/// NOSIM and the check of the command line end here; only NOSIM has files to leave.
int finishCheck(Simulation& simulation) {
    if (simulation.options.checkOnly) {
        tellMessages(simulation);
        return 0;
    }
    lineToBoth(simulation.console, "NOSIM :: THE DECK HAS BEEN READ AND CHECKED, NOTHING IS RUN");
    finishRun(simulation, "read and checked, nothing is run (NOSIM)");
    return 0;
}

/// Aquifers are wells while a step is taken, and known to no report.
void stepWithAquifers(Simulation& s) {
    joinAquifers(s.aquifers, s.wells);
    takeStep(pressureIsUpdated(s.options, s.clock), s);
    partAquifers(s.clock.workDt, s.state, s.aquifers, s.wells);
}

/// The schedule from where the clock stands to its end. Empty, or where a signal has ended it.
std::string_view runForward(Simulation& simulation) {
    RunClock& clock = simulation.clock;
    for (;;) {
        if (endSignal() != 0) return "behind a whole step";
        const bool timeAhead = beginStep(simulation);
        if (!timeAhead)
            clock.workDt = clock.dt;
        else if (!simulation.options.traceFromRestart)
            stepWithAquifers(simulation);
        else if (!takeTracedStep(simulation))
            return "during the outside run";
        advanceCalendar(clock.workDt, clock);
        clock.time += clock.workDt;
        if (simulation.options.traceFromRestart) passTableEntries(simulation);
        keepRunLevel(clock.workDt, simulation);
        const int report = clock.reportIndex;
        reportStep(clock.workDt, simulation);
        updateStatus(simulation);
        checkWritten(simulation.console);
        if (!followsOutsideWells(simulation.options)) applyEconomicLimits(simulation);
        noteClosedWells(simulation);
        if (timeAhead) {
            optimizeRates(report, clock.workDt, simulation);
            rewriteNextStepDeck(simulation);
        }
        if (clock.time >= clock.endTime - TimeTolerance) return {};
        if (simulation.options.traceFromRestart) passWellEvents(simulation);
        wellEvent(simulation);
        nextTableEntries(simulation);
    }
}

}  // namespace

int runSimulation(Simulation& simulation) {
    connectConsole(simulation);
    startUp(simulation);
    if (runsNothing(simulation.options)) return finishCheck(simulation);
    if (tracesIxRun(simulation.options)) {
        finishRun(simulation, "traced, nothing is simulated");
        return 0;
    }
    if (optimisesOutsideRun(simulation.options) && !prepareStepDecks(simulation))
        return finishBySignal(simulation, "during the outside run");
    startRateOptimization(simulation);
    startStatus(simulation);
    beginMatch(simulation);
    do {
        if (const std::string_view where = runForward(simulation); !where.empty())
            return finishBySignal(simulation, where);
        writeAdjoints(simulation);
    } while (goOnMatching(simulation));
    if (!simulation.options.historyMatch) leaveWellHistory(simulation);
    finishRateOptimization(simulation);
    finishRun(simulation, "finished");
    return 0;
}

}  // namespace kvr
