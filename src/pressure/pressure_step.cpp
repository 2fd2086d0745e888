#include "pressure/pressure_step.hpp"

#include "base/hard_stop.hpp"
#include "base/messages.hpp"
#include "base/stopwatch.hpp"
#include "model/dual_porosity.hpp"
#include "pressure/acceleration.hpp"
#include "pressure/accumulation.hpp"
#include "pressure/flow_coefficients.hpp"
#include "pressure/left_over.hpp"
#include "pressure/mobility_forecast.hpp"
#include "pressure/pressure_forecast.hpp"
#include "pressure/pressure_lines.hpp"
#include "pressure/pressure_matrix.hpp"
#include "pressure/pressure_solve.hpp"
#include "pressure/properties.hpp"
#include "pressure/rs_limit.hpp"
#include "pressure/solvers/system_products.hpp"
#include "pressure/velocity.hpp"
#include "pressure/wells/aquifers.hpp"
#include "pressure/wells/group_targets.hpp"
#include "pressure/wells/lift_limits.hpp"
#include "pressure/wells/rate_limits.hpp"
#include "pressure/wells/well_controls.hpp"
#include "pressure/wells/well_heads.hpp"
#include "pressure/wells/well_rates.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double CutFactor = 0.2;         // of the step length when an iteration fails
constexpr double DivergedDeltaP = 1.0e8;  // psi; a change of this size cuts the step
constexpr double TinyStep = 1e-8;         // days; below it a step is taken as converged ...
constexpr double TinyStepDeltaP = 1.0;    // psi; ... with a change below this
constexpr double VanishedStep = 1e-30;    // days; V/dt has lost its meaning, cutting on would never end
constexpr double HopelessStep = 1e-4;     // days; a run whose steps are all cut below it ...
constexpr int MostHopelessSteps = 100;    // ... so many times in a row would never end

constexpr double HandedOnResidual = 1e-6;  // of the volume balance, where the next step takes up what is left

// What the first solve of a step leaves of its equations, of what the change of properties left behind that
// of the step before (Dembo, Eisenstat and Steihaug 1982), at the most of their start.
constexpr double FirstShare = 0.1, LoosestSolve = 1e-2;
constexpr double RoomShare = 2.0;  // times FirstShare: of what may be handed on, which it may leave as well

constexpr int FreeSides = 4;            // iterations in which phases may change sides freely
constexpr double LargestAstray = 0.01;  // of the flow, that wants to come from the other side

/// psi that one iteration may move a cell by in a run with gas. Phase changes at a well make undamped
/// iterations jump to and fro; cells and bottom-hole pressures move by the same share of the solution.
constexpr double LargestGasMove = 100.0;

void updateRates(Simulation& s) {
    UpdateWellRates(s.units, s.grid, s.fluids, s.state, s.wells, s.pressure);
}

void buildVelocity(const UpstreamSides& sides, Simulation& s) {
    BuildVelocityFromPressure(s.options, s.units, s.grid, s.connections, s.state, sides, s.velocity);
    UpdateWellVelocity(s.units, s.state, s.wells);
}

void updateInPlace(Simulation& s) {
    UpdateProperties(s.console, s.options, s.grid, s.fluids, s.pressure.flashAmounts, s.state,
                     s.pressure.relPermsHeld);
}

/// Amounts that the update between iterations flashes, per pore volume of the state that held them.
void setFlashAmounts(const CellAmounts& held, const CellArray<double>& poreVolume, CellAmounts& flash) {
    flash = held;
    for (CellId c = 1; c <= poreVolume.count(); ++c) {
        const double inverse = poreVolume[c] > 0.0 ? 1.0 / poreVolume[c] : 0.0;
        flash.water[c] *= inverse;
        flash.oil[c] *= inverse;
        flash.gas[c] *= inverse;
    }
}

/// Whether steps may end on what is left over, see mayBeHandedOn.
bool handsOn(const RunOptions& options) {
    return options.stepControl && carriesAmounts(options);
}

