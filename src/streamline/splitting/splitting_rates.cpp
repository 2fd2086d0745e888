#include "streamline/splitting/splitting_rates.hpp"

#include "base/threads.hpp"
#include "pressure/flow_order.hpp"
#include "pressure/transport_walk.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double RestChange = 1e-9;  // of a phase over what is left of the step: too little to limit it

/// Share of the exchange over a face that is left when the part along the velocity is taken out: 1 minus
/// the squared direction cosine of the mean velocity of the two cells on the axis of the face.
double acrossVelocity(const SplittingStage& stage, CellId i, CellId j, int face) {
    double square[3];
    double sum = 0.0;
    for (int axis = 0; axis < 3; ++axis) {
        const double v = 0.5 * (stage.meanVelocity.row(i)[axis] + stage.meanVelocity.row(j)[axis]);
        square[axis] = v * v;
        sum += square[axis];
    }
    return sum >= MachineEpsilon ? 1.0 - square[(face - 1) / 2] / sum : 1.0;
}

/// Rate at which a saturation changes; of a phase that is lost, per what is there.
double relativeRate(double saturation, double outflow) {
    if (outflow <= 0.0) return -outflow;
    return outflow / (saturation > MachineEpsilon ? std::min(saturation, 1.0) : 1.0);
}

/// Water that transport has moved out of a cell through a face, volume a day.
double waterOutflow(const Simulation& simulation, CellId cell, int face) {
    const FacePlace place = placeOf(simulation.connections, cell, face);
    return (place.cell == cell ? 1.0 : -1.0) * simulation.pressure.waterMoved(place.cell, place.axis);
}

double totalOutflow(const Simulation& simulation, CellId cell, int face) {
    return outflowThrough(simulation.connections, simulation.velocity.CellFaceFlux, cell, face);
}

/// What transport has moved out of a cell through a face.
ThroughFlow outflow(const Simulation& simulation, const SplittingStage& stage, CellId cell, int face) {
    ThroughFlow through;
    through.daysMoved = stage.daysMoved;
    through.buoyant = stage.buoyant;
    through.total = totalOutflow(simulation, cell, face);
    if (stage.daysMoved > 0.0 && simulation.pressure.waterMoved.width > 0)
        through.water = waterOutflow(simulation, cell, face);
    return through;
}

/// The cell or one across a working face has another state than at the last substep. Most of a field is
/// unswept or at rest, and its rates stand.
bool sawMotion(const SplittingStage& stage, int directions, CellId cell, const CellId* neighbour) {
    bool any = stage.moved[cell] != 0;
    for (int face = stage.firstFace; face <= directions; ++face)
        any = any || (neighbour[face - 1] > 0 && stage.moved[neighbour[face - 1]] != 0);
    return any;
}

/// How fast an exchange over a face pulls the capillary pressure of cell i back, volume a day per saturation:
/// T la lb / (la + lb) |dPc/dS| with the larger mobility of each phase.
double capillaryPull(const SplittingCell& i, const SplittingCell& j, double trans, const CellWork& work) {
    const double oil = std::max(i.lambdaO, j.lambdaO);
    const auto pull = [&](double other, double slope) {
        return other + oil > 0.0 ? trans * other * oil / (other + oil) * slope : 0.0;
    };
    return pull(std::max(i.lambdaW, j.lambdaW), work.slopeW) +
           pull(std::max(i.lambdaG, j.lambdaG), work.slopeG);
}

/// Share of an exchange over a face that both cells can give: each component by the cell that it leaves.
double givenShare(const GivenShare& i, const GivenShare& j, const ConservedAmounts& passing) {
    const auto byGiver = [](double amount, double own, double others) {
        if (amount == 0.0) return 1.0;
        return amount > 0.0 ? own : others;
    };
    return std::min({byGiver(passing.water, i.water, j.water), byGiver(passing.oil, i.oil, j.oil),
                     byGiver(passing.gas, i.gas, j.gas)});
}

void addLeaving(const ConservedAmounts& passing, ConservedAmounts& leaving) {
    leaving.water += std::max(0.0, passing.water);
    leaving.oil += std::max(0.0, passing.oil);
    leaving.gas += std::max(0.0, passing.gas);
}

double shareOf(double held, double asked) {
    return asked > held ? std::max(0.0, held) / asked : 1.0;
}

