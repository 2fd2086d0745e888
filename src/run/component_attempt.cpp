#include "run/component_attempt.hpp"

#include "base/hard_stop.hpp"
#include "base/messages.hpp"
#include "base/stopwatch.hpp"
#include "pressure/component_properties.hpp"
#include "pressure/component_step.hpp"
#include "pressure/component_wells.hpp"
#include "pressure/left_over.hpp"
#include "pressure/wells/rate_limits.hpp"
#include "pressure/wells/well_controls.hpp"
#include "run/banners.hpp"
#include "run/status_line.hpp"
#include "run/step_control.hpp"
#include "run/step_measure.hpp"
#include "streamline/streamline_step.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double LargestCompositionChange = 0.25;  // of an overall fraction of a cell, a step
constexpr double LargestCellError = 0.05;          // of a cell's pores that its fluids lack or exceed
constexpr double LargestFailedFlashes = 0.5;       // cells: none
constexpr double LargestMiss = 0.03;               // of a rate target
constexpr double LagShare = 0.8;                   // of the limit of mobilities
constexpr double LagFactor = 5.0;                  // that of their change, which later passes take up
constexpr double ShortStep = 10.0;                 // smallest steps: a front crosses no cell in so little
constexpr double Safety = 0.8;
constexpr double LargestGrowth = 2.0, LargestCut = 0.1, SmallestCut = 0.7;
constexpr double FailedSolveCut = 0.25;
constexpr double VanishedStep = 1e-9;  // days
// The volumes a lb-mole of a step's start miss what mixing makes of phases: passes over the same step take up
// what the ones before have left over, while that is more than a share of its limit.
constexpr int MostPasses = 3;
constexpr double RepeatShare = 0.3;     // of the limits of volumes
constexpr double RepeatLagShare = 0.1;  // of those of mobilities and of a producer's gas
constexpr int MostLineCuts = 2;         // of a step, behind which the cells alone move its amounts

struct Row {
    std::string_view name;
    double ComponentFigures::*figure;
    double limit;
    double order;  // of the figure in the length of the step
};

double askedOf(double share, double order) {
    if (!std::isfinite(share)) return 0.0;
    return share > 0.0 ? Safety / std::pow(share, 1.0 / order) : HUGE_VAL;
}

void tellJudgement(const Simulation& s, const ComponentJudgement& judgement) {
    log(s.console, "STEP CONTROL :: {} days, {} {} (limit {}) --> {} days", number(s.clock.dt),
        judgement.reason, number(judgement.figure), number(judgement.limit), number(judgement.length));
}

void measureVolumes(const Simulation& s, ComponentFigures& figures) {
    const ComponentStage& stage = s.components.stage;
    const double least = leastJudgedVolume(s.grid, s.state);
    double pores = 0.0, error = 0.0;
    for (CellId c = 1; c <= s.grid.NCELLS; ++c) {
        const double volume = s.state.PoreVolume[c];
        if (s.grid.Active[c] == 0 || !(volume > 0.0)) continue;
        const double off = std::abs(stage.FluidVolume[c] - volume);
        pores += volume;
        error += off;
        const double share = off / std::max(volume, least);
        if (!(share <= figures.largestVolumeError)) figures.largestVolumeError = share;
        if (!stage.cells.flash[static_cast<std::size_t>(c)].isSolved) figures.failedFlashes += 1.0;
    }
    if (pores > 0.0) figures.volumeError = error / pores;
}

void measureCompositions(const Simulation& s, ComponentFigures& figures) {
    const ComponentStage& stage = s.components.stage;
    const DirectionArray<double>& before = s.components.level.amounts.moles;
    if (before.width == 0) return;
    for (CellId c = 1; c <= s.grid.NCELLS; ++c) {
        if (s.grid.Active[c] == 0) continue;
        double sum = 0.0;
        for (int i = 1; i <= before.width; ++i) sum += before(c, i);
        if (!(sum > 0.0)) continue;
        for (int i = 1; i <= before.width; ++i)
            figures.compositionChange =
                std::max(figures.compositionChange, std::abs(stage.cells.z(c, i) - before(c, i) / sum));
    }
}

/// Puts what the pass has left over to what the next one has to take up.
void addLeftOver(Simulation& s) {
    ComponentStage& stage = s.components.stage;
    for (CellId c = 1; c <= s.grid.NCELLS; ++c)
        if (s.grid.Active[c] != 0) stage.leftOver[c] += stage.FluidVolume[c] - s.state.PoreVolume[c];
}