/// Whether the step before tells how the field flows. Beside gas the level serves better: what comes out of
/// solution there is no matter of flow.
bool goesOn(const Simulation& s) {
    return handsOn(s.options) && s.pressure.fieldStands && s.clock.stepsSinceEvent > 0 && !s.fluids.hasGas;
}

/// Mobilities of the middle of the step.
void forecast(Simulation& s) {
    PressureStage& stage = s.pressure;
    stage.mobilityRatio = {};
    if (s.clock.stepsSinceEvent == 0) stage.forecasts = true;
    if (stage.forecasts && goesOn(s)) forecastMobilities(s.clock.dt, s);
}

/// Pressures of the end of the step, to start from.
void startFromForetold(Simulation& s) {
    if (!goesOn(s) || !s.pressure.riseGoesOn) return;
    foretellPressures(s.clock.dt, s.pressure, s.state, s.wells);
    updateInPlace(s);
    updateRates(s);
}

void beginStep(Simulation& s) {
    s.pressure.stepCut = false;
    s.pressure.failed = false;
    // Amounts that saturations do not show are handed on: what held mobilities leave out comes in the next
    // step.
    if (carriesAmounts(s.options)) s.pressure.relPermsHeld = true;
    refreshProperties(s.grid, s.fluids, s.state);
    WellHead(s.grid, s.connections, s.fluids, s.state, s.wells);
    initialiseBottomHolePressures(s.state, s.wells);
    setAquiferTerms(s.clock.dt, s.grid, s.aquifers, s.wells);
    saveTimeLevel(s);
    forecast(s);
    // By what wells gave in the step before, then by what the transported phases let them give now: gas that
    // has reached an injector's cell multiplies its rate at the limit.
    settleLiftLimits(s.units, s.fluids, s.state, s.pressure.AveragePressure, s.wells);
    shareGroupTargets(ShareTime::StepBegin, s.units, s.fluids, s.state, s.pressure.AveragePressure, s.wells);
    holdMostRestrictive(s.console, s.units, s.fluids, s.state, s.pressure.AveragePressure, s.wells);
    releaseWellsFromLimit(s.console, s.wells);
    updateRates(s);
    releaseWellsFromLimit(s.console, s.wells);
    updateRates(s);
    s.timeLevelWells = s.wells;
    startFromForetold(s);
}

/// A repeated pass over the same step: the time level stands, mobilities are those of the last transport.
void beginRepeatedPass(Simulation& s) {
    refreshProperties(s.grid, s.fluids, s.state);
    if (s.fluids.hasGas) {
        CellAmounts held;
        measureWholeAmounts(s.grid, s.state, s.pressure.carried, held);
        setFlashAmounts(held, s.state.PoreVolume, s.pressure.flashAmounts);
    }
    updateRates(s);
}

/// Storage and flow between cells.
void assembleCells(bool firstIteration, Upstream sides, Simulation& s) {
    PressureMatrix& matrix = s.pressureWork.matrix;
    const auto accumulate = s.fluids.hasGas ? accumulateThreePhase : accumulateTwoPhase;
    const auto flow = s.fluids.hasGas ? flowThreePhase : flowTwoPhase;
    accumulate(firstIteration ? 1 : 0, s.clock.dt, s.grid, s.fluids, s.timeLevel, s.pressure.timeLevelAmounts,
               s.state, matrix);
    flow(sides, s.units, s.grid, s.connections, s.state, matrix);
}

void assemble(bool firstIteration, Upstream sides, Simulation& s) {
    PressureMatrix& matrix = s.pressureWork.matrix;
    buildPattern(s.grid, s.connections, s.wells, matrix);
    assembleCells(firstIteration, sides, s);
    WellHead(s.grid, s.connections, s.fluids, s.state, s.wells);
    addWellTerms(s.units, s.fluids, s.state, s.pressure.AveragePressure, s.wells, matrix);
    fillSystem(s.units, s.grid, s.connections, s.fluids, s.state, s.pressure.AveragePressure, s.wells,
               matrix);
    eliminateMatrixCells(s.grid, s.connections, matrix);
}

