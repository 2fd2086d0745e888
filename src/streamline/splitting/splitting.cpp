#include "streamline/splitting/splitting.hpp"

#include "base/stopwatch.hpp"
#include "base/threads.hpp"
#include "fluid/black_oil.hpp"
#include "fluid/saturation_functions.hpp"
#include "pressure/cell_transport.hpp"
#include "pressure/properties.hpp"
#include "pressure/tracer_transport.hpp"
#include "streamline/splitting/splitting_rates.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double LargestSubstep = 100.0;  // days
constexpr double FlatBedLimit = 1e-8;     // ft; a model with smaller lateral differences lies flat
constexpr int ProgressInterval = 50;      // substeps between progress lines
constexpr double HalfStep = 0.5;
constexpr double SlopeStep = 1e-3;  // of a saturation, for slopes of capillary pressures

double reciprocal(double factor) {
    return factor > 0.0 ? 1.0 / factor : 0.0;
}

/// Steepest slope of a capillary pressure near a saturation.
template <class Function>
double steepestSlope(const Function& pressureAt, double saturation, double here) {
    const double up = std::abs(pressureAt(saturation + SlopeStep) - here);
    return std::max(up, std::abs(pressureAt(saturation - SlopeStep) - here)) / SlopeStep;
}

/// Capillary pressures of a cell at its saturations, with their slopes.
void refreshCapillary(const FluidTables& tables, int region, double scale, CellWork& work,
                      SplittingCell& shared) {
    const auto pcow = [&](double s) { return scale * PcowFn(tables, s, region); };
    shared.pcow = pcow(work.phases.Sw);
    work.slopeW = steepestSlope(pcow, work.phases.Sw, shared.pcow);
    if (!tables.hasGas) return;
    const auto pcog = [&](double s) { return scale * PcogFn(tables, s, region); };
    shared.pcog = pcog(work.phases.Sg);
    work.slopeG = steepestSlope(pcog, work.phases.Sg, shared.pcog);
}

/// Mobilities, capillary pressures and Rs of a cell at its saturations.
void refreshCell(const Simulation& simulation, CellId cell, SplittingStage& stage) {
    const FluidTables& tables = simulation.fluids;
    const int region = simulation.grid.SATNUM[cell];
    CellWork& work = stage.own[cell];
    SplittingCell& shared = stage.shared[cell];
    const RelPerms kr = relPermsAtCell(tables, cell, region, work.phases.Sw, work.phases.Sg);
    shared.lambdaW = kr.w * work.inverseMuW;
    shared.lambdaO = kr.o * work.inverseMuO;
    shared.lambdaG = tables.hasGas ? kr.g * work.inverseMuG : 0.0;
    shared.Rs = work.phases.Rs;
    if (stage.capillary) refreshCapillary(tables, region, simulation.grid.JFactor[cell], work, shared);
}

/// Everything of a cell at the start of the stage. Oil properties are looked up at the bubble point that
/// transport has left; the others depend on pressure alone and stand in the state.
void loadCell(const Simulation& simulation, CellId cell, SplittingStage& stage) {
    const CellState& state = simulation.state;
    const FluidTables& tables = pvtAt(simulation.fluids, cell);
    CellWork& work = stage.own[cell];
    work.working = simulation.grid.Active[cell] != 0 && state.PoreVolume[cell] > MachineEpsilon;
    if (!work.working) return;
    const OilProperties oil = usableOilProperties(tables, state.Pressure[cell], state.Pb[cell]);
    work.phases = {state.Sw[cell], state.So[cell], state.Sg[cell], state.Rs[cell], state.Pb[cell]};
    work.Bo = oil.Bo;
    if (tables.hasGas) {
        const double saturated = SolutionRs(tables, state.Pressure[cell]);
        work.saturatedRs = allowedRs(state, cell, saturated);
        work.limitsRs = work.saturatedRs < saturated;
    }
    work.inverseMuW = reciprocal(state.MuW[cell]);
    work.inverseMuO = reciprocal(oil.MuO);
    work.inverseMuG = reciprocal(state.MuG[cell]);
    SplittingCell& shared = stage.shared[cell];
    shared.inverseBw = reciprocal(state.Bw[cell]);
    shared.inverseBo = reciprocal(work.Bo);
    shared.inverseBg = reciprocal(state.Bg[cell]);
    if (simulation.options.lineGravity) {
        shared.rhoW = state.RhoW[cell];
        shared.rhoO = oilDensityAt(tables, work.phases.Rs, work.Bo);
        shared.rhoG = state.RhoG[cell];
    }
    work.amount.water = work.phases.Sw * shared.inverseBw;
    work.amount.oil = work.phases.So * shared.inverseBo;
    work.amount.gas = work.phases.Sg * shared.inverseBg + work.phases.Rs * work.amount.oil;
    const SaturationTable& table = regionTable(simulation.fluids, simulation.grid.SATNUM[cell]);
    work.immobileWater = std::min(work.amount.water, table.ConnateSw * shared.inverseBw);
    if (!simulation.fluids.hasGas || !(state.Sg[cell] > SmallestFreeGas))
        work.immobileOil = std::min(work.amount.oil, table.ResidualSo * shared.inverseBo);
    if (stage.carries) stage.start[cell] = work.amount;
    refreshCell(simulation, cell, stage);
}

