#include "run/step_attempt.hpp"

#include "base/hard_stop.hpp"
#include "implicit/fully_implicit.hpp"
#include "implicit/water_movement.hpp"
#include "pressure/pressure_step.hpp"
#include "pressure/properties.hpp"
#include "pressure/rs_limit.hpp"
#include "pressure/saturation_update.hpp"
#include "pressure/solubility_update.hpp"
#include "pressure/tracer_transport.hpp"
#include "pressure/wells/rate_limits.hpp"
#include "pressure/wells/well_controls.hpp"
#include "report/material_balance.hpp"
#include "run/banners.hpp"
#include "run/component_attempt.hpp"
#include "run/status_line.hpp"
#include "run/step_control.hpp"
#include "run/step_level.hpp"
#include "run/step_measure.hpp"
#include "streamline/mapping/amounts_update.hpp"
#include "streamline/splitting/splitting.hpp"
#include "streamline/streamline_step.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr int MostTargetPasses = 2;   // over a step whose wells have left their targets
constexpr int MostImplicitCuts = 12;  // of a step that is taken fully implicitly
constexpr int MostForcedCuts = 10;    // of a step that neither way is good for
constexpr double ForcedCut = 0.1;
constexpr int EnoughAccepted = 2;            // attempts in a row that make good for the failed ones before
constexpr int MostImplicitAhead = 64;        // steps in a row without an attempt
constexpr int MostLagCuts = 3;               // of a fully implicit step over which mobilities change too much
constexpr double CrawlShare = 0.01;          // of the length that the tables ask for
constexpr double LeastImplicitShare = 0.01;  // of the same, for a fully implicit step's accuracy alone
constexpr double CrawlShareWithGas = 0.1;    // the same where phases come and go
constexpr int LargestPower = 10;
constexpr double HopelessShare = 1e-6;  // of the run: a step that advances less counts as hopeless
constexpr int FewHopelessSteps = 2;     // in a row, behind which the fully implicit method is asked
constexpr int MostHopelessSteps = 10;   // in a row

/// Tracers with the water of the fully implicit step that has just been taken.
void moveTracersImplicitly(Simulation& s) {
    if (s.state.tracer.width == 0) return;
    moveTracers(implicitWaterMovement(s.clock.dt, s.grid, s.fluids, s.state, s.wells, s.implicit), s.wells,
                s.fluids.tracerNames, s.implicit.oldAmounts.water, s.state.tracer);
}

/// The EbFVM word has no pressure stage of its own: its runs stand still.
void pressureStage(bool solve, Simulation& s) {
    if (s.options.method == "EbFVM") return;
    const StageTimer timer(s.times.pressure);
    if (s.options.method == "FIM") {
        FullyImplicitStep(s);
        moveTracersImplicitly(s);
        UPDATE_SOLUBILITYRATIO(0, s.clock.dt, s);
        return;
    }
    // The velocity field is built at the end of the pressure step.
    PressureStep(s, s.clock.iteration, solve ? 1 : 0);
}

/// Lines between the halves of gravity and capillarity, then the cell properties; IMPES has its own transport
/// in the last.
void saturationSubstep(int substep, Simulation& s) {
    const RunOptions& options = s.options;
    const RunClock& clock = s.clock;
    const double covered = clock.time + substep * clock.workDt;
    {
        const StageTimer timer(s.times.splitting);
        exchangeAheadOfTransport(s);
    }
    if (options.method == "streamline") {
        const StageTimer timer(s.times.lines);
        StreamlineStep(s, options.globalIterations - clock.iteration, clock.iteration,
                       clock.endTime - covered, tableTime(s.schedule.reportEnd, clock.reportIndex) - covered);
    }
    const StageTimer timer(s.times.splitting);
    const bool symmetric = exchangesAhead(s);
    if (symmetric) SaturationUpdate(s);
    OSPLIT_GRVANDPC_GENERAL2(s);
    if (!symmetric) SaturationUpdate(s);
    UPDATE_SOLUBILITYRATIO(options.globalIterations - clock.iteration, clock.workDt, s);
}

/// Whether the attempt has failed already: the sub-steps ahead bring nothing back.
bool hasFailed(const Simulation& s) {
    return underStepControl(s.options) && isLost(s.options, measureStep(s));
}

}  // namespace