/// psi that one iteration may move a cell by.
double largestMove(const FluidTables& fluids) {
    return fluids.hasGas ? LargestGasMove : DivergedDeltaP;
}

/// Moves pressures by the solution: in full and accelerated, or by a share of it.
void moveBySolution(double DIFFP, Simulation& s, int& it) {
    PressureWork& work = s.pressureWork;
    const double bound = largestMove(s.fluids);
    if (DIFFP > bound) {
        resetHistory(work.history);
        updatePressures(s.grid, work.matrix, work.solver.solution, bound / DIFFP, s.state, s.wells, it);
        return;
    }
    // The first solution of a run with gas knows nothing of the flash yet: no measure of how later ones
    // change.
    const bool flashed = it > 0 || !s.fluids.hasGas;
    updatePressures(s.grid, work.matrix, acceleratedStep(work.solver.solution, bound, work.history), 1.0,
                    s.state, s.wells, it);
    if (!flashed) resetHistory(work.history);
}

/// Rate wells that the whole solution takes past their limit go there before any of it is applied: a target
/// out of reach would pull the cells around it down with it, a bounded move at a time.
bool switchWellsOutOfReach(Simulation& s) {
    const std::vector<WellRow>& rows = s.pressureWork.matrix.wellRows;
    std::vector<double> before;
    for (const WellRow& row : rows) {
        Well& well = s.wells.wells[row.well];
        before.push_back(well.Bhp);
        well.Bhp += s.pressureWork.solver.solution[static_cast<std::size_t>(row.row)];
    }
    const bool switched = switchWellsAtLimit(s.console, s.wells);
    for (std::size_t r = 0; r < rows.size(); ++r) {
        Well& well = s.wells.wells[rows[r].well];
        if (isRateControlled(well)) well.Bhp = before[r];
    }
    return switched;
}

/// Moves pressures by the solution, then the wells that have left their range. True when a well has been
/// switched, so that the equations have changed.
bool applySolution(double DIFFP, Simulation& s, int& it) {
    if (s.pressure.relPermsHeld && DIFFP > largestMove(s.fluids) && switchWellsOutOfReach(s)) {
        resetHistory(s.pressureWork.history);
        return true;
    }
    const int before = it;
    moveBySolution(DIFFP, s, it);
    if (it != before) return false;
    const bool switched = switchWellsAtLimit(s.console, s.wells);
    bool reset = false;
    if (!repairBottomHolePressures(s.console, s.state, s.wells)) it = FailedIteration;
    for (const Well& well : s.wells.wells) reset = reset || well.bhpReset;
    if (switched || reset) resetHistory(s.pressureWork.history);
    return switched;
}

[[noreturn]] void stopOnHopelessStep(const Console& console) {
    lineToBoth(console, "ERROR :: TIME STEP HAS VANISHED, PRESSURE CANNOT BE SOLVED");
    hardStop(console);
}

/// The flash of a closed cell knows nothing of what flows through it: where a well draws the pressure of its
/// cell down it shows far more gas than stays there, the oil target asks for more and more of it, and the
/// iteration runs away. A step that has been cut is the sign; from then on relative permeabilities stand.
void holdRelPerms(const Console& console, PressureStage& stage) {
    if (stage.relPermsHeld) return;
    stage.relPermsHeld = true;
    lineToBoth(console, "RELATIVE PERMEABILITIES ARE HELD OVER EACH PRESSURE STEP FROM HERE ON");
}