void loadVelocities(const Simulation& simulation, SplittingStage& stage) {
    const CellId count = simulation.grid.NCELLS;
    stage.meanVelocity.assign(count, 3, 0.0);
#pragma omp parallel for schedule(static) if (count >= ParallelHeavyCells)
    for (CellId cell = 1; cell <= count; ++cell) {
        const double* face = simulation.velocity.CellFaceVelocity.row(cell);
        for (int axis = 0; axis < 3; ++axis)
            stage.meanVelocity.row(cell)[axis] = 0.5 * (face[2 * axis] + face[2 * axis + 1]);
    }
}

/// Amounts that saturations do not show go from stage to stage.
bool handsAmountsOn(const Simulation& simulation) {
    return carriesAmounts(simulation.options) && !simulation.pressure.carried.water.empty();
}

SplittingStage beginStage(Simulation& simulation) {
    SplittingStage stage;
    const RunOptions& options = simulation.options;
    const CellId count = simulation.grid.NCELLS;
    stage.capillary = options.lineCapillary && (simulation.fluids.PcowSpan > CapillarySpanLimit ||
                                                simulation.fluids.PcogSpan > CapillarySpanLimit);
    if (simulation.flatBedValue < 0.0)
        simulation.flatBedValue = largestLateralDepthDifference(simulation.grid, simulation.connections);
    if (!stage.capillary && simulation.flatBedValue < FlatBedLimit) stage.firstFace = 5;
    stage.projection = options.orthogonalProjection && !simulation.mapping.CellVisited.empty() &&
                       simulation.velocity.CellFaceVelocity.width >= 6;
    stage.carries = handsAmountsOn(simulation);
    // Lines that take gravity along themselves leave nothing of their flow to correct.
    stage.throughFlow = stage.carries && !stage.projection && simulation.velocity.CellFaceFlux.width > 0 &&
                        (simulation.fluids.hasGas || exchangesAhead(simulation));
    stage.buoyant = gravityInTransport(simulation);
    stage.shared.assign(count, {});
    stage.own.assign(count, {});
    stage.moved.assign(count, 1);
    stage.given.assign(count, {});
    if (stage.carries) stage.start.assign(count, {});
    if (stage.projection) loadVelocities(simulation, stage);
    if (stage.carries && simulation.state.tracer.width > 0) {
        stage.waterRate.assign(count, flowAxes(simulation.connections), 0.0);
        stage.waterPassed.assign(count, flowAxes(simulation.connections), 0.0);
    }
#pragma omp parallel for schedule(static) if (count >= ParallelHeavyCells)
    for (CellId cell = 1; cell <= count; ++cell) loadCell(simulation, cell, stage);
    return stage;
}

bool unchanged(const ConservedAmounts& rate) {
    return rate.water == 0.0 && rate.oil == 0.0 && rate.gas == 0.0;
}

