#include "pressure/pair_tank.hpp"

#include "pressure/pair_stage.hpp"
#include "pressure/tank_arithmetic.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double FractureMove = 0.1;  // change of saturations in a substep that is aimed at, fractures ...
constexpr double MatrixMove = 0.05;   // ... and matrix
constexpr double MoveSlack = 2.0;     // times these a substep stands
constexpr double LeastPart = 1e-3;    // of the step, below which a substep stands whatever it moves
constexpr double MostGrowth = 4.0;    // of a substep against the one before
constexpr double Gamma = 0.29289321881345254;  // 1 - 1/sqrt(2), of the two stages

/// Moves the amounts of a balance on by h days of a flow.
void move(double h, const PairFlow& flow, PairBalance& balance) {
    add(h, balance.flows.inflow, balance.fracture);
    add(-h, flow.outflow, balance.fracture);
    add(h, flow.transfer, balance.fracture);
    add(-h, flow.transfer, balance.matrix);
}

bool isThere(const ConservedAmounts& amounts) {
    return amounts.water >= 0.0 && amounts.oil >= 0.0 && amounts.gas >= 0.0;
}

/// A substep as its two stages, by shares of its length.
struct PairSubstep {
    PairFlow first, second;
    double firstShare = 1.0 - Gamma;
};

/// Two implicit stages of the second order (Alexander 1977) over h days; one of the first where they would
/// ask a cell for more than it holds. False where no state is found: then with the flows of the last iterate.
bool solveSubstep(const PairBalance& start, double h, PairSubstep& substep) {
    PairUnknowns x = unknownsOf(start);
    if (solveStage(start, Gamma * h, x, substep.first)) {
        PairBalance second = start;
        move((1.0 - Gamma) * h, substep.first, second);
        substep.firstShare = 1.0 - Gamma;
        if (isThere(second.fracture) && isThere(second.matrix) &&
            solveStage(second, Gamma * h, x, substep.second))
            return true;
    }
    substep.firstShare = 0.0;
    x = unknownsOf(start);
    return solveStage(start, h, x, substep.second);
}

double changeOf(const PhaseState& before, const PhaseState& now) {
    return std::max(std::abs(now.Sw - before.Sw), std::abs(now.Sg - before.Sg));
}

/// An exchange that neither side is asked for more than it has.
ConservedAmounts availableTransfer(const PairBalance& balance, double h, ConservedAmounts transfer) {
    const auto bound = [h](double& rate, double fracture, double in, double matrix) {
        const double least = -(fracture / h + in);
        rate = std::clamp(rate, least, std::max(least, matrix / h));
    };
    const ConservedAmounts& in = balance.flows.inflow;
    bound(transfer.water, balance.fracture.water, in.water, balance.matrix.water);
    bound(transfer.oil, balance.fracture.oil, in.oil, balance.matrix.oil);
    bound(transfer.gas, balance.fracture.gas, in.gas, balance.matrix.gas);
    return transfer;
}

/// A stage of h days happens: both sides move on, and the means count it.
void advance(double h, double dt, PairFlow flow, std::span<BuoyantFlow> buoyant, PairBalance& balance,
             ConservedAmounts& missing, PairOutflow& out) {
    if (!(h > 0.0)) return;
    flow.transfer = availableTransfer(balance, h, flow.transfer);
    move(h, flow, balance);
    keepWhatIsThere(balance.fracture, missing);
    add(h / dt, flow.own, out.outflow.own);
    addMeans(h / dt, 0.0, false, flow.turned, buoyant);
    add(h / dt, flow.transfer, out.transferred);
}

}  // namespace

PairOutflow emptyPair(const FluidTables& tables, const TransferPair& pair, const TankFlows& flows, double dt,
                      const ConservedAmounts& fracture, const ConservedAmounts& matrix,
                      std::span<BuoyantFlow> buoyant) {
    PairBalance balance{tables,
                        pair,
                        flows,
                        buoyant,
                        regionTable(tables, pair.fracture.fluid.region),
                        regionTable(tables, pair.matrix.fluid.region),
                        flows.rest + flows.asked,
                        volumeOf(pair.fracture.fluid, flows.inflow),
                        fracture,
                        matrix};
    PairOutflow out;
    out.outflow.followed = 0.0;
    ConservedAmounts missing;
    PhaseState before = tankState(tables, balance.fractureTable, pair.fracture.fluid, fracture);
    PhaseState matrixBefore = tankState(tables, balance.matrixTable, pair.matrix.fluid, matrix);
    double h = dt;
    for (double left = dt; left > 0.0;) {
        h = std::min(h, left);
        PairSubstep substep;
        const bool found = solveSubstep(balance, h, substep);
        const double excess = found ? std::max(changeOf(before, substep.second.fracture) / FractureMove,
                                               changeOf(matrixBefore, substep.second.matrix) / MatrixMove)
                                    : HUGE_VAL;
        if (excess > MoveSlack && h > LeastPart * dt) {
            h = std::max(LeastPart * dt, h * std::clamp(1.0 / excess, 0.1, 0.5));
            continue;
        }
        advance(substep.firstShare * h, dt, substep.first, buoyant, balance, missing, out);
        advance((1.0 - substep.firstShare) * h, dt, substep.second, buoyant, balance, missing, out);
        left = h < left ? left - h : 0.0;
        before = substep.second.fracture;
        matrixBefore = substep.second.matrix;
        h = std::max(LeastPart * dt, h * std::clamp(1.0 / excess, 0.5, MostGrowth));
    }
    out.outflow.apart = out.outflow.own;
    accountForMissing(pair.fracture.fluid, flows, {}, dt, missing, buoyant, out.outflow);
    return out;
}

}  // namespace kvr