/// Back to the time level with a shorter step.
void cutStep(Simulation& s) {
    returnToLevel(s.timeLevel, s.state);
    refreshProperties(s.grid, s.fluids, s.state);  // as it made those of the level
    s.wells = s.timeLevelWells;
    if (s.fluids.hasGas)
        setFlashAmounts(s.pressure.timeLevelAmounts, s.timeLevel.PoreVolume, s.pressure.flashAmounts);
    s.clock.dt *= CutFactor;
    setAquiferTerms(s.clock.dt, s.grid, s.aquifers, s.wells);
    updateRates(s);
    setRsRise(s);
    s.pressure.stepCut = true;
    both(s.console, "TIME STEP SIZE IS DECREASED --> {}", number(s.clock.dt));
    if (s.fluids.hasGas) holdRelPerms(s.console, s.pressure);
    if (s.clock.dt < VanishedStep) stopOnHopelessStep(s.console);
}

/// A single tiny step may lead past a difficulty; one after the other they lead nowhere.
void watchProgress(const Console& console, double dt, PressureStage& stage) {
    stage.hopelessSteps = stage.stepCut && dt < HopelessStep ? stage.hopelessSteps + 1 : 0;
    if (stage.hopelessSteps > MostHopelessSteps) stopOnHopelessStep(console);
}

constexpr int MostSharings = 5;  // iterations that group rates are shared anew in; then they stand, to end

enum class Verdict { Converged, Forced, Cut, GoOn };

/// Where an iteration stands.
struct Progress {
    int it = 0;
    double DIFFP = 0.0;     // psi, largest change of the last solve
    bool switched = false;  // a well, behind the last solve
};

/// What the first solve of a step has left, by which that of the next step is measured.
void keepWhatFirstLeft(double share, const LinearSystem& system, PressureStage& stage) {
    stage.leftByFirst = euclideanNorm(system.rhs) / system.reference;
    stage.shareLeftByFirst = share;
}

/// The equations of a further iteration. In a run that hands on what is left over phases keep their sides
/// while few want to change them: one that goes to and fro would not let the iteration end. True when there
/// is nothing left to solve for.
bool assembleNext(const Progress& progress, Simulation& s) {
    if (!handsOn(s.options)) {
        assemble(false, Upstream::Found, s);
        return false;
    }
    const PressureMatrix& matrix = s.pressureWork.matrix;
    assemble(false, Upstream::Held, s);
    if (progress.it < FreeSides && astrayShare(matrix) > LargestAstray) assemble(false, Upstream::Found, s);
    const double share =
        shareOfHandedOn(s.options, measureLeftOver(s.clock.dt, s.grid, s.state, s.wells, matrix));
    if (progress.it == 1) keepWhatFirstLeft(share, matrix.system, s.pressure);
    return !progress.switched && share <= 1.0;
}

/// The change that the next iteration would make, by how this one has fallen short of the one before.
double foretoldChange(double DIFFP, double before) {
    return before > DIFFP ? DIFFP * (DIFFP / before) : DIFFP;
}

/// What is left of the volume balance behind the last change is handed on where amounts are carried, so that
/// a change need not be made when it is known to be too small.
Verdict judge(const Simulation& s, const Progress& progress, double before) {
    const auto [it, DIFFP, wellSwitched] = progress;
    const bool foretold = carriesAmounts(s.options) && !handsOn(s.options) && it > 1;
    const double change = foretold ? foretoldChange(DIFFP, before) : DIFFP;
    if (change < s.options.PressureTolerance && it < s.options.MaxPressureIterations && !wellSwitched)
        return Verdict::Converged;
    if (s.clock.dt < TinyStep && DIFFP < TinyStepDeltaP) return Verdict::Forced;
    const bool failed = it > FailedIteration || it >= s.options.MaxPressureIterations;
    return failed || !(DIFFP < DivergedDeltaP) ? Verdict::Cut : Verdict::GoOn;
}

