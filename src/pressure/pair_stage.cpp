#include "pressure/pair_stage.hpp"

#include "fluid/saturation_functions.hpp"
#include "pressure/tank_arithmetic.hpp"
#include "pressure/water_pair.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>

namespace kvr {

namespace {

constexpr std::size_t Components = 3;
constexpr double MostTurns = 1e4;  // of the pores by a psi of difference and 1/cp in a stage: beyond it both
                                   // sides are in balance to rounding

/// One side of a pair in a state.
struct SideState {
    PhaseState state;
    ByPhase mobility{};  // 1/cp
    ByPhase added{};     // psi, beside the pressure of oil
};

SideState sideState(const FluidTables& tables, const PairSide& side, const PhaseState& state) {
    const TankFluid& fluid = side.fluid;
    const RelPerms kr = relPermsAtCell(tables, fluid.cell, fluid.region, state.Sw, state.Sg);
    SideState at;
    at.state = state;
    at.mobility = {kr.w / fluid.MuW, kr.o / fluid.MuO, tables.hasGas ? kr.g / fluid.MuG : 0.0};
    at.added[0] = side.fullWater * shareAt(side.waterShare, state.Sw) -
                  side.JFactor * PcowFn(tables, state.Sw, fluid.region);
    if (tables.hasGas)
        at.added[2] = side.fullGas * shareAt(side.gasShare, state.Sg) +
                      side.JFactor * PcogFn(tables, state.Sg, fluid.region);
    return at;
}

/// Surface amounts of reservoir volumes of the phases out of a side.
ConservedAmounts surfaceOf(const PairSide& side, const PhaseState& state, const ByPhase& volume) {
    const RecoveryFactors& factors = side.fluid.factors;
    const double oil = volume[1] / factors.Bo;
    return {volume[0] / factors.Bw, oil, volume[2] / factors.Bg + state.Rs * oil};
}

/// Volumes of the phases a day out of the matrix. None is mobile where they come from: false.
bool phaseFlows(const TransferPair& pair, double conductance, const SideState& fracture,
                const SideState& matrix, ByPhase& flow) {
    ByPhase h{}, lambda{};
    for (std::size_t p = 0; p < h.size(); ++p) h[p] = matrix.added[p] - fracture.added[p];
    const double total = pair.total / conductance;
    // The sum of the flows rises with d, so phase p comes out of the matrix where the total is more than the
    // sum at the d that holds it still.
    double sum = 0.0, pull = 0.0;
    for (std::size_t p = 0; p < h.size(); ++p) {
        double still = 0.0;
        for (std::size_t k = 0; k < h.size(); ++k) {
            const double drive = h[k] - h[p];
            still += (drive > 0.0 ? matrix.mobility[k] : fracture.mobility[k]) * drive;
        }
        lambda[p] = total > still ? matrix.mobility[p] : fracture.mobility[p];
        sum += lambda[p];
        pull += lambda[p] * h[p];
    }
    if (!(sum > PairMobilityGuard)) return false;
    const double d = (total - pull) / sum;
    for (std::size_t p = 0; p < h.size(); ++p) flow[p] = conductance * lambda[p] * (d + h[p]);
    return true;
}

ByPhase partOf(bool positive, ByPhase flow) {
    for (double& volume : flow)
        if ((volume > 0.0) != positive) volume = 0.0;
    return flow;
}

ConservedAmounts transferBetween(const TransferPair& pair, double conductance, const SideState& fracture,
                                 const SideState& matrix) {
    if (!(conductance > 0.0)) return {};
    ByPhase flow{};
    if (!phaseFlows(pair, conductance, fracture, matrix, flow)) {
        const PhaseState& from = pair.total > 0.0 ? matrix.state : fracture.state;
        flow = {pair.total * from.Sw, pair.total * from.So, pair.total * from.Sg};
    }
    ConservedAmounts sum = surfaceOf(pair.matrix, matrix.state, partOf(true, flow));
    add(1.0, surfaceOf(pair.fracture, fracture.state, partOf(false, flow)), sum);
    return sum;
}

/// What fills the pores of a side, of each component: the scales of the unknowns.
ByPhase poresOf(const PairSide& side) {
    const RecoveryFactors& factors = side.fluid.factors;
    const double pores = side.fluid.poreVolume;
    return {pores / factors.Bw, pores / factors.Bo, pores / factors.Bg};
}

/// What flows in a state of the pair, and the state that it hangs on.
struct StageState {
    SideState fracture, matrix;
    PairFlow flow;
};

ConservedAmounts amountsIn(const PairSide& side, const double* unknown) {
    const ByPhase pores = poresOf(side);
    return {unknown[0] * pores[0], unknown[1] * pores[1], unknown[2] * pores[2]};
}

void setFracture(const PairBalance& balance, const PairUnknowns& x, StageState& at) {
    const PairSide& side = balance.pair.fracture;
    const PhaseState state =
        tankState(balance.tables, balance.fractureTable, side.fluid, amountsIn(side, x.data()));
    at.fracture = sideState(balance.tables, side, state);
    at.flow.fracture = state;
    at.flow.own = makeUpOf(side.fluid, state, balance.tables.hasGas, at.fracture.mobility);
    at.flow.turned = turnedOwn(balance.tables, side.fluid, state, balance.buoyant);
    at.flow.outflow = at.flow.turned.rest;
    add(balance.out, at.flow.own, at.flow.outflow);
}

void setMatrix(const PairBalance& balance, const PairUnknowns& x, StageState& at) {
    const PairSide& side = balance.pair.matrix;
    at.flow.matrix =
        tankState(balance.tables, balance.matrixTable, side.fluid, amountsIn(side, x.data() + Components));
    at.matrix = sideState(balance.tables, side, at.flow.matrix);
}

void setTransfer(const PairBalance& balance, double h, StageState& at) {
    at.flow.transfer =
        transferBetween(balance.pair, stageConductance(balance.pair, h), at.fracture, at.matrix);
}

StageState stateAt(const PairBalance& balance, double h, const PairUnknowns& x) {
    StageState at;
    setFracture(balance, x, at);
    setMatrix(balance, x, at);
    setTransfer(balance, h, at);
    return at;
}

/// The same where one unknown has changed.
StageState stateBeside(const PairBalance& balance, double h, const PairUnknowns& x, std::size_t changed,
                       StageState at) {
    if (changed < Components)
        setFracture(balance, x, at);
    else
        setMatrix(balance, x, at);
    setTransfer(balance, h, at);
    return at;
}

ByPhase asPhases(const ConservedAmounts& amounts) {
    return {amounts.water, amounts.oil, amounts.gas};
}

/// What a stage of h days leaves open of the balances, of the pores.
PairUnknowns residualOf(const PairBalance& balance, double h, const PairUnknowns& x, const PairFlow& flow) {
    const ByPhase out = asPhases(flow.outflow), in = asPhases(balance.flows.inflow);
    const ByPhase transfer = asPhases(flow.transfer);
    const ByPhase fracture = asPhases(balance.fracture), matrix = asPhases(balance.matrix);
    const ByPhase fracturePores = poresOf(balance.pair.fracture), matrixPores = poresOf(balance.pair.matrix);
    PairUnknowns residual{};
    for (std::size_t c = 0; c < Components; ++c) {
        residual[c] = x[c] - (fracture[c] + h * (in[c] - out[c] + transfer[c])) / fracturePores[c];
        residual[Components + c] = x[Components + c] - (matrix[c] - h * transfer[c]) / matrixPores[c];
    }
    return residual;
}

double largestOf(const PairUnknowns& values) {
    double largest = 0.0;
    for (const double value : values) {
        if (!std::isfinite(value)) return HUGE_VAL;
        largest = std::max(largest, std::abs(value));
    }
    return largest;
}

using Slopes = std::array<PairUnknowns, MostPairUnknowns>;

/// b becomes the solution of a x = b, by elimination with row pivots; false where there is none.
bool solveSmall(Slopes& a, PairUnknowns& b) {
    constexpr std::size_t n = MostPairUnknowns;
    for (std::size_t k = 0; k < n; ++k) {
        std::size_t pivot = k;
        for (std::size_t r = k + 1; r < n; ++r)
            if (std::abs(a[r][k]) > std::abs(a[pivot][k])) pivot = r;
        if (!(std::abs(a[pivot][k]) > 0.0)) return false;
        std::swap(a[k], a[pivot]);
        std::swap(b[k], b[pivot]);
        for (std::size_t r = k + 1; r < n; ++r) {
            const double factor = a[r][k] / a[k][k];
            if (factor == 0.0) continue;
            for (std::size_t c = k; c < n; ++c) a[r][c] -= factor * a[k][c];
            b[r] -= factor * b[k];
        }
    }
    for (std::size_t k = n; k-- > 0;) {
        for (std::size_t c = k + 1; c < n; ++c) b[k] -= a[k][c] * b[c];
        b[k] /= a[k][k];
    }
    return true;
}

Slopes slopesAt(const PairBalance& balance, double h, const PairUnknowns& x, const PairUnknowns& residual,
                const StageState& at) {
    Slopes slopes{};
    for (std::size_t k = 0; k < x.size(); ++k) {
        PairUnknowns beside = x;
        beside[k] += PairNewton::Difference;
        const PairUnknowns other =
            residualOf(balance, h, beside, stateBeside(balance, h, beside, k, at).flow);
        for (std::size_t r = 0; r < x.size(); ++r)
            slopes[r][k] = (other[r] - residual[r]) / PairNewton::Difference;
    }
    return slopes;
}

/// Newton's method with slopes by differences.
bool iterate(const PairBalance& balance, double h, PairUnknowns& x, StageState& at) {
    at = stateAt(balance, h, x);
    PairUnknowns residual = residualOf(balance, h, x, at.flow);
    double off = largestOf(residual);
    for (int count = 0; count < PairNewton::MostIterations; ++count) {
        if (off <= PairNewton::Balance) return true;
        if (!std::isfinite(off)) return false;
        Slopes slopes = slopesAt(balance, h, x, residual, at);
        if (!solveSmall(slopes, residual)) return false;
        const double move = largestOf(residual);
        const double share = move > PairNewton::LargestMove ? PairNewton::LargestMove / move : 1.0;
        for (std::size_t k = 0; k < x.size(); ++k) x[k] = std::max(0.0, x[k] - share * residual[k]);
        at = stateAt(balance, h, x);
        residual = residualOf(balance, h, x, at.flow);
        off = largestOf(residual);
    }
    return off <= PairNewton::FairBalance;
}

}  // namespace

ConservedAmounts transferRate(const FluidTables& tables, const TransferPair& pair, const PhaseState& fracture,
                              const PhaseState& matrix) {
    return transferBetween(pair, pair.conductance, sideState(tables, pair.fracture, fracture),
                           sideState(tables, pair.matrix, matrix));
}

double stageConductance(const TransferPair& pair, double h) {
    const double pores = std::max(pair.fracture.fluid.poreVolume, pair.matrix.fluid.poreVolume);
    return h > 0.0 ? std::min(pair.conductance, MostTurns * pores / h) : pair.conductance;
}

PairUnknowns unknownsOf(const PairBalance& balance) {
    const ByPhase fracture = asPhases(balance.fracture), matrix = asPhases(balance.matrix);
    const ByPhase fracturePores = poresOf(balance.pair.fracture), matrixPores = poresOf(balance.pair.matrix);
    if (!balance.tables.hasGas) return {fracture[0] / fracturePores[0], matrix[0] / matrixPores[0]};
    PairUnknowns x{};
    for (std::size_t c = 0; c < Components; ++c) {
        x[c] = fracture[c] / fracturePores[c];
        x[Components + c] = matrix[c] / matrixPores[c];
    }
    return x;
}

bool solveStage(const PairBalance& balance, double h, PairUnknowns& x, PairFlow& flow) {
    if (!balance.tables.hasGas) return solveWaterStage(balance, h, x, flow);
    const PairUnknowns start = x;
    StageState at;
    const bool found = iterate(balance, h, x, at);
    if (!found && !std::isfinite(volumeOf(balance.pair.fracture.fluid, at.flow.transfer)))
        at = stateAt(balance, h, start);
    flow = at.flow;
    return found;
}

}  // namespace kvr