void returnToLevel(const WellRecord& wells, const RunClock& clock, Simulation& s) {
    returnToComponentLevel(s);
    s.wells = wells;
    s.clock = clock;
}

/// Gas that a producer gives against what the pressure was solved with, of that or of the oil volume where
/// there is less gas: away from it the solve took the wrong mobility for the well.
double gasMissOf(const Well& well) {
    const double solved = std::max(std::abs(well.solvedQg), std::abs(well.solvedQo));
    return solved > 0.0 ? std::abs(well.WellQg - well.solvedQg) / solved : 0.0;
}

/// How far a step is from what its pressure was solved for, in what asks for another pass.
double repeatShare(const RunOptions& options, const ComponentFigures& figures) {
    const double volumes = std::max(figures.volumeError / options.stepVolumeError,
                                    figures.largestVolumeError / LargestCellError);
    const double lags = std::max(figures.mobilityError / (LagShare * options.stepMobilityError),
                                 figures.gasMiss / LargestMiss);
    return std::max(volumes / RepeatShare, lags / RepeatLagShare);
}

/// The next pass over the step is solved with what this one has found of its means.
void takeMeans(double dt, Simulation& s) {
    ComponentRun& run = s.components;
    run.stage.takesMean = true;
    takeDrawn(dt, run.stage.set.count, run.sources, run.moved, s.wells, run.drawn);
}

void leaveMeans(Simulation& s) {
    s.components.drawn.clear();
    leaveMeanMobilities(s.grid, s.components.stage, s.state);
}

}  // namespace

ComponentFigures measureComponentStep(const Simulation& simulation) {
    ComponentFigures figures;
    measureVolumes(simulation, figures);
    measureCompositions(simulation, figures);
    if (simulation.clock.workDt > ShortStep * simulation.options.stepSmallest) {
        figures.mobilityLag = lagOfComponentStep(simulation);
        figures.mobilityError = errorOfComponentMobilities(simulation);
    }
    for (const Well& well : simulation.wells.wells) {
        if (well.shut || isInjector(well)) continue;
        figures.gasMiss = std::max(figures.gasMiss, gasMissOf(well));
        if (!isRateControlled(well) || well.WellControl == "resv") continue;
        const double share = std::abs(heldRate(well, well.WellControl) / well.TargetRate - 1.0);
        if (!(share <= figures.targetMiss)) figures.targetMiss = share;
    }
    return figures;
}

ComponentJudgement judgeComponentStep(const RunOptions& options, const ComponentFigures& figures, double dt) {
    const Row rows[] = {
        {"volume error of the field", &ComponentFigures::volumeError, options.stepVolumeError, 1.0},
        {"volume error of a cell", &ComponentFigures::largestVolumeError, LargestCellError, 1.0},
        {"rate away from its target", &ComponentFigures::targetMiss, LargestMiss, 1.0},
        {"gas rate of a producer", &ComponentFigures::gasMiss, LargestMiss, 1.0},
        {"error of mobility", &ComponentFigures::mobilityError, LagShare * options.stepMobilityError, 1.0},
        {"error of mobility that is put right", &ComponentFigures::correctedError, options.stepMobilityError,
         1.0},
        {"change of mobility", &ComponentFigures::mobilityLag,
         LagFactor * LagShare * options.stepMobilityError, 1.0},
        {"change of composition", &ComponentFigures::compositionChange, LargestCompositionChange, 1.0},
        {"cells without a flash", &ComponentFigures::failedFlashes, LargestFailedFlashes, 1.0},
    };
    ComponentJudgement judgement;
    if (!figures.pressureSolved) {
        judgement.reason = "pressure without a solution";
        judgement.length = FailedSolveCut * dt;
        return judgement;
    }
    double worst = -1.0, asked = LargestGrowth;
    for (const Row& row : rows) {
        const double share = figures.*row.figure / row.limit;
        asked = std::min(asked, askedOf(share, row.order));
        if (std::isfinite(share) && share <= worst) continue;
        worst = std::isfinite(share) ? share : HUGE_VAL;
        judgement.reason = row.name;
        judgement.figure = figures.*row.figure;
        judgement.limit = row.limit;
    }
    judgement.stands = worst <= 1.0;
    judgement.length =
        dt * (judgement.stands ? std::max(asked, 1.0) : std::clamp(asked, LargestCut, SmallestCut));
    return judgement;
}