/// To what share of the start a first solve goes. What comes behind it is solved whole. Beside gas the first
/// solve decides more than pressures.
double firstTolerance(const Simulation& s) {
    if (!handsOn(s.options)) return SolverTolerance;
    if (s.fluids.hasGas) return HandedOnResidual;
    const double room = s.pressure.shareLeftByFirst > 0.0 ? RoomShare / s.pressure.shareLeftByFirst : 1.0;
    const double found = FirstShare * std::max(1.0, room) * s.pressure.leftByFirst;
    return std::isfinite(found) ? std::clamp(found, HandedOnResidual, LoosestSolve) : HandedOnResidual;
}

/// One iteration: assemble, solve, move. `it` counts on, or is left above 999 by a failure.
Verdict iterate(Simulation& s, Progress& progress) {
    PressureWork& work = s.pressureWork;
    int& it = progress.it;
    if (it == 0) {
        assemble(!carriesAmounts(s.options), Upstream::Found, s);
        work.matrix.system.reference = euclideanNorm(work.matrix.system.rhs);
        work.matrix.system.tolerance = firstTolerance(s);
    } else {
        const bool done = assembleNext(progress, s);
        if (done) {
            settleRateWells(work.matrix, s.wells);
            return Verdict::Converged;
        }
        if (handsOn(s.options)) work.matrix.system.tolerance = HandedOnResidual;
    }
    solvePressure(s.console, s.options, s.outputs, s.clock.time, work.matrix.system, work.solver, it);
    solveMatrixCells(s.grid, s.connections, work.matrix, work.solver.solution);
    const LargestChange largest = largestChange(work.solver.solution, s.grid.NCELLS);
    progress.switched = it != FailedIteration && applySolution(largest.DIFFP, s, it);
    printIteration(s.console, s.grid, it, largest);
    it += 1;
    const double before = progress.DIFFP;
    progress.DIFFP = largest.DIFFP;
    return judge(s, progress, before);
}

void solveStep(Simulation& s) {
    Progress progress;
    clearBottomHoleResets(s.wells);
    resetHistory(s.pressureWork.history);
    for (;;) {
        const Verdict verdict = iterate(s, progress);
        if (verdict == Verdict::Forced) warn(s.console, "WARNING :: Force converge due to tiny tstep");
        if (verdict == Verdict::Converged || verdict == Verdict::Forced) break;
        if (verdict == Verdict::Cut && s.options.stepControl) {
            s.pressure.failed = true;
            return;
        }
        if (verdict == Verdict::Cut) {
            cutStep(s);
            resetHistory(s.pressureWork.history);
            progress = {};
            continue;
        }
        updateInPlace(s);
        if (progress.it <= MostSharings) {
            settleLiftLimits(s.units, s.fluids, s.state, s.pressure.AveragePressure, s.wells);
            shareGroupTargets(ShareTime::Iteration, s.units, s.fluids, s.state, s.pressure.AveragePressure,
                              s.wells);
        }
        updateRates(s);
    }
    both(s.console, "Iteration for pressure     : {}", progress.it);
}

double largestChangeOfStep(const GridModel& grid, const CellState& old, const CellState& now) {
    double largest = 0.0;
    for (CellId c = 1; c <= grid.NCELLS; ++c)
        if (grid.Active[c] != 0) largest = std::max(largest, std::abs(now.Pressure[c] - old.Pressure[c]));
    return largest;
}

void keepSolution(std::span<const double> solution, CellId cells, CellArray<double>& DeltaP) {
    DeltaP.assign(cells, 0.0);
    for (CellId c = 1; c <= cells; ++c) DeltaP[c] = solution[static_cast<std::size_t>(c) - 1];
}

/// Matrix gives what its volume balance leaves over. A large shape factor times potentials that all but agree
/// keeps no figure of it: what is open of the balance of the matrix cell, which that error is part of, goes
/// to its fractures as well.
void closeMatrixBalance(Simulation& s) {
    if (!s.grid.dual.isSet || !carriesAmounts(s.options)) return;
    assembleCells(false, Upstream::Held, s);
    for (CellId matrix = 1; matrix <= matrixCells(s.grid); ++matrix)
        if (s.connections.Trans(matrix, TransferDirection) > 0.0)
            s.velocity.TransferFlux[partnerOf(s.grid, matrix)] += s.pressureWork.matrix.MatRhs[matrix];
}

