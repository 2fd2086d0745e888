#include "pressure/component_step.hpp"

#include "base/messages.hpp"
#include "pressure/component_pressure.hpp"
#include "pressure/component_properties.hpp"
#include "pressure/component_transport.hpp"
#include "pressure/component_wells.hpp"
#include "pressure/pressure_lines.hpp"
#include "pressure/pressure_matrix.hpp"
#include "pressure/pressure_solve.hpp"
#include "pressure/solvers/system_products.hpp"
#include "pressure/velocity.hpp"
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

constexpr int SlopeIterations = 1;  // behind them the volumes a lb-mole stand
// What a well that draws by little brings up goes to and fro between its connections: behind the first
// iterations its mixture follows them by a share.
constexpr int PlainIterations = 3;
constexpr double LaterFollow = 0.3;
constexpr double SettledMiss = 1e-3;   // of a rate target ...
constexpr int MostSharings = 5;        // iterations that group rates are shared anew in
constexpr int MostSettling = 8;        // ... within so many iterations with pressures at rest
constexpr double LargestMove = 300.0;  // psi that one iteration may move a cell by

void refresh(VolumeSlopes slopes, Saturations saturations, Simulation& s) {
    refreshComponents(s.grid, s.fluids, s.units.VolumeFactor, slopes, saturations, s.components.stage,
                      s.state);
}

void updateRates(Simulation& s) {
    UpdateWellRates(s.units, s.grid, s.fluids, s.state, s.wells, s.pressure);
}

void updateWells(double follow, Simulation& s) {
    ComponentRun& run = s.components;
    yieldWells(s.units, run.surface, run.stage, s.state, follow, run.drawn, run.wells, s.wells);
    WellHead(s.grid, s.connections, s.fluids, s.state, s.wells);
}

void beginStep(Simulation& s) {
    s.pressure.failed = s.pressure.stepCut = false;
    refresh(VolumeSlopes::All, Saturations::Found, s);
    updateWells(1.0, s);
    initialiseBottomHolePressures(s.state, s.wells);
    clearBottomHoleResets(s.wells);
    settleLiftLimits(s.units, s.fluids, s.state, s.pressure.AveragePressure, s.wells);
    shareGroupTargets(ShareTime::StepBegin, s.units, s.fluids, s.state, s.pressure.AveragePressure, s.wells);
    holdMostRestrictive(s.console, s.units, s.fluids, s.state, s.pressure.AveragePressure, s.wells);
    updateRates(s);
    releaseWellsFromLimit(s.console, s.wells);
    updateRates(s);
}

void assemble(Simulation& s) {
    PressureMatrix& matrix = s.pressureWork.matrix;
    const ComponentStage& stage = s.components.stage;
    buildPattern(s.grid, s.connections, s.wells, matrix);
    accumulateComponents(s.clock.dt, s.grid, s.fluids, stage, s.state, matrix);
    flowComponents(s.units, s.grid, s.connections, stage, s.state, matrix);
    addWellTerms(s.units, s.fluids, s.state, s.pressure.AveragePressure, s.wells, matrix);
    fillSystem(s.units, s.grid, s.connections, s.fluids, s.state, s.pressure.AveragePressure, s.wells,
               matrix);
}

/// Moves pressures by the solution, or by the share of it that LargestMove allows, then wells that have left
/// their range. True when a well has been switched, so that the equations have changed.
bool applySolution(double DIFFP, Simulation& s, int& it) {
    const double share = DIFFP > LargestMove ? LargestMove / DIFFP : 1.0;
    updatePressures(s.grid, s.pressureWork.matrix, s.pressureWork.solver.solution, share, s.state, s.wells,
                    it);
    if (it == FailedIteration) return false;
    const bool switched = switchWellsAtLimit(s.console, s.wells);
    if (!repairBottomHolePressures(s.console, s.state, s.wells)) it = FailedIteration;
    return switched;
}

/// Largest share by which a rate-controlled producer gives another rate than its target. Where a well draws
/// by less than the tolerance of pressures, cells at rest do not mean that its rate is right.
double targetMiss(const WellRecord& wells) {
    double miss = 0.0;
    for (const Well& well : wells.wells) {
        if (well.shut || !isRateControlled(well) || isInjector(well) || well.TargetRate == 0.0) continue;
        miss = std::max(miss, std::abs(heldRate(well, well.WellControl) / well.TargetRate - 1.0));
    }
    return miss;
}