/// The state from the amounts; without a gas phase Rs and bubble point stand.
PhaseState recoverCell(const Simulation& simulation, CellId cell, const CellWork& work) {
    const FluidTables& tables = pvtAt(simulation.fluids, cell);
    const SaturationTable& table = regionTable(simulation.fluids, simulation.grid.SATNUM[cell]);
    const bool keepEndPoints = simulation.options.keepIrreducibleSaturation;
    const CellState& held = simulation.state;
    const RecoveryFactors factors{held.Pressure[cell], held.Bw[cell], work.Bo, held.Bg[cell], work.limitsRs};
    if (tables.hasGas) {
        return recoverState(tables, table, keepEndPoints, factors, work.saturatedRs, work.amount);
    }
    PhaseState state = recoverState(tables, table, keepEndPoints, factors, work.amount);
    state.Rs = work.phases.Rs;
    state.Pb = work.phases.Pb;
    return state;
}

/// Advances the amounts of a cell and recovers its state; a cell without exchange stays as it is, as does
/// one whose recovery is not a number.
void advanceCell(const Simulation& simulation, CellId cell, double dt, SplittingStage& stage) {
    CellWork& work = stage.own[cell];
    stage.moved[cell] = work.lacking ? 1 : 0;  // rates next to it are those of what it could give
    if (!work.working || unchanged(work.rate)) return;
    work.amount.water += dt * work.rate.water;
    work.amount.oil += dt * work.rate.oil;
    work.amount.gas += dt * work.rate.gas;
    const PhaseState next = recoverCell(simulation, cell, work);
    if (!std::isfinite(next.Sw + next.So + next.Sg)) return;
    work.phases = next;
    stage.moved[cell] = 1;
    refreshCell(simulation, cell, stage);
}

/// One substep of at most `left` days; returns its length.
double substep(const Simulation& simulation, double left, SplittingStage& stage) {
    const CellId count = simulation.grid.NCELLS;
    double rate = 0.0;
#pragma omp parallel for schedule(static) if (count >= ParallelHeavyCells) reduction(max : rate)
    for (CellId cell = 1; cell <= count; ++cell)
        rate = std::max(rate, formRates(simulation, cell, left, stage));
    const double dt = splittingSubstep(simulation.options, rate, left);
    boundByContents(simulation, dt, left, stage);
#pragma omp parallel for schedule(static) if (count >= ParallelHeavyCells)
    for (CellId cell = 1; cell <= count; ++cell) advanceCell(simulation, cell, dt, stage);
    for (std::size_t n = 0; n < stage.waterRate.slots.size(); ++n)
        stage.waterPassed.slots[n] += dt * stage.waterRate.slots[n];
    return dt;
}

/// Adds what the stage has brought into each cell, and keeps it as a rate over the `days` of the step.
void addExchanged(const SplittingStage& stage, double days, const CellArray<double>& poreVolume,
                  CellAmounts& amounts, CellAmounts& rate) {
    if (!stage.continues) sizeAmounts(poreVolume.count(), rate);
    const auto add = [&](double gain, double& amount, double& gainADay) {
        amount += gain;
        gainADay = (stage.continues ? gainADay : 0.0) + gain / days;
    };
    for (CellId cell = 1; cell <= poreVolume.count(); ++cell) {
        const CellWork& work = stage.own[cell];
        if (!work.working) continue;
        const ConservedAmounts& start = stage.start[cell];
        const double pores = poreVolume[cell];
        add(pores * (work.amount.water - start.water), amounts.water[cell], rate.water[cell]);
        add(pores * (work.amount.oil - start.oil), amounts.oil[cell], rate.oil[cell]);
        add(pores * (work.amount.gas - start.gas), amounts.gas[cell], rate.gas[cell]);
    }
}

/// Tracers go with the water that cells have exchanged, net over the stage.
void exchangeTracers(const SplittingStage& stage, const CellArray<double>& before, Simulation& simulation) {
    if (stage.waterPassed.width == 0) return;
    WaterMovement movement;
    for (CellId cell = 1; cell <= before.count(); ++cell)
        for (int axis = 1; axis <= stage.waterPassed.width; ++axis) {
            const double volume = stage.waterPassed(cell, axis);
            const CellId other = simulation.connections.Neighbour(cell, directionOfAxis(axis));
            if (volume == 0.0 || other <= 0) continue;
            movement.passages.push_back(
                {volume > 0.0 ? cell : other, volume > 0.0 ? other : cell, std::abs(volume)});
        }
    moveTracers(movement, simulation.wells, simulation.fluids.tracerNames, before, simulation.state.tracer);
}