namespace {

double daysToReport(const Simulation& s) {
    return tableTime(s.schedule.reportEnd, s.clock.reportIndex) - s.clock.time - s.clock.dt;
}

double daysToEnd(const Simulation& s) {
    return s.clock.endTime - s.clock.time - s.clock.dt;
}

/// Pressure and amounts of one pass; false where no pressure is found. What the lines of the first pass tell
/// serves the others, whose flow differs by little.
bool advance(bool byLines, ComponentMakeUp& makeUp, Simulation& s) {
    if (!solveComponentFlow(s)) return false;
    if (byLines && makeUp.isEmpty()) {
        const StageTimer timer(s.times.lines);
        s.clock.workDt = s.clock.dt;
        makeUp = traceMixtures(s, daysToEnd(s), daysToReport(s));
    }
    moveOnFlow(makeUp, s);
    return true;
}

/// Lines smear fronts by what goes from them to cells and back, the less the longer their steps are: those
/// are as short as one pass by itself would have to be, whatever later passes put right.
void judgeLines(ComponentFigures& figures, double& firstGasMiss) {
    firstGasMiss = figures.gasMiss = std::max(figures.gasMiss, firstGasMiss);
    figures.mobilityError = std::max(figures.mobilityError, figures.mobilityLag);
}

/// Passes over one step from its level.
ComponentFigures attempt(bool byLines, const WellRecord& wells, Simulation& s) {
    s.components.stage.leftOver.assign(s.grid.NCELLS, 0.0);
    const RunClock clock = s.clock;
    ComponentMakeUp makeUp;
    double before = HUGE_VAL, firstGasMiss = 0.0, firstError = 0.0;
    for (int pass = 1;; ++pass) {
        ComponentFigures figures;
        figures.pressureSolved = advance(byLines, makeUp, s);
        leaveMeans(s);
        if (!figures.pressureSolved) return figures;
        figures = measureComponentStep(s);
        if (pass == 1) firstError = figures.mobilityError;
        figures.correctedError = firstError;
        if (byLines) judgeLines(figures, firstGasMiss);
        const double share = repeatShare(s.options, figures);
        if (!(share > 1.0) || share >= before || pass == MostPasses) return figures;
        before = share;
        addLeftOver(s);
        takeMeans(s.clock.dt, s);
        returnToLevel(wells, clock, s);
    }
}

/// The files of lines at the end of a step that was taken without any.
void showLines(Simulation& s) {
    if (s.options.method != "streamline") return;
    const StageTimer timer(s.times.lines);
    drawLines(s, daysToEnd(s), daysToReport(s));
}

}  // namespace

void takeComponentStep(Simulation& s) {
    const StageTimer timer(s.times.pressure);
    keepComponentLevel(s);
    keepLevel(s.fluids.hasGas, s.state, s.stepLevel.state);
    const WellRecord wells = s.wells;
    const RunClock clock = s.clock;
    const double before = s.pressure.fieldStands ? s.control.longest : 0.0;
    for (int cuts = 0;; ++cuts) {
        const bool byLines = s.options.method == "streamline" && cuts < MostLineCuts;
        const ComponentFigures figures = attempt(byLines, wells, s);
        ComponentJudgement judgement = judgeComponentStep(s.options, figures, s.clock.dt);
        const bool shortest = s.clock.dt <= s.options.stepSmallest || !s.options.stepControl;
        if (figures.pressureSolved && !judgement.stands && shortest && std::isfinite(judgement.figure)) {
            if (s.options.stepControl)
                warn(s.console, "WARNING :: SHORTEST STEP STANDS WITH A {} OF {}", judgement.reason,
                     number(judgement.figure, 4));
            judgement.stands = true;
            judgement.length = std::max(judgement.length, s.options.stepSmallest);
        }
        tellJudgement(s, judgement);
        updateStatus(s);
        if (judgement.stands) {
            if (!byLines) showLines(s);
            s.control.longest =
                cuts == 0 ? allowedBehind(judgement.length, before, s.clock.dt) : judgement.length;
            return;
        }
        const double length =
            s.options.stepControl
                ? std::max(judgement.length, std::min(s.options.stepSmallest, FailedSolveCut * s.clock.dt))
                : judgement.length;
        returnToLevel(wells, clock, s);
        if (length < VanishedStep) {
            lineToBoth(s.console, "ERROR :: TIME STEP HAS VANISHED, PRESSURE CANNOT BE SOLVED");
            hardStop(s.console);
        }
        s.control.rejected += 1;
        s.clock.dt = length;
        printStepBanner(s.console, s.schedule, s.clock);
    }
}

}  // namespace kvr
