#include "pressure/water_pair.hpp"

#include "fluid/saturation_functions.hpp"
#include "pressure/tank_arithmetic.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

/// What holds for one side over a stage.
struct WaterSide {
    const PairSide& side;
    double held = 0.0;                  // water at its start, of the pores
    double perPores = 0.0;              // water saturation by the water in the pores
    double rate = 0.0;                  // of the pores, by surface water a day over the stage
    double perMuW = 0.0, perMuO = 0.0;  // 1/cp
    double perBw = 0.0, perBo = 0.0;
};

/// A value and its slope by the unknown of its side.
struct Sloped {
    double at = 0.0, slope = 0.0;
};

/// One side at its unknown.
struct WaterState {
    double Sw = 0.0;
    Sloped water, oil;  // mobilities, 1/cp
    Sloped added;       // psi, to the pressure of water
};

/// Water out of the matrix, reservoir volume a day, with its slopes by the unknowns of both sides.
struct WaterTransfer {
    double flow = 0.0, byFracture = 0.0, byMatrix = 0.0;
};

WaterSide sideBehind(const PairSide& side, const ConservedAmounts& start, double h, double gain) {
    const TankFluid& fluid = side.fluid;
    const RecoveryFactors& factors = fluid.factors;
    const double factor = factors.Bw / fluid.poreVolume;
    const double volume = volumeOf(fluid, start) + gain;
    WaterSide on{side};
    on.held = factor * start.water;
    on.perPores = volume > 0.0 ? fluid.poreVolume / volume : HUGE_VAL;
    on.rate = factor * h;
    on.perMuW = 1.0 / fluid.MuW;
    on.perMuO = 1.0 / fluid.MuO;
    on.perBw = 1.0 / factors.Bw;
    on.perBo = 1.0 / factors.Bo;
    return on;
}

WaterState stateAt(const FluidTables& tables, const WaterSide& on, double x) {
    const TankFluid& fluid = on.side.fluid;
    WaterState state;
    const bool full = !(on.perPores * x < 1.0);
    state.Sw = full ? 1.0 : on.perPores * x;
    const double slope = full ? 0.0 : on.perPores;
    const WaterCurves curves = waterCurvesAtCell(tables, fluid.cell, fluid.region, state.Sw);
    state.water = {on.perMuW * curves.krw, on.perMuW * slope * curves.krwSlope};
    state.oil = {on.perMuO * curves.kro, on.perMuO * slope * curves.kroSlope};
    const HeightShare& height = on.side.waterShare;
    const double share = height.slope * (state.Sw - height.least);
    const double heightSlope = share > 0.0 && share < 1.0 ? height.slope : 0.0;
    state.added = {on.side.fullWater * std::clamp(share, 0.0, 1.0) - on.side.JFactor * curves.pcow,
                   slope * (on.side.fullWater * heightSlope - on.side.JFactor * curves.pcowSlope)};
    return state;
}

WaterTransfer transferAt(double total, double conductance, const WaterState& fracture,
                         const WaterState& matrix, double fractureSlope, double matrixSlope) {
    if (!(conductance > 0.0)) return {};
    const double h = matrix.added.at - fracture.added.at;
    // See phaseFlows: a phase comes out of the matrix where the total is more than with it at rest.
    const bool waterOut = total > -conductance * h * (h < 0.0 ? matrix : fracture).oil.at;
    const bool oilOut = total > conductance * h * (h > 0.0 ? matrix : fracture).water.at;
    const Sloped& water = (waterOut ? matrix : fracture).water;
    const Sloped& oil = (oilOut ? matrix : fracture).oil;
    const double sum = water.at + oil.at;
    if (!(sum > PairMobilityGuard)) {
        const bool out = total > 0.0;
        return {total * (out ? matrix : fracture).Sw, out ? 0.0 : total * fractureSlope,
                out ? total * matrixSlope : 0.0};
    }
    const double perSum = 1.0 / sum, fw = water.at * perSum, drive = total + conductance * oil.at * h;
    const double byWater = oil.at * perSum * perSum * drive;
    const double byOil = fw * (conductance * h - drive * perSum);
    const double byAdded = fw * conductance * oil.at;
    WaterTransfer transfer{fw * drive, -byAdded * fracture.added.slope, byAdded * matrix.added.slope};
    (waterOut ? transfer.byMatrix : transfer.byFracture) += byWater * water.slope;
    (oilOut ? transfer.byMatrix : transfer.byFracture) += byOil * oil.slope;
    return transfer;
}

/// Share of water in what leaves the fractures by their own mobilities.
Sloped ownShare(const WaterState& state, double slope) {
    const double sum = state.water.at + state.oil.at;
    if (!(sum > PairMobilityGuard)) return {state.Sw, slope};
    const double perSum = 1.0 / sum;
    return {state.water.at * perSum,
            (state.water.slope * state.oil.at - state.water.at * state.oil.slope) * (perSum * perSum)};
}

OwnExchange turnedAt(const PairBalance& balance, const WaterState& state, double move) {
    return turnedBy(pairOf(state.water.at + move * state.water.slope, state.oil.at + move * state.oil.slope),
                    balance.pair.fracture.fluid, 0.0, balance.buoyant);
}

/// A stage: what it is about and where it stands.
struct WaterStage {
    const PairBalance& balance;
    WaterSide fracture, matrix;
    double conductance = 0.0;
    WaterState inFracture{}, inMatrix{};
    WaterTransfer transfer{};
    Sloped own{};  // of the outflow, water by volume
    OwnExchange turned{};
};

