#include "implicit/fully_implicit.hpp"

#include "base/hard_stop.hpp"
#include "base/stopwatch.hpp"
#include "implicit/jacobian.hpp"
#include "implicit/newton_update.hpp"
#include "implicit/step_balance.hpp"
#include "implicit/well_borders.hpp"
#include "implicit/well_switching.hpp"
#include "pressure/properties.hpp"
#include "pressure/velocity.hpp"
#include "pressure/wells/well_controls.hpp"
#include "pressure/wells/well_rates.hpp"

#include <cmath>

namespace kvr {

namespace {

constexpr double CutFactor = 0.5;             // of the step length when an attempt fails
constexpr double GrowthFactor = 2.0;          // of the step length that cuts have left, from step to step
constexpr double DivergedDp = 10000.0;        // psi; a change of this size fails the attempt
constexpr double VanishedStep = 1e-30;        // days; V/dt has lost its meaning, halving on would never end
constexpr double LargestBalanceError = 1e-9;  // of a step, over what is in place
constexpr double LargestRateError = 1e-6;     // relative, of a rate well
constexpr double UsableResidual = 0.1;        // of a linear solve that stopped early: still a direction to go

void refresh(Simulation& s) {
    refreshProperties(s.grid, s.fluids, s.state);
    UpdateWellRates(s.units, s.grid, s.fluids, s.state, s.wells, s.pressure);
}

bool solve(Simulation& s) {
    ImplicitWork& work = s.implicit;
    const bool dense = solvesBlocksDensely(s.options.pressureSolver, work.system.rows);
    const SolveResult result =
        dense
            ? solveBlockSystemDense(work.system, work.solution, work.bhpChange, *work.memory)
            : solveBlockSystem(work.system, BlockSolveLimits{}, work.solution, work.bhpChange, *work.memory);
    work.counts.linearIterations += result.iterations;
    const bool usable = result.failure == SolveFailure::None ||
                        (result.failure == SolveFailure::NotConverged && result.residual < UsableResidual);
    if (!usable) lineToBoth(s.console, "ERROR OCCURS IN SOLVING PRESSURES.");
    return usable;
}

void printIteration(const Console& console, int iteration, const NewtonChange& change) {
    both(console, " ITE: {}  Dp= {}  DSw= {}  DSg= {}", iteration, number(change.Dp), number(change.DSw),
         number(change.DSg));
}

/// Wells that the iteration has taken out of their range, by what they would give at its end. False when a
/// bottom-hole pressure cannot be held.
bool updateWells(Simulation& s, bool& switched) {
    clipToLimits(s.wells);
    if (!repairBottomHolePressures(s.console, s.state, s.wells)) return false;
    refresh(s);
    switched = switchWells(s.console, s.wells, s.implicit);
    return true;
}

bool changesAreSmall(const RunOptions& options, const NewtonChange& change) {
    return change.Dp < options.PressureTolerance && change.DSw < options.SaturationTolerance &&
           change.DSg < options.SaturationTolerance && change.DRs < options.SaturationTolerance;
}

bool converged(const NewtonChange& change, bool wellSwitched, Simulation& s) {
    if (wellSwitched || !changesAreSmall(s.options, change)) return false;
    if (largestTargetError(s.wells) > LargestRateError) return false;
    return stepBalanceError(s.clock.dt, s.grid, s.state, s.wells, s.implicit.oldAmounts,
                            s.implicit.nowAmounts) <= LargestBalanceError;
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
    change = applyNewtonStep(s.fluids, s.state, s.wells, work);
    printIteration(s.console, iteration, change);
    if (diverged(s.state, work.cellOfRow.front(), change)) return false;
    return updateWells(s, wellSwitched);
}

void buildVelocity(Simulation& s) {
    BuildVelocityFromPressure(s.options, s.units, s.grid, s.connections, s.state, s.velocity);
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
    both(s.console, " T-STEP SIZE  --> {}", number(s.clock.dt));
    lineToBoth(s.console, "PRESSURES and SATURATIONS ARE SOLVED SUCCESSFULLY !");
    both(s.console, " NUMBER OF ITERATIONS --> {}", iterations);
    buildVelocity(s);
    keepChanges(s);
    s.implicit.counts.steps += 1;
    s.pressure.stepCut = cut;
    setLongestStep(cut, s.clock.dt, s.implicit.longestStep);
    both(s.console, " Reservoir average pressure : {} PSIA", number(s.pressure.AveragePressure));
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
    initialiseBottomHolePressures(s.state, s.wells);
    refreshProperties(s.grid, s.fluids, s.state);
    measureAmounts(s.grid, s.state, work.oldAmounts);
    // Heads are those of the start: their densities hang on the mobilities of every cell of the bore.
    WellHead(s.grid, s.connections, s.state, s.wells);
    releaseWellsFromLimit(s.console, s.wells);
    UpdateWellRates(s.units, s.grid, s.fluids, s.state, s.wells, s.pressure);
    work.saved = s.state;
    work.savedWells = s.wells;
}

bool attemptImplicitStep(Simulation& s, int& iterations) {
    clearBottomHoleResets(s.wells);
    buildWellBorders(s.wells, s.implicit);
    chooseUnknowns(s.fluids, s.state, s.implicit);
    refresh(s);
    NewtonChange change;
    bool wellSwitched = false;
    for (iterations = 1;; ++iterations) {
        if (!iterate(iterations, s, change, wellSwitched)) return false;
        if (converged(change, wellSwitched, s)) return true;
        if (iterations >= s.options.MaxPressureIterations) return false;
    }
}

void cutImplicitStep(Simulation& s) {
    lineToBoth(s.console, "CONVERGENS PROBLEM OCCURS");
    s.state = s.implicit.saved;
    s.wells = s.implicit.savedWells;
    s.clock.dt *= CutFactor;
    s.implicit.counts.cuts += 1;
    both(s.console, " TIME STEP SIZE IS DECREASED --> {}", number(s.clock.dt));
    if (s.clock.dt >= VanishedStep) return;
    lineToBoth(s.console, "ERROR :: TIME STEP HAS VANISHED, PRESSURE CANNOT BE SOLVED");
    hardStop(s.console);
}

void FullyImplicitStep(Simulation& s) {
    if (s.implicit.cellOfRow.empty()) return;  // nothing takes part in flow
    const double start = cpuSeconds();
    lineToBoth(s.console, "Solution by Fully Implicit Method !");
    beginImplicitStep(s);
    int iterations = 0;
    bool cut = false;
    while (!attemptImplicitStep(s, iterations)) {
        cutImplicitStep(s);
        cut = true;
    }
    finishStep(iterations, cut, s);
    s.pressure.processorSeconds = cpuSeconds() - start;
}

}  // namespace kvr