void saturationStage(Simulation& s) {
    const std::string& method = s.options.method;
    if (method == "FIM" || method == "EbFVM") return;
    RunClock& clock = s.clock;
    const double wholeStep = clock.workDt;
    if (clock.iteration > 0) returnToStepStart(s.iterationStart, s);
    clock.workDt = clock.dt / s.options.mapCount;
    for (int substep = 1; substep <= s.options.mapCount; ++substep) {
        saturationSubstep(substep, s);
        updateStatus(s);
        if (substep < s.options.mapCount && hasFailed(s)) break;
    }
    clock.workDt = wholeStep;
}

namespace {

/// Pressure and saturations of one step, repeated for the global iterations. Returns early where no pressure
/// has been found.
void advance(bool solve, Simulation& s) {
    RunClock& clock = s.clock;
    setRsRise(s);
    if (s.options.globalIterations > 0) s.iterationStart = s.state;
    for (;;) {
        pressureStage(solve, s);
        if (s.pressure.failed) return;
        updateStatus(s);
        clock.stepsSinceEvent += 1;
        clock.workDt = clock.dt;
        if (s.options.globalIterations > 0) reportGlobalIterationErrors(s);
        saturationStage(s);
        if (clock.iteration >= s.options.globalIterations) break;
        clock.iteration += 1;
        clock.stepsSinceEvent -= 1;
    }
}

/// Back to the level, but with the targets that the pass has shown to be right.
void returnForAnotherPass(Simulation& s) {
    const double dt = s.clock.dt;
    const std::vector<Well> shown = s.wells.wells;
    returnToStepLevel(s.stepLevel, s);
    s.clock.dt = dt;
    for (std::size_t w = 0; w < shown.size(); ++w) {
        Well& well = s.wells.wells[w];
        if (shown[w].controlChosen) setRateControl({shown[w].deckControl, shown[w].TargetRate}, well);
        well.controlChosen = shown[w].controlChosen;
        well.targetFactor = shown[w].targetFactor;
    }
}

/// Targets by what the wells have given, with the line of each well that another limit holds from now on.
void correctControls(Simulation& s) {
    std::vector<std::string> before;
    for (const Well& well : s.wells.wells) before.push_back(well.WellControl);
    correctTargets(s.wells);
    for (std::size_t w = 0; w < before.size(); ++w)
        if (s.wells.wells[w].WellControl != before[w]) tellSwitch(s.console, s.wells.wells[w], before[w]);
}

/// One attempt at the step, which runs again with corrected targets where its wells have left them and
/// nothing else is wrong with it.
AttemptFigures attempt(bool solve, Simulation& s) {
    AttemptFigures figures;
    for (int pass = 0;; ++pass) {
        advance(solve, s);
        if (s.pressure.failed) return unsolvedStep(s);
        figures = measureStep(s);
        if (solve) correctControls(s);
        const bool off = std::max(figures.targetExcess / s.options.stepTargetError,
                                  figures.targetMiss / s.options.stepTargetMiss) > 1.0;
        if (!off || pass >= MostTargetPasses || !solve) return figures;
        if (!mayStillStand(s.options, figures)) return beyondRepair(figures);
        returnForAnotherPass(s);
    }
}

/// What the steps before have allowed this one; nothing behind a well event, which leaves a step without a
/// past.
double allowedBefore(const Simulation& s) {
    return s.pressure.fieldStands ? s.control.longest : 0.0;
}

/// The files of lines at the end of a step that was taken without any.
void showLines(Simulation& s) {
    if (s.options.method != "streamline") return;
    const StageTimer timer(s.times.lines);
    const double end = s.clock.time + s.clock.dt;
    drawLines(s, s.clock.endTime - end, tableTime(s.schedule.reportEnd, s.clock.reportIndex) - end);
}

/// Another attempt at the step, of `dt` days: its banner tells where it will end.
void announceAnew(double dt, Simulation& s) {
    s.clock.dt = dt;
    printStepBanner(s.console, s.schedule, s.clock);
}

/// Length for a fully implicit step of `dt` days over which mobilities change by `lag`. Where a phase comes
/// or goes they jump however short the step is: a share of what the tables ask for is short enough.
double boundedImplicitLength(double lag, double dt, const Simulation& s) {
    return std::max(implicitLength(lag, dt), std::min(dt, LeastImplicitShare * s.control.asked));
}

/// Length allowed behind such a step; back toward that share where the step was shorter.
double lengthBehindImplicit(double lag, double dt, const Simulation& s) {
    return std::max(implicitGrowth(lag) * dt,
                    std::min(implicitGrowth(0.0) * dt, LeastImplicitShare * s.control.asked));
}

bool tryImplicitLength(double dt, int mostCuts, Simulation& s) {
    if (dt != s.clock.dt) announceAnew(dt, s);
    for (Well& well : s.wells.wells) well.targetFactor = 1.0;
    return tryFullyImplicitStep(s, mostCuts);
}

/// The fully implicit method from the step's level; false where it fails. Where it comes to next to nothing
/// of what the tables ask for, shortening has made it worse, as it does where fluids run beyond their tables
/// and swell under pressure: then in that whole length, if it stands.
bool solveFromLevel(Simulation& s) {
    if (!tryImplicitLength(s.clock.dt, MostImplicitCuts, s)) return false;
    const double found = s.clock.dt;
    if (!s.pressure.stepCut || found >= CrawlShare * s.control.asked) return true;
    returnToStepLevel(s.stepLevel, s);
    if (tryImplicitLength(s.control.asked, 0, s)) {
        s.pressure.stepCut = true;  // its length is settled, whatever else would shorten it
        return true;
    }
    returnToStepLevel(s.stepLevel, s);
    return tryImplicitLength(found, MostImplicitCuts, s);
}

/// The fully implicit method from the step's level, in a length over which mobilities do not change too much
/// for one step; false where it fails. `lag`: how much they changed at the last.
bool solveImplicitly(double& lag, Simulation& s) {
    const StageTimer timer(s.times.pressure);
    for (int cuts = 0;; ++cuts) {
        if (!solveFromLevel(s)) return false;
        s.pressure.mobilityRatio = {};
        lag = measureStep(s).mobilityLag;
        const double length = boundedImplicitLength(lag, s.clock.dt, s);
        if (length >= s.clock.dt || cuts >= MostLagCuts || length < s.options.stepSmallest ||
            s.pressure.stepCut)
            return true;
        log(s.console, "STEP CONTROL :: {} days, change of mobility {} --> {} days, fully implicitly",
            number(s.clock.dt), number(lag), number(length));
        returnToStepLevel(s.stepLevel, s);
        s.control.rejected += 1;
        announceAnew(length, s);
    }
}

/// The step from its level by the fully implicit method; false, and back at the level, where that fails too.
/// `before`: days that it was allowed, 0 behind attempts that were not good.
bool takeImplicitly(double before, Simulation& s) {
    double lag = 0.0;
    if (!solveImplicitly(lag, s)) {
        returnToStepLevel(s.stepLevel, s);
        return false;
    }
    moveTracersImplicitly(s);
    UPDATE_SOLUBILITYRATIO(0, s.clock.dt, s);
    s.pressure.fieldStands = true;
    s.clock.stepsSinceEvent += 1;
    s.clock.workDt = s.clock.dt;
    showLines(s);
    s.control.implicitSteps += 1;
    const double found = s.pressure.stepCut ? s.clock.dt : lengthBehindImplicit(lag, s.clock.dt, s);
    s.control.longest = s.pressure.stepCut ? found : allowedBehind(found, before, s.clock.dt);
    return true;
}

void tell(const Simulation& s, const StepJudgement& judgement) {
    log(s.console, "STEP CONTROL :: {} days, {} {} (limit {}) --> {} days{}", number(s.clock.dt),
        judgement.reason, number(judgement.figure), number(judgement.limit), number(judgement.length),
        judgement.verdict == StepVerdict::Implicit ? ", fully implicitly" : "");
}

/// A step that neither way is good for: the attempt of the shortest length that finds a pressure stands.
void forceStep(bool solve, double dt, Simulation& s) {
    for (int cuts = 0; cuts < MostForcedCuts; ++cuts) {
        dt *= ForcedCut;
        announceAnew(dt, s);
        if (attempt(solve, s).pressureSolved) {
            s.control.longest = dt;
            return;
        }
        returnToStepLevel(s.stepLevel, s);
    }
    lineToBoth(s.console, "ERROR :: TIME STEP HAS VANISHED, PRESSURE CANNOT BE SOLVED");
    hardStop(s.console);
}

/// The step fully implicitly, and how many of the next ones go there without an attempt. `lag` of the
/// mobilities in the attempt of `dt` days.
void fallBack(bool solve, double dt, double lag, Simulation& s) {
    StepControl& control = s.control;
    s.clock.dt = dt;
    if (const double length = boundedImplicitLength(lag, dt, s); length < dt) announceAnew(length, s);
    if (!takeImplicitly(0.0, s)) return forceStep(solve, dt, s);
    control.implicitInARow += 1;
    control.acceptedInARow = 0;
    control.implicitAhead =
        std::min(MostImplicitAhead, 1 << std::min(control.implicitInARow, LargestPower)) - 1;
}

/// Attempts would go on in steps far below what the tables ask for, where the fully
/// implicit method can stride.
bool crawls(const Simulation& s) {
    if (!s.pressure.fieldStands) return false;
    if (s.control.hopelessSteps >= FewHopelessSteps) return true;
    const bool freeGas = s.fluids.hasGas && holdsFreeGas(s.grid, s.state);
    return s.clock.dt < (freeGas ? CrawlShareWithGas : CrawlShare) * s.control.asked;
}

/// In a step that goes on with the flow of an earlier solve a cell fills or empties as it did then. Its error
/// grows until pressure is solved anew, and by then it has to be one that the pressure of the cell can take
/// up.
void judgeEachCellAsTheField(AttemptFigures& figures) {
    figures.volumeError = std::max(figures.volumeError, figures.largestVolumeError);
}

/// Attempts until one stands.
void attemptUntilAccepted(bool solve, Simulation& s) {
    StepControl& control = s.control;
    const double before = allowedBefore(s);
    for (int cuts = 0;; ++cuts) {
        AttemptFigures figures = attempt(solve, s);
        if (!solve) judgeEachCellAsTheField(figures);
        if (figures.pressureSolved) learnGrowth(figures, s.clock.dt, control.growth);
        const StepJudgement judgement = judgeStep(s.options, figures, control.growth, s.clock.dt, cuts);
        tell(s, judgement);
        if (judgement.verdict == StepVerdict::Accepted) {
            control.longest =
                cuts == 0 ? allowedBehind(judgement.length, before, s.clock.dt) : judgement.length;
            if (++control.acceptedInARow >= EnoughAccepted) control.implicitInARow = 0;
            if (figures.mobilityError > figures.mobilityLag) s.pressure.forecasts = false;
            return;
        }
        const double dt = s.clock.dt;
        returnToStepLevel(s.stepLevel, s);
        control.rejected += 1;
        if (!solve) {  // the pressure of an earlier step does not serve any longer
            solve = true;
            s.clock.dt = dt;
            continue;
        }
        if (judgement.verdict == StepVerdict::Implicit) return fallBack(solve, dt, figures.mobilityLag, s);
        announceAnew(judgement.length, s);
    }
}

/// Ten steps in a row that advance next to nothing, though the tables ask for more, end the run, with what is
/// known of the reason.
void watchProgress(Simulation& s) {
    StepControl& control = s.control;
    const bool hopeless = s.clock.workDt < std::min(HopelessShare * s.clock.endTime, control.asked);
    control.hopelessSteps = hopeless ? control.hopelessSteps + 1 : 0;
    if (control.hopelessSteps < MostHopelessSteps) return;
    const GridModel& grid = s.grid;
    CellId worst = 1;
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell)
        if (std::abs(s.pressure.DeltaP[cell]) > std::abs(s.pressure.DeltaP[worst])) worst = cell;
    both(s.console,
         "ERROR :: {} STEPS IN A ROW ADVANCED LESS THAN {} OF THE RUN EACH, LAST {} DAYS AT DAY {}",
         MostHopelessSteps, number(HopelessShare), number(s.clock.workDt), number(s.clock.time));
    both(s.console,
         "         PRESSURE CHANGES MOST IN CELL ({}, {}, {}). CHECK WELLS AND TABLES NEAR IT, OR TRY "
         "FDMETHOD FIM",
         grid.CellI[worst], grid.CellJ[worst], grid.CellK[worst]);
    hardStop(s.console);
}

}  // namespace

bool underStepControl(const RunOptions& options) {
    return options.stepControl && carriesAmounts(options) && !options.traceFromRestart;
}

void takeStep(bool solve, Simulation& simulation) {
    if (simulation.options.componentCount > 0) return takeComponentStep(simulation);
    startRsLimit(simulation);
    if (!underStepControl(simulation.options)) return advance(solve, simulation);
    keepStepLevel(simulation, simulation.stepLevel);
    StepControl& control = simulation.control;
    const bool implicitly = control.implicitAhead > 0 || (solve && crawls(simulation));
    control.implicitAhead = std::max(0, control.implicitAhead - 1);
    if (!implicitly || !takeImplicitly(allowedBefore(simulation), simulation))
        attemptUntilAccepted(solve, simulation);
    watchProgress(simulation);
}

}  // namespace kvr