/// What is there but next to nothing is lifted to the smallest amount that counts.
double liftTiny(double saturation) {
    return saturation > 0.0 && saturation < MachineEpsilon ? MachineEpsilon : saturation;
}

void writeBack(const SplittingStage& stage, Simulation& simulation) {
    CellState& state = simulation.state;
    const CellId count = simulation.grid.NCELLS;
#pragma omp parallel for schedule(static) if (count >= ParallelHeavyCells)
    for (CellId cell = 1; cell <= count; ++cell) {
        const CellWork& work = stage.own[cell];
        if (!work.working) continue;
        state.Sw[cell] = liftTiny(work.phases.Sw);
        state.So[cell] = liftTiny(work.phases.So);
        state.Sg[cell] = liftTiny(work.phases.Sg);
        state.Rs[cell] = work.phases.Rs;
        state.Pb[cell] = work.phases.Pb;
    }
}

/// The states into the cells; in a run that carries amounts also what these do not show of the amounts.
void finishStage(const SplittingStage& stage, Simulation& simulation) {
    if (!stage.carries) return writeBack(stage, simulation);
    CellAmounts whole;
    measureWholeAmounts(simulation.grid, simulation.state, simulation.pressure.carried, whole);
    exchangeTracers(stage, whole.water, simulation);
    addExchanged(stage, simulation.clock.workDt, simulation.state.PoreVolume, whole,
                 simulation.pressure.exchanged);
    writeBack(stage, simulation);
    refreshProperties(simulation.grid, simulation.fluids, simulation.state);
    measureCarried(simulation.grid, simulation.state, whole, simulation.pressure.carried);
}

/// Substeps until the days are over.
void runStage(double days, const Simulation& simulation, SplittingStage& stage) {
    int steps = 0;
    for (double left = days; left > 0.0;) {
        const double dt = substep(simulation, left, stage);
        left = dt < left ? left - dt : 0.0;
        if (++steps % ProgressInterval == 0) {
            both(simulation.console, " Pc_Grv Finished -> {}% ITE {} STEP {}",
                 number(100.0 * (days - left) / days, 6), steps, number(dt));
        }
    }
}

}  // namespace

double splittingSubstep(const RunOptions& options, double rate, double left) {
    double dt = rate > 0.0 ? options.cflGravity / rate : LargestSubstep;
    dt = std::max(dt, options.minCflgStep);
    return std::min({dt, LargestSubstep, left});
}

double largestLateralDepthDifference(const GridModel& grid, const ConnectionTable& connections) {
    constexpr int LateralFaces = 4;
    double largest = 0.0;
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        for (int face = 1; face <= LateralFaces; ++face)
            largest = std::max(largest, std::abs(connections.DepthDiff(cell, face)));
    }
    for (const FurtherConnection& further : connections.further)
        largest = std::max(largest, std::abs(connections.DepthDiff(further.first, further.fromFirst)));
    return largest;
}

bool exchangesAhead(const Simulation& simulation) {
    return handsAmountsOn(simulation) && !simulation.options.orthogonalProjection &&
           !simulation.fluids.hasGas;
}

void exchangeAheadOfTransport(Simulation& simulation) {
    if (!exchangesAhead(simulation)) return;
    SplittingStage stage = beginStage(simulation);
    runStage(HalfStep * simulation.clock.workDt, simulation, stage);
    finishStage(stage, simulation);
}

void OSPLIT_GRVANDPC_GENERAL2(Simulation& simulation) {
    const Console& console = simulation.console;
    const double wallStart = wallSeconds();
    lineToBoth(console, "-- Saturation Calculation: Grv&Pc By Osplit --");
    SplittingStage stage = beginStage(simulation);
    stage.continues = exchangesAhead(simulation);
    stage.daysMoved = stage.continues ? 1.0 / HalfStep : 1.0;
    runStage((stage.continues ? HalfStep : 1.0) * simulation.clock.workDt, simulation, stage);
    finishStage(stage, simulation);
    simulation.pressure.waterMoved = DirectionArray<double>();
    simulation.pressure.gasCells = CellArray<std::uint8_t>();
    std::fill(simulation.mapping.CellVisited.slots.begin(), simulation.mapping.CellVisited.slots.end(),
              std::uint8_t{0});
    both(console, "time elapsed Capillary&Gravity : {}", number(wallSeconds() - wallStart));
}

}  // namespace kvr