void finishStep(Simulation& s) {
    updateInPlace(s);
    updateRates(s);
    buildVelocity(s.pressureWork.matrix.upstream, s);
    closeMatrixBalance(s);
    PressureStage& stage = s.pressure;
    keepSolution(s.pressureWork.solver.solution, s.grid.NCELLS, stage.DeltaP);
    keepPressureRise(s.clock.dt, s.timeLevel, s.state, stage);
    stage.largestDeltaP = largestChangeOfStep(s.grid, s.timeLevel, s.state);
    if (carriesAmounts(s.options)) measureCarried(s.grid, s.state, stage.timeLevelAmounts, stage.carried);
    releaseHistory(s.pressureWork.history);
    releaseCoefficients(s.pressureWork.matrix);
    stage.fieldStands = true;
    both(s.console, "Reservoir average pressure : {} PSIA", number(stage.AveragePressure));
}

/// A step without a solve: properties of the present saturations. Rates and face fluxes of the last solve
/// stand, for what other mobilities would make of its pressures keeps no volume.
void refreshOnly(int firstCall, Simulation& s) {
    refreshProperties(s.grid, s.fluids, s.state);
    if (firstCall == 0) saveTimeLevel(s);
    if (!s.pressure.fieldStands) {
        updateRates(s);
        buildVelocity({}, s);
    }
    s.pressure.DeltaP.assign(s.grid.NCELLS, 0.0);
}

}  // namespace

void saveTimeLevel(Simulation& s) {
    PressureStage& stage = s.pressure;
    keepLevel(s.fluids.hasGas, s.state, s.timeLevel);
    if (s.clock.time <= 0.0) stage.carried = {};  // a run starts with what its saturations show
    measureWholeAmounts(s.grid, s.state, stage.carried, stage.timeLevelAmounts);
    if (s.fluids.hasGas) setFlashAmounts(stage.timeLevelAmounts, s.state.PoreVolume, stage.flashAmounts);
}

void returnToStepStart(const CellState& start, Simulation& simulation) {
    CellState& state = simulation.state;
    PressureStage& stage = simulation.pressure;
    state.Sw = start.Sw;
    state.So = start.So;
    state.Sg = start.Sg;
    state.Rs = start.Rs;
    state.Pb = start.Pb;
    state.tracer = start.tracer;
    state.SolidGas = start.SolidGas;
    if (simulation.fluids.hasGas)
        setFlashAmounts(stage.timeLevelAmounts, simulation.timeLevel.PoreVolume, stage.flashAmounts);
    updateInPlace(simulation);
    // What is carried beyond the saturations belongs to the restored ones now.
    if (carriesAmounts(simulation.options))
        measureCarried(simulation.grid, state, stage.timeLevelAmounts, stage.carried);
}

void PressureStep(Simulation& simulation, int firstCall, int doSolve) {
    simulation.pressure.moved = {};
    simulation.pressure.deficit = 0.0;
    if (doSolve == 0) {
        refreshOnly(firstCall, simulation);
        return;
    }
    const double start = cpuSeconds();
    printHead(simulation.console, simulation.clock);
    if (firstCall == 0)
        beginStep(simulation);
    else
        beginRepeatedPass(simulation);
    solveStep(simulation);
    if (simulation.pressure.failed) return;
    watchProgress(simulation.console, simulation.clock.dt, simulation.pressure);
    finishStep(simulation);
    simulation.pressure.processorSeconds = cpuSeconds() - start;
    both(simulation.console, "Request time for pressure  : {}", number(simulation.pressure.processorSeconds));
}

}  // namespace kvr
