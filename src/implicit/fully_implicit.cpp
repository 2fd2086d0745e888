#include "implicit/fully_implicit.hpp"

#include "base/hard_stop.hpp"
#include "base/stopwatch.hpp"
#include "implicit/jacobian.hpp"
#include "implicit/newton_update.hpp"
#include "implicit/residual_ramp.hpp"
#include "implicit/step_balance.hpp"
#include "implicit/well_borders.hpp"
#include "implicit/well_switching.hpp"
#include "pressure/pressure_solve.hpp"
#include "pressure/properties.hpp"
#include "pressure/rs_limit.hpp"
#include "pressure/velocity.hpp"
#include "pressure/wells/aquifers.hpp"
#include "pressure/wells/group_targets.hpp"
#include "pressure/wells/lift_limits.hpp"
#include "pressure/wells/well_controls.hpp"
#include "pressure/wells/well_heads.hpp"
#include "pressure/wells/well_rates.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

namespace kvr {

namespace {

constexpr double CutFactor = 0.5;             // of the step length when an attempt fails
constexpr double GrowthFactor = 2.0;          // of the step length that cuts have left, from step to step
constexpr double DivergedDp = 10000.0;        // psi; a change of this size fails the attempt
constexpr double VanishedStep = 1e-30;        // days; V/dt has lost its meaning, halving on would never end
constexpr double LargestBalanceError = 1e-9;  // of a step, as stepBalanceError has it
constexpr double RestShare = 1e-3;           // of the tolerances: an iterate that moves less stands still ...
constexpr int ManyIterations = 12;           // ... as does one that stays within the tolerances so long ...
constexpr double BalanceErrorAtRest = 1e-7;  // ... and is taken with this balance error
constexpr int MostSharings = 6;              // iterates that group rates are shared anew for ...
constexpr int LateSharings = 12;             // ... and of those that are good otherwise
constexpr double SettledShare = 1e-3;        // of a target that such an iterate may be off its share
constexpr double UsableResidual = 0.1;       // of a linear solve that stopped early: still a direction to go

/// Properties and wells that go with the pressures and saturations of the cells. True when a well has changed
/// its control.
bool refresh(Simulation& s) {
    refreshProperties(s.grid, s.fluids, s.state);
    if (s.fluids.hasGas) rampOil(s.grid, s.fluids, s.state);
    if (s.implicit.sharings < MostSharings) {
        settleLiftLimits(s.units, s.fluids, s.state, s.pressure.AveragePressure, s.wells);
        shareGroupTargets(ShareTime::Iteration, s.units, s.fluids, s.state, s.pressure.AveragePressure,
                          s.wells);
        ++s.implicit.sharings;
    }
    const bool switched =
        settleWells(s.units, s.fluids, s.state, s.pressure.AveragePressure, s.wells, s.implicit);
    UpdateWellRates(s.units, s.grid, s.fluids, s.state, s.wells, s.pressure);
    return switched;
}

bool solve(Simulation& s) {
    ImplicitWork& work = s.implicit;
    // Matrix cells of two continua follow from their fractures, and the solve goes without them.
    const bool apart = !work.matrixRows.leaves.empty() && takeOutLeaves(work.system, work.matrixRows);
    const BlockSystem& system = apart ? work.matrixRows.rest : work.system;
    std::vector<double>& solution = apart ? work.matrixRows.solution : work.solution;
    const bool dense = solvesBlocksDensely(s.options.pressureSolver, system.rows);
    const SolveResult result =
        dense ? solveBlockSystemDense(system, solution, work.bhpChange, *work.memory)
              : solveBlockSystem(system, BlockSolveLimits{}, solution, work.bhpChange, *work.memory);
    if (apart) putBackLeaves(work.system, work.matrixRows, work.solution);
    work.counts.linearIterations += result.iterations;
    if (dense && result.failure == SolveFailure::Memory) stopForMemory(s.console, s.options.pressureSolver);
    const bool usable = result.failure == SolveFailure::None ||
                        (result.failure == SolveFailure::NotConverged && result.residual < UsableResidual);
    if (!usable) lineToBoth(s.console, "ERROR OCCURS IN SOLVING PRESSURES.");
    return usable;
}

void printIteration(const Console& console, int iteration, const NewtonChange& change) {
    both(console, " ITE: {}  Dp= {}  DSw= {}  DSg= {}", iteration, number(change.Dp), number(change.DSw),
         number(change.DSg));
}

bool changesAreSmall(const RunOptions& options, const NewtonChange& change) {
    return change.Dp < options.PressureTolerance && change.DSw < options.SaturationTolerance &&
           change.DSg < options.SaturationTolerance && change.DRs < options.SaturationTolerance;
}

bool standsStill(const RunOptions& options, const NewtonChange& change) {
    const double saturation = RestShare * options.SaturationTolerance;
    return change.Dp < RestShare * options.PressureTolerance && change.DSw < saturation &&
           change.DSg < saturation && change.DRs < saturation;
}

/// Largest share by which targets of wells differ, or 1 where a control does.
double targetChange(const WellRecord& before, const WellRecord& now) {
    double change = 0.0;
    for (std::size_t w = 0; w < now.wells.size(); ++w) {
        const Well &old = before.wells[w], &well = now.wells[w];
        if (old.deckControl != well.deckControl) return 1.0;
        if (old.TargetRate != 0.0)
            change = std::max(change, std::abs(well.TargetRate / old.TargetRate - 1.0));
        if (!isRateControlled(well) && old.BhpLimit > 0.0)
            change = std::max(change, std::abs(well.BhpLimit / old.BhpLimit - 1.0));
    }
    return change;
}

bool hasLiftLimits(const WellRecord& wells) {
    return std::any_of(wells.wells.begin(), wells.wells.end(),
                       [](const Well& well) { return well.lift.table != nullptr && well.lift.head > 0.0; });
}

/// Whether what the step has come to asks for other shares of group rates than those that stand, or other
/// limits from the tubing head; then wells take these.
bool sharesAnew(Simulation& s) {
    if ((s.wells.groups.empty() && !hasLiftLimits(s.wells)) ||
        s.implicit.sharings >= MostSharings + LateSharings)
        return false;
    WellRecord now = s.wells;
    settleLiftLimits(s.units, s.fluids, s.state, s.pressure.AveragePressure, now);
    shareGroupTargets(ShareTime::Iteration, s.units, s.fluids, s.state, s.pressure.AveragePressure, now);
    if (targetChange(s.wells, now) <= SettledShare) return false;
    ++s.implicit.sharings;
    s.wells = std::move(now);
    settleWells(s.units, s.fluids, s.state, s.pressure.AveragePressure, s.wells, s.implicit);
    UpdateWellRates(s.units, s.grid, s.fluids, s.state, s.wells, s.pressure);
    return true;
}

bool converged(int iteration, const NewtonChange& change, bool wellSwitched, Simulation& s) {
    if (wellSwitched || !changesAreSmall(s.options, change)) return false;
    if (releaseHeldWells(s.wells, s.implicit) || !wellsObey(s.wells) || sharesAnew(s)) return false;
    const double error =
        stepBalanceError(s.clock.dt, s.grid, s.state, s.wells, s.implicit.oldAmounts, s.implicit.nowAmounts);
    // Amounts that no state within its bounds can show, rounding of another method say, stay an error for
    // ever.
    return error <= LargestBalanceError ||
           ((iteration >= ManyIterations || standsStill(s.options, change)) && error <= BalanceErrorAtRest);
}

bool diverged(const CellState& state, CellId firstCell, const NewtonChange& change) {
    return !change.finite || !(change.Dp <= DivergedDp) || !std::isfinite(state.Pressure[firstCell]);
}

/// One Newton iteration; false when it shows that the attempt has failed.
bool iterate(int iteration, Simulation& s, NewtonChange& change, bool& wellSwitched) {
    ImplicitWork& work = s.implicit;
    assembleCells(s.clock.dt, s.grid, s.fluids, s.state, work);
    addWells(s.units, s.grid, s.fluids, s.state, s.pressure.AveragePressure, s.wells, work);
    work.counts.newtonIterations += 1;
    if (!solve(s)) return false;
    change = applyNewtonStep(s.grid, s.fluids, s.state, s.wells, work);
    printIteration(s.console, iteration, change);
    if (diverged(s.state, work.cellOfRow.front(), change)) return false;
    wellSwitched = refresh(s);
    return true;
}

void buildVelocity(Simulation& s) {
    BuildVelocityFromPressure(s.options, s.units, s.grid, s.connections, s.state, {}, s.velocity);
    UpdateWellVelocity(s.units, s.state, s.wells);
}

/// Pressure changes over the whole step, and the largest of them.
void keepChanges(Simulation& s) {
    PressureStage& stage = s.pressure;
    stage.DeltaP.assign(s.grid.NCELLS, 0.0);
    stage.largestDeltaP = 0.0;
    for (const CellId c : s.implicit.cellOfRow) {
        stage.DeltaP[c] = s.state.Pressure[c] - s.implicit.saved.Pressure[c];
        stage.largestDeltaP = std::max(stage.largestDeltaP, std::abs(stage.DeltaP[c]));
    }
}

/// What the next step may last: after a cut, twice this one; then twice as much from step to step.
void setLongestStep(bool cut, double dt, double& longest) {
    if (cut) longest = dt;
    longest *= GrowthFactor;
}

void finishStep(int iterations, bool cut, Simulation& s) {
    tellSwitches(s.console, s.implicit.savedWells, s.wells);
    both(s.console, " T-STEP SIZE  --> {}", number(s.clock.dt));
    lineToBoth(s.console, "PRESSURES and SATURATIONS ARE SOLVED SUCCESSFULLY !");
    both(s.console, " NUMBER OF ITERATIONS --> {}", iterations);
    buildVelocity(s);
    keepChanges(s);
    s.pressure.carried = CellAmounts{};  // the saturations show all that the cells hold now
    s.implicit.counts.steps += 1;
    s.pressure.stepCut = cut;
    setLongestStep(cut, s.clock.dt, s.implicit.longestStep);
    both(s.console, " Reservoir average pressure : {} PSIA", number(s.pressure.AveragePressure));
}

/// The first cell whose pressure no iteration could move, 0 if there is none.
CellId cellWithoutPressure(const Simulation& s) {
    for (const CellId c : s.implicit.cellOfRow)
        if (!(s.state.Pressure[c] > 0.0)) return c;
    return 0;
}

}  // namespace

void AllocateFullyImplicit(Simulation& s) {
    buildImplicitPattern(s.grid, s.connections, s.fluids.hasGas, s.implicit);
    s.implicit.memory = makeBlockSolverMemory();
}

double stepLengthAfterCuts(double longest, double dt) {
    if (longest <= 0.0 || dt <= longest) return dt;
    return dt / std::ceil(dt / longest);
}

void beginImplicitStep(Simulation& s) {
    ImplicitWork& work = s.implicit;
    setConnectionTrans(s.units, s.connections, work);
    refreshProperties(s.grid, s.fluids, s.state);
    measureWholeAmounts(s.grid, s.state, s.pressure.carried, work.oldAmounts);
    // Heads are those of the start: their densities hang on the mobilities of every cell of the bore.
    WellHead(s.grid, s.connections, s.fluids, s.state, s.wells);
    initialiseBottomHolePressures(s.state, s.wells);
    setAquiferTerms(s.clock.dt, s.grid, s.aquifers, s.wells);
    settleLiftLimits(s.units, s.fluids, s.state, s.pressure.AveragePressure, s.wells);
    shareGroupTargets(ShareTime::StepBegin, s.units, s.fluids, s.state, s.pressure.AveragePressure, s.wells);
    setRsRise(s);
    work.saved = s.state;
    work.savedWells = s.wells;
}

bool attemptImplicitStep(Simulation& s, int& iterations) {
    buildWellBorders(s.wells, s.implicit);
    chooseUnknowns(s.fluids, s.state, s.implicit);
    s.implicit.sharings = 0;
    refresh(s);
    NewtonChange change;
    bool wellSwitched = false;
    for (iterations = 1;; ++iterations) {
        if (!iterate(iterations, s, change, wellSwitched)) return false;
        if (converged(iterations, change, wellSwitched, s)) return true;
        if (iterations >= s.options.MaxPressureIterations) return false;
    }
}

void cutImplicitStep(Simulation& s) {
    lineToBoth(s.console, "CONVERGENS PROBLEM OCCURS");
    s.state = s.implicit.saved;
    s.wells = s.implicit.savedWells;
    s.clock.dt *= CutFactor;
    setAquiferTerms(s.clock.dt, s.grid, s.aquifers, s.wells);
    setRsRise(s);
    s.implicit.counts.cuts += 1;
    both(s.console, " TIME STEP SIZE IS DECREASED --> {}", number(s.clock.dt));
}

bool tryFullyImplicitStep(Simulation& s, int mostCuts) {
    if (s.implicit.memory == nullptr) AllocateFullyImplicit(s);
    if (s.implicit.cellOfRow.empty()) return true;  // nothing takes part in flow
    if (cellWithoutPressure(s) != 0) return false;
    const double start = cpuSeconds(), dt = s.clock.dt;
    lineToBoth(s.console, "Solution by Fully Implicit Method !");
    const WellRecord wellsBefore = s.wells;
    beginImplicitStep(s);
    int iterations = 0, cuts = 0;
    while (!attemptImplicitStep(s, iterations)) {
        cutImplicitStep(s);
        if (++cuts <= mostCuts && s.clock.dt >= VanishedStep) continue;
        s.wells = wellsBefore;
        s.clock.dt = dt;
        return false;
    }
    finishStep(iterations, cuts > 0, s);
    s.pressure.processorSeconds = cpuSeconds() - start;
    return true;
}

void FullyImplicitStep(Simulation& s) {
    if (tryFullyImplicitStep(s, std::numeric_limits<int>::max())) return;
    if (const CellId cell = cellWithoutPressure(s); cell != 0)
        both(s.console, "ERROR :: FULLY IMPLICIT METHOD NEEDS PRESSURES ABOVE 0, GRID {}", cell);
    else
        lineToBoth(s.console, "ERROR :: TIME STEP HAS VANISHED, PRESSURE CANNOT BE SOLVED");
    hardStop(s.console);
}

}  // namespace kvr
