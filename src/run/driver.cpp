#include "run/driver.hpp"

#include "base/constants.hpp"
#include "base/stopwatch.hpp"
#include "eclipse/output_stage.hpp"
#include "implicit/fully_implicit.hpp"
#include "pressure/pressure_step.hpp"
#include "pressure/saturation_update.hpp"
#include "report/material_balance.hpp"
#include "report/report_output.hpp"
#include "report/well_tables.hpp"
#include "run/banners.hpp"
#include "run/start_up.hpp"
#include "run/status_line.hpp"
#include "run/time_stepping.hpp"
#include "streamline/splitting/splitting.hpp"
#include "streamline/streamline_step.hpp"

namespace kvr {

namespace {

/// Chooses the step and announces it; the calendar date of the banner is that of the step's start. False
/// where the next entry of the schedule is reached already. A step that cuts have left short is none of
/// these, however short it is: passed over, it would never grow again.
bool beginStep(Simulation& simulation) {
    RunClock& clock = simulation.clock;
    clock.iteration = 0;
    const double ahead = nextStepLength(simulation.options, simulation.schedule, clock);
    clock.dt = stepLengthAfterCuts(simulation.implicit.longestStep, ahead);
    clock.stepCount += 1;
    printStepBanner(simulation.console, simulation.schedule, clock);
    if (!simulation.options.optimalTstep) return ahead > TimeTolerance;
    const double limited =
        pressureLimitedStep(clock.dt, simulation.pressure.largestDeltaP, simulation.options.tstepControl);
    if (limited < clock.dt) {
        clock.dt = limited;
        both(simulation.console, "Optimal Pressure Control, Reduce Tstep: {}", number(clock.dt));
    }
    return ahead > TimeTolerance;
}

/// The EbFVM word has no pressure stage of its own: its runs stand still.
void pressureStage(bool solve, Simulation& simulation) {
    if (simulation.options.method == "EbFVM") return;
    const StageTimer timer(simulation.times.pressure);
    if (simulation.options.method == "FIM") {
        FullyImplicitStep(simulation);
        return;
    }
    // The velocity field is built at the end of the pressure step.
    PressureStep(simulation, simulation.clock.iteration, solve ? 1 : 0);
}

/// Lines, then gravity and capillarity, then the cell properties; IMPES has its own transport in the last.
void saturationSubstep(int substep, Simulation& simulation) {
    const RunOptions& options = simulation.options;
    const RunClock& clock = simulation.clock;
    const double covered = clock.time + substep * clock.workDt;
    if (options.method == "streamline") {
        const StageTimer timer(simulation.times.lines);
        StreamlineStep(simulation, options.globalIterations - clock.iteration, clock.iteration,
                       clock.endTime - covered,
                       tableTime(simulation.schedule.reportEnd, clock.reportIndex) - covered);
    }
    const StageTimer timer(simulation.times.splitting);
    OSPLIT_GRVANDPC_GENERAL2(simulation);
    SaturationUpdate(simulation);
}

void saturationStage(Simulation& simulation) {
    const std::string& method = simulation.options.method;
    if (method == "FIM" || method == "EbFVM") return;
    RunClock& clock = simulation.clock;
    const double wholeStep = clock.workDt;
    if (clock.iteration > 0) returnToStepStart(simulation.iterationStart, simulation);
    clock.workDt = clock.dt / simulation.options.mapCount;
    for (int substep = 1; substep <= simulation.options.mapCount; ++substep) {
        saturationSubstep(substep, simulation);
        updateStatus(simulation);
    }
    clock.workDt = wholeStep;
}

/// Pressure and saturations of one step, repeated for the global iterations.
void advanceStep(bool solve, Simulation& simulation) {
    RunClock& clock = simulation.clock;
    if (simulation.options.globalIterations > 0) simulation.iterationStart = simulation.state;
    for (;;) {
        pressureStage(solve, simulation);
        updateStatus(simulation);
        clock.stepsSinceEvent += 1;
        clock.workDt = clock.dt;
        if (simulation.options.globalIterations > 0) reportGlobalIterationErrors(simulation);
        saturationStage(simulation);
        if (clock.iteration >= simulation.options.globalIterations) break;
        clock.iteration += 1;
        clock.stepsSinceEvent -= 1;
    }
    // A repeated pass may cut the step: the date moves by what the last pass has covered.
    advanceCalendar(clock.workDt, clock);
}

void reportStep(double executedDt, Simulation& simulation) {
    const StageTimer timer(simulation.times.reports);
    RunClock& clock = simulation.clock;
    advanceBalance(simulation, executedDt);
    reportWells(simulation);
    ReportMBE(simulation);
    if (snapTo(tableTime(simulation.schedule.reportEnd, clock.reportIndex), clock.time)) {
        reportOutput(simulation, clock.stepCount, clock.endTime - clock.time);
        reportEclipseFiles(simulation);
        clock.reportIndex += 1;
    }
    clock.completedSteps += 1;
}

void wellEvent(Simulation& simulation) {
    RunClock& clock = simulation.clock;
    if (!snapTo(tableTime(simulation.schedule.wellEventTime, clock.wellChangeIndex + 2), clock.time)) return;
    clock.wellChangeIndex += 1;
    printWellBanner(simulation.console);
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

void finishRun(Simulation& simulation) {
    endStatus(simulation);
    finishEclipseFiles(simulation);
    printStageTimes(simulation.console, simulation.times);
    printLineNewton(simulation.console, simulation.lines.newton);
    if (simulation.options.method == "FIM")
        printImplicitCounts(simulation.console, simulation.implicit.counts);
    printEnd(simulation.console, static_cast<float>(cpuSeconds()) - simulation.times.cpuAtStart);
    closeOutputs(simulation.outputs);
    closeLog(simulation.outputs, simulation.console);
}

}  // namespace

void runSimulation(Simulation& simulation) {
    startUp(simulation);
    startStatus(simulation);
    RunClock& clock = simulation.clock;
    for (;;) {
        const bool timeAhead = beginStep(simulation);
        const bool solve = pressureIsUpdated(simulation.options, clock);
        if (timeAhead)
            advanceStep(solve, simulation);
        else
            clock.workDt = clock.dt;
        clock.time += clock.workDt;
        reportStep(clock.workDt, simulation);
        updateStatus(simulation);
        if (clock.time >= clock.endTime - TimeTolerance) break;
        wellEvent(simulation);
        nextTableEntries(simulation);
    }
    finishRun(simulation);
}

}  // namespace kvr
