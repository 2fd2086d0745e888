#include "pressure/pair_tank.hpp"

#include "fluid/saturation_functions.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>

namespace kvr {

namespace {

constexpr double MobilityGuard = 1e-20;  // 1/cp
constexpr double FractureMove = 0.1;     // change of saturations in a substep that is aimed at, fractures ...
constexpr double MatrixMove = 0.05;      // ... and matrix
constexpr double MoveSlack = 2.0;        // times these a substep stands
constexpr double LeastPart = 1e-3;       // of the step, below which a substep stands whatever it moves
constexpr double MostGrowth = 4.0;       // of a substep against the one before
constexpr int MostIterations = 12;       // of Newton's method
constexpr double Balance = 1e-8;         // of the pores, that the state of a substep may be off by ...
constexpr double FairBalance = 1e-5;     // ... where slopes jump and the iteration creeps
constexpr double LargestMove = 0.25;     // of a saturation in an iteration
constexpr double Difference = 1e-7;      // of the pores, for slopes
constexpr double Gamma = 0.29289321881345254;  // 1 - 1/sqrt(2), of the two stages
constexpr double MostTurns = 1e4;  // of the pores by a psi of difference and 1/cp in a stage: beyond it both
                                   // sides are in balance to rounding
constexpr std::size_t MostUnknowns = 6;  // three components in two cells
using Unknowns = std::array<double, MostUnknowns>;
using Phases = std::array<double, 3>;  // water, oil, gas

/// One side of a pair in a state.
struct SideState {
    PhaseState state;
    Phases mobility{};  // 1/cp
    Phases added{};     // psi, beside the pressure of oil
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
ConservedAmounts surfaceOf(const PairSide& side, const PhaseState& state, const Phases& volume) {
    const RecoveryFactors& factors = side.fluid.factors;
    const double oil = volume[1] / factors.Bo;
    return {volume[0] / factors.Bw, oil, volume[2] / factors.Bg + state.Rs * oil};
}

/// Volumes of the phases a day out of the matrix. None is mobile where they come from: false.
bool phaseFlows(const TransferPair& pair, double conductance, const SideState& fracture,
                const SideState& matrix, Phases& flow) {
    Phases h{}, lambda{};
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
    if (!(sum > MobilityGuard)) return false;
    const double d = (total - pull) / sum;
    for (std::size_t p = 0; p < h.size(); ++p) flow[p] = conductance * lambda[p] * (d + h[p]);
    return true;
}

Phases partOf(bool positive, Phases flow) {
    for (double& volume : flow)
        if ((volume > 0.0) != positive) volume = 0.0;
    return flow;
}

ConservedAmounts transferBetween(const TransferPair& pair, double conductance, const SideState& fracture,
                                 const SideState& matrix) {
    if (!(conductance > 0.0)) return {};
    Phases flow{};
    if (!phaseFlows(pair, conductance, fracture, matrix, flow)) {
        const PhaseState& from = pair.total > 0.0 ? matrix.state : fracture.state;
        flow = {pair.total * from.Sw, pair.total * from.So, pair.total * from.Sg};
    }
    ConservedAmounts sum = surfaceOf(pair.matrix, matrix.state, partOf(true, flow));
    add(1.0, surfaceOf(pair.fracture, fracture.state, partOf(false, flow)), sum);
    return sum;
}

/// The conductance of a stage of h days.
double conductanceFor(const TransferPair& pair, double h) {
    const double pores = std::max(pair.fracture.fluid.poreVolume, pair.matrix.fluid.poreVolume);
    return h > 0.0 ? std::min(pair.conductance, MostTurns * pores / h) : pair.conductance;
}

/// What the balances of a stage are made of. Its amounts are those from which it goes.
struct PairBalance {
    const FluidTables& tables;
    const TransferPair& pair;
    const TankFlows& flows;
    std::span<const BuoyantFlow> buoyant;
    const SaturationTable& fractureTable;
    const SaturationTable& matrixTable;
    double out = 0.0;       // reservoir volume a day that leaves the fractures
    double inVolume = 0.0;  // ... and comes in, beside the exchange
    ConservedAmounts fracture, matrix;
    std::size_t unknowns = 2;
};

/// What flows in a state of the pair.
struct PairFlow {
    SideState fracture, matrix;
    ConservedAmounts own;      // surface amounts per reservoir volume of the outflow
    OwnExchange turned;        // by gravity, in it
    ConservedAmounts outflow;  // surface amounts a day, all of it
    ConservedAmounts transfer;
};

/// What fills the pores of a side, of each component: the scales of the unknowns.
Phases poresOf(const PairSide& side) {
    const RecoveryFactors& factors = side.fluid.factors;
    const double pores = side.fluid.poreVolume;
    return {pores / factors.Bw, pores / factors.Bo, pores / factors.Bg};
}

/// Amounts of a side by its unknowns. Without gas the water alone is unknown: the flows tell the volume.
ConservedAmounts amountsIn(const PairSide& side, bool hasGas, const double* unknown, double volume) {
    const Phases pores = poresOf(side);
    if (hasGas) return {unknown[0] * pores[0], unknown[1] * pores[1], unknown[2] * pores[2]};
    const double water = unknown[0] * pores[0];
    return {water, std::max(0.0, (volume - side.fluid.factors.Bw * water) / side.fluid.factors.Bo), 0.0};
}

double volumeBehind(const PairSide& side, const ConservedAmounts& before, double gain) {
    return std::max(0.0, volumeOf(side.fluid, before) + gain);
}

void setFracture(const PairBalance& balance, double h, const Unknowns& x, PairFlow& flow) {
    const PairSide& side = balance.pair.fracture;
    const double volume =
        volumeBehind(side, balance.fracture, h * (balance.inVolume - balance.out + balance.pair.total));
    const ConservedAmounts held = amountsIn(side, balance.tables.hasGas, x.data(), volume);
    const PhaseState state = tankState(balance.tables, balance.fractureTable, side.fluid, held);
    flow.fracture = sideState(balance.tables, side, state);
    flow.own = makeUpOf(side.fluid, state, balance.tables.hasGas, flow.fracture.mobility);
    flow.turned = turnedOwn(balance.tables, side.fluid, state, balance.buoyant);
    flow.outflow = flow.turned.rest;
    add(balance.out, flow.own, flow.outflow);
}

void setMatrix(const PairBalance& balance, double h, const Unknowns& x, PairFlow& flow) {
    const PairSide& side = balance.pair.matrix;
    const double volume = volumeBehind(side, balance.matrix, -h * balance.pair.total);
    const ConservedAmounts held =
        amountsIn(side, balance.tables.hasGas, x.data() + balance.unknowns / 2, volume);
    flow.matrix =
        sideState(balance.tables, side, tankState(balance.tables, balance.matrixTable, side.fluid, held));
}

PairFlow flowAt(const PairBalance& balance, double h, const Unknowns& x) {
    PairFlow flow;
    setFracture(balance, h, x, flow);
    setMatrix(balance, h, x, flow);
    flow.transfer =
        transferBetween(balance.pair, conductanceFor(balance.pair, h), flow.fracture, flow.matrix);
    return flow;
}

/// The same where one unknown has changed.
PairFlow flowBeside(const PairBalance& balance, double h, const Unknowns& x, std::size_t changed,
                    PairFlow flow) {
    if (changed < balance.unknowns / 2)
        setFracture(balance, h, x, flow);
    else
        setMatrix(balance, h, x, flow);
    flow.transfer =
        transferBetween(balance.pair, conductanceFor(balance.pair, h), flow.fracture, flow.matrix);
    return flow;
}

Phases asPhases(const ConservedAmounts& amounts) {
    return {amounts.water, amounts.oil, amounts.gas};
}

/// What a stage of h days leaves open of the balances, of the pores.
Unknowns residualOf(const PairBalance& balance, double h, const Unknowns& x, const PairFlow& flow) {
    const Phases out = asPhases(flow.outflow), in = asPhases(balance.flows.inflow);
    const Phases transfer = asPhases(flow.transfer);
    const Phases fracture = asPhases(balance.fracture), matrix = asPhases(balance.matrix);
    const Phases fracturePores = poresOf(balance.pair.fracture), matrixPores = poresOf(balance.pair.matrix);
    const std::size_t each = balance.unknowns / 2;
    Unknowns residual{};
    for (std::size_t c = 0; c < each; ++c) {
        residual[c] = x[c] - (fracture[c] + h * (in[c] - out[c] + transfer[c])) / fracturePores[c];
        residual[each + c] = x[each + c] - (matrix[c] - h * transfer[c]) / matrixPores[c];
    }
    return residual;
}

double largestOf(const Unknowns& values, std::size_t count) {
    double largest = 0.0;
    for (std::size_t k = 0; k < count; ++k) {
        if (!std::isfinite(values[k])) return HUGE_VAL;
        largest = std::max(largest, std::abs(values[k]));
    }
    return largest;
}

using Slopes = std::array<Unknowns, MostUnknowns>;

/// b becomes the solution of a x = b, by elimination with row pivots; false where there is none.
bool solveSmall(std::size_t n, Slopes& a, Unknowns& b) {
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

/// Implicit Euler over h days from the amounts of the balance, by Newton's method from x; false where it
/// finds no state.
bool solveStage(const PairBalance& balance, double h, Unknowns& x, PairFlow& flow) {
    const std::size_t n = balance.unknowns;
    flow = flowAt(balance, h, x);
    Unknowns residual = residualOf(balance, h, x, flow);
    double off = largestOf(residual, n);
    for (int count = 0; count < MostIterations; ++count) {
        if (off <= Balance) return true;
        if (!std::isfinite(off)) return false;
        Slopes slopes{};
        for (std::size_t k = 0; k < n; ++k) {
            Unknowns beside = x;
            beside[k] += Difference;
            const Unknowns other = residualOf(balance, h, beside, flowBeside(balance, h, beside, k, flow));
            for (std::size_t r = 0; r < n; ++r) slopes[r][k] = (other[r] - residual[r]) / Difference;
        }
        if (!solveSmall(n, slopes, residual)) return false;
        const double move = largestOf(residual, n);
        const double share = move > LargestMove ? LargestMove / move : 1.0;
        for (std::size_t k = 0; k < n; ++k) x[k] = std::max(0.0, x[k] - share * residual[k]);
        flow = flowAt(balance, h, x);
        residual = residualOf(balance, h, x, flow);
        off = largestOf(residual, n);
    }
    return off <= FairBalance;
}

Unknowns unknownsOf(const PairBalance& balance) {
    const Phases fracture = asPhases(balance.fracture), matrix = asPhases(balance.matrix);
    const Phases fracturePores = poresOf(balance.pair.fracture), matrixPores = poresOf(balance.pair.matrix);
    const std::size_t each = balance.unknowns / 2;
    Unknowns x{};
    for (std::size_t c = 0; c < each; ++c) {
        x[c] = fracture[c] / fracturePores[c];
        x[each + c] = matrix[c] / matrixPores[c];
    }
    return x;
}

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
    Unknowns x = unknownsOf(start);
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
    if (solveStage(start, h, x, substep.second)) return true;
    if (!std::isfinite(volumeOf(start.pair.fracture.fluid, substep.second.transfer)))
        substep.second = flowAt(start, 0.0, unknownsOf(start));
    return false;
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

ConservedAmounts transferRate(const FluidTables& tables, const TransferPair& pair, const PhaseState& fracture,
                              const PhaseState& matrix) {
    return transferBetween(pair, pair.conductance, sideState(tables, pair.fracture, fracture),
                           sideState(tables, pair.matrix, matrix));
}

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
                        matrix,
                        tables.hasGas ? std::size_t{6} : std::size_t{2}};
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
        const double excess = found
                                  ? std::max(changeOf(before, substep.second.fracture.state) / FractureMove,
                                             changeOf(matrixBefore, substep.second.matrix.state) / MatrixMove)
                                  : HUGE_VAL;
        if (excess > MoveSlack && h > LeastPart * dt) {
            h = std::max(LeastPart * dt, h * std::clamp(1.0 / excess, 0.1, 0.5));
            continue;
        }
        advance(substep.firstShare * h, dt, substep.first, buoyant, balance, missing, out);
        advance((1.0 - substep.firstShare) * h, dt, substep.second, buoyant, balance, missing, out);
        left = h < left ? left - h : 0.0;
        before = substep.second.fracture.state;
        matrixBefore = substep.second.matrix.state;
        h = std::max(LeastPart * dt, h * std::clamp(1.0 / excess, 0.5, MostGrowth));
    }
    out.outflow.apart = out.outflow.own;
    accountForMissing(pair.fracture.fluid, flows, {}, dt, missing, buoyant, out.outflow);
    return out;
}

}  // namespace kvr