/// What a cell can give of what it is asked for in `dt` days.
GivenShare whatItGives(const Simulation& simulation, CellId cell, double dt, const CellWork& work) {
    const double days = dt / simulation.state.PoreVolume[cell];
    return {shareOf(work.amount.water - work.immobileWater, days * work.leaving.water),
            shareOf(work.amount.oil - work.immobileOil, days * work.leaving.oil),
            shareOf(work.amount.gas, days * work.leaving.gas)};
}

}  // namespace

double formRates(const Simulation& simulation, CellId cell, double left, SplittingStage& stage) {
    CellWork& work = stage.own[cell];
    if (!work.working) return 0.0;
    const bool hasGas = simulation.fluids.hasGas;
    const CellArray<std::uint8_t>& gasCells = simulation.pressure.gasCells;
    const bool project = stage.projection && simulation.mapping.CellVisited[cell] != 0;
    const CellId* neighbour = simulation.connections.Neighbour.row(cell);
    const int directions = simulation.connections.flowDirections;
    if (!sawMotion(stage, directions, cell, neighbour)) return work.largestRate;
    const double* trans = simulation.connections.Trans.row(cell);
    const double* depth = simulation.connections.DepthDiff.row(cell);
    ExchangeRates out;
    work.leaving = {};
    double pull = 0.0;
    for (int face = stage.firstFace; face <= directions; ++face) {
        const CellId j = neighbour[face - 1];
        if (j <= 0 || !stage.own[j].working) continue;
        double t = trans[face - 1] * simulation.units.FlowUnit;
        if (project && face <= FaceCount && simulation.mapping.CellVisited[j] != 0)
            t *= acrossVelocity(stage, cell, j, face);
        ThroughFlow through = stage.throughFlow ? outflow(simulation, stage, cell, face) : ThroughFlow{};
        through.freeGas = hasGas && (gasCells.empty() || meetsFreeGas(gasCells, cell, j));
        ExchangeRates passing;
        addFaceExchange(stage.shared[cell], stage.shared[j], t, depth[face - 1] / SquareInchesPerSquareFoot,
                        hasGas, through, passing);
        if (stage.bounded) scale(givenShare(stage.given[cell], stage.given[j], passing.amount), passing);
        add(passing, out);
        addLeaving(passing.amount, work.leaving);
        if (stage.waterRate.width > 0 && isLowSide(simulation.connections, cell, face))
            stage.waterRate(cell, axisOf(face)) = passing.amount.water;
        if (stage.capillary) pull += capillaryPull(stage.shared[cell], stage.shared[j], t, work);
    }
    const double poreVolume = simulation.state.PoreVolume[cell];
    work.rate = {-out.amount.water / poreVolume, -out.amount.oil / poreVolume, -out.amount.gas / poreVolume};
    work.largestRate = std::max({relativeRate(work.phases.Sw, out.volumeW / poreVolume),
                                 relativeRate(work.phases.So, out.volumeO / poreVolume),
                                 relativeRate(work.phases.Sg, out.volumeG / poreVolume)});
    if (work.largestRate * left > RestChange)
        work.largestRate = std::max(work.largestRate, pull / poreVolume);
    return work.largestRate;
}

void boundByContents(const Simulation& simulation, double dt, double left, SplittingStage& stage) {
    const CellId count = simulation.grid.NCELLS;
    bool bounded = false;
#pragma omp parallel for schedule(static) if (count >= ParallelHeavyCells) reduction(|| : bounded)
    for (CellId cell = 1; cell <= count; ++cell) {
        if (!stage.own[cell].working) continue;
        GivenShare& given = stage.given[cell];
        given = whatItGives(simulation, cell, dt, stage.own[cell]);
        const bool lacking = std::min({given.water, given.oil, given.gas}) < 1.0;
        stage.own[cell].lacking = lacking;
        stage.moved[cell] = lacking ? 1 : 0;
        bounded = bounded || lacking;
    }
    if (!bounded) return;
    stage.bounded = true;
#pragma omp parallel for schedule(static) if (count >= ParallelHeavyCells)
    for (CellId cell = 1; cell <= count; ++cell) formRates(simulation, cell, left, stage);
    stage.bounded = false;
}

}  // namespace kvr