/// Newton on the volume balance; false where it does not end.
bool solveVolumes(Simulation& s) {
    PressureWork& work = s.pressureWork;
    int settling = 0;
    for (int it = 0; it < s.options.MaxPressureIterations;) {
        assemble(s);
        if (it == 0) work.matrix.system.reference = euclideanNorm(work.matrix.system.rhs);
        work.matrix.system.tolerance = SolverTolerance;
        solvePressure(s.console, s.options, s.outputs, s.clock.time, work.matrix.system, work.solver, it);
        if (it == FailedIteration) return false;
        const LargestChange largest = largestChange(work.solver.solution, s.grid.NCELLS);
        const bool switched = std::isfinite(largest.DIFFP) && applySolution(largest.DIFFP, s, it);
        printIteration(s.console, s.grid, it, largest);
        if (it == FailedIteration || !std::isfinite(largest.DIFFP)) return false;
        ++it;
        refresh(it <= SlopeIterations ? VolumeSlopes::All : VolumeSlopes::Pressure, Saturations::Held, s);
        updateWells(it <= PlainIterations ? 1.0 : LaterFollow, s);
        if (it <= MostSharings) {
            settleLiftLimits(s.units, s.fluids, s.state, s.pressure.AveragePressure, s.wells);
            shareGroupTargets(ShareTime::Iteration, s.units, s.fluids, s.state, s.pressure.AveragePressure,
                              s.wells);
        }
        updateRates(s);
        if (!(largest.DIFFP < s.options.PressureTolerance) || switched) continue;
        if (targetMiss(s.wells) < SettledMiss || ++settling > MostSettling) {
            both(s.console, "Iteration for pressure     : {}", it);
            return true;
        }
    }
    return false;
}

void keepSolved(WellRecord& wells) {
    for (Well& well : wells.wells) {
        well.solvedQo = well.WellQo;
        well.solvedQw = well.WellQw;
        well.solvedQg = well.WellQg;
    }
}

void keepSolution(Simulation& s) {
    s.pressure.DeltaP.assign(s.grid.NCELLS, 0.0);
    double largest = 0.0;
    const CellArray<double>& before = s.components.level.pressure;
    for (CellId c = 1; c <= s.grid.NCELLS; ++c) {
        if (s.grid.Active[c] == 0 || before.empty()) continue;
        s.pressure.DeltaP[c] = s.state.Pressure[c] - before[c];
        largest = std::max(largest, std::abs(s.pressure.DeltaP[c]));
    }
    s.pressure.largestDeltaP = largest;
}

}  // namespace

void refreshMixtures(Simulation& simulation) {
    refresh(VolumeSlopes::None, Saturations::Found, simulation);
}

void startComponents(Simulation& simulation) {
    ComponentRun& run = simulation.components;
    run.stage.set = componentSet(simulation.fluids, simulation.fluids.reservoirTemperature);
    run.surface = surfaceFluid(simulation.fluids);
    simulation.state.lacking.assign(simulation.grid.NCELLS, 0);
    fillPores(simulation.grid, simulation.fluids, simulation.units.VolumeFactor, simulation.state, run.stage);
    refresh(VolumeSlopes::All, Saturations::Found, simulation);
}

void takeComponentWells(Simulation& simulation) {
    ComponentRun& run = simulation.components;
    takeStreams(simulation.console, simulation.units, run.surface, simulation.schedule, simulation.wells,
                run.wells);
    yieldWells(simulation.units, run.surface, run.stage, simulation.state, 1.0, {}, run.wells,
               simulation.wells);
}

bool solveComponentFlow(Simulation& s) {
    printHead(s.console, s.clock);
    beginStep(s);
    if (!solveVolumes(s)) return false;
    BuildVelocityFromPressure(s.options, s.units, s.grid, s.connections, s.state, {}, s.velocity);
    UpdateWellVelocity(s.units, s.state, s.wells);
    keepSolved(s.wells);
    keepSolution(s);
    s.pressure.fieldStands = true;
    both(s.console, "Reservoir average pressure : {} PSIA", number(s.pressure.AveragePressure));
    takeSources(s.wells, s.components.wells, s.components.sources);
    return true;
}

void moveOnFlow(const ComponentMakeUp& makeUp, Simulation& s) {
    ComponentRun& run = s.components;
    keepSolvedMobilities(s.state, run.stage);
    leaveMeanMobilities(s.grid, run.stage, s.state);
    moveComponents(s.units, s.grid, s.connections, s.fluids, s.velocity, run.sources, makeUp, s.clock.dt,
                   run.stage, s.state, run.moved);
    rateWells(s.units, run.surface, s.clock.dt, run.sources, run.moved, run.wells, s.wells);
    s.clock.stepsSinceEvent += 1;
    s.clock.workDt = s.clock.dt;
}

bool componentStep(Simulation& s) {
    if (!solveComponentFlow(s)) return false;
    moveOnFlow({}, s);
    return true;
}

void keepComponentLevel(Simulation& simulation) {
    ComponentRun& run = simulation.components;
    run.level = {run.stage.amounts, run.stage.cells.flash, simulation.state.Pressure, run.wells};
}

void returnToComponentLevel(Simulation& simulation) {
    ComponentRun& run = simulation.components;
    run.stage.amounts = run.level.amounts;
    run.stage.cells.flash = run.level.flash;
    run.wells = run.level.wells;
    simulation.state.Pressure = run.level.pressure;
    refreshMixtures(simulation);
}

}  // namespace kvr