/// Slope of a side's saturation by its unknown.
double saturationSlope(const WaterSide& side, const WaterState& state) {
    return state.Sw < 1.0 ? side.perPores : 0.0;
}

void lookAt(const PairUnknowns& x, WaterStage& stage) {
    const FluidTables& tables = stage.balance.tables;
    stage.inFracture = stateAt(tables, stage.fracture, x[0]);
    stage.inMatrix = stateAt(tables, stage.matrix, x[1]);
    const double fractureSlope = saturationSlope(stage.fracture, stage.inFracture);
    stage.transfer = transferAt(stage.balance.pair.total, stage.conductance, stage.inFracture, stage.inMatrix,
                                fractureSlope, saturationSlope(stage.matrix, stage.inMatrix));
    stage.own = ownShare(stage.inFracture, fractureSlope);
    if (!stage.balance.buoyant.empty()) stage.turned = turnedAt(stage.balance, stage.inFracture, 0.0);
}

/// Surface water of a reservoir volume of it in the exchange.
double waterPerVolume(const WaterStage& stage) {
    return (stage.transfer.flow > 0.0 ? stage.matrix : stage.fracture).perBw;
}

/// What the stage leaves open of the balances of both sides, of the pores.
struct Open {
    double fracture = 0.0, matrix = 0.0;
};
Open openOf(const WaterStage& stage, const PairUnknowns& x) {
    const PairBalance& balance = stage.balance;
    const double transfer = stage.transfer.flow * waterPerVolume(stage);
    const double out = balance.out * stage.own.at * stage.fracture.perBw + stage.turned.rest.water;
    return {x[0] - stage.fracture.held - stage.fracture.rate * (balance.flows.inflow.water - out + transfer),
            x[1] - stage.matrix.held + stage.matrix.rate * transfer};
}

/// Slope of what gravity puts in the place of oil in the outflow, surface water a day.
double turnedSlope(const WaterStage& stage) {
    if (stage.balance.buoyant.empty()) return 0.0;
    const OwnExchange beside = turnedAt(stage.balance, stage.inFracture, PairNewton::Difference);
    return (beside.rest.water - stage.turned.rest.water) / PairNewton::Difference;
}

/// Newton's move, to be taken off the unknowns; false where there is none.
bool moveOf(const WaterStage& stage, const Open& open, Open& move) {
    const double transfer = waterPerVolume(stage), rate = stage.fracture.rate;
    const double out = stage.balance.out * stage.own.slope * stage.fracture.perBw;
    const double a = 1.0 + rate * (out + turnedSlope(stage) - transfer * stage.transfer.byFracture);
    const double b = -rate * transfer * stage.transfer.byMatrix;
    const double c = stage.matrix.rate * transfer * stage.transfer.byFracture;
    const double d = 1.0 + stage.matrix.rate * transfer * stage.transfer.byMatrix;
    const double determinant = a * d - b * c;
    const double perDeterminant = 1.0 / determinant;
    move = {(d * open.fracture - b * open.matrix) * perDeterminant,
            (a * open.matrix - c * open.fracture) * perDeterminant};
    return determinant != 0.0 && std::isfinite(move.fracture) && std::isfinite(move.matrix);
}

double largestOf(const Open& open) {
    const double largest = std::max(std::abs(open.fracture), std::abs(open.matrix));
    return std::isfinite(open.fracture + open.matrix) ? largest : HUGE_VAL;
}

void writeFlow(const WaterStage& stage, PairFlow& flow) {
    const PairBalance& balance = stage.balance;
    flow.fracture.Sw = stage.inFracture.Sw;
    flow.fracture.So = 1.0 - flow.fracture.Sw;
    flow.matrix.Sw = stage.inMatrix.Sw;
    flow.matrix.So = 1.0 - flow.matrix.Sw;
    flow.own = {stage.own.at * stage.fracture.perBw, (1.0 - stage.own.at) * stage.fracture.perBo, 0.0};
    flow.turned = stage.turned;
    flow.outflow = flow.turned.rest;
    add(balance.out, flow.own, flow.outflow);
    const double oil = stage.conductance > 0.0 ? balance.pair.total - stage.transfer.flow : 0.0;
    flow.transfer = {stage.transfer.flow * waterPerVolume(stage),
                     oil * (oil > 0.0 ? stage.matrix : stage.fracture).perBo, 0.0};
}

bool iterate(WaterStage& stage, PairUnknowns& x) {
    lookAt(x, stage);
    Open open = openOf(stage, x);
    for (int count = 0; count < PairNewton::MostIterations; ++count) {
        if (largestOf(open) <= PairNewton::Balance) return true;
        Open move;
        if (!moveOf(stage, open, move)) return false;
        const double largest = largestOf(move);
        const double share = largest > PairNewton::LargestMove ? PairNewton::LargestMove / largest : 1.0;
        x[0] = std::max(0.0, x[0] - share * move.fracture);
        x[1] = std::max(0.0, x[1] - share * move.matrix);
        lookAt(x, stage);
        open = openOf(stage, x);
    }
    return largestOf(open) <= PairNewton::FairBalance;
}

}  // namespace

bool solveWaterStage(const PairBalance& balance, double h, PairUnknowns& x, PairFlow& flow) {
    const TransferPair& pair = balance.pair;
    const double gain = h * (balance.inVolume - balance.out + pair.total);
    WaterStage stage{balance, sideBehind(pair.fracture, balance.fracture, h, gain),
                     sideBehind(pair.matrix, balance.matrix, h, -h * pair.total), stageConductance(pair, h)};
    const bool found = iterate(stage, x);
    writeFlow(stage, flow);
    return found;
}

}  // namespace kvr
