#include "pressure/stirred_tank.hpp"

#include "base/constants.hpp"
#include "fluid/saturation_functions.hpp"
#include "pressure/tank_substeps.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr int MostSubsteps = 4000;         // behind them a tank counts as steady
constexpr double SteadyInflow = 1e-3;      // change of its make-up over the step that does not count
constexpr double StillComposition = 1e-8;  // change of a volume share in one substep
constexpr double BuoyantSlope = 2.0;       // steeper than without is what gravity makes of a fractional flow
constexpr double MobilityGuard = 1e-20;    // 1/cp

/// What has to be left of each component: its immobile part, as far as it is there. Beside free gas how much
/// oil stays is a matter of all three phases, and none is counted.
ConservedAmounts floorOf(const FluidTables& tables, const SaturationTable& table, const TankFluid& fluid,
                         const ConservedAmounts& start) {
    ConservedAmounts floor;
    floor.water = std::min(start.water, table.ConnateSw * fluid.poreVolume / fluid.factors.Bw);
    constexpr double Slack = 1e-9;  // relative, of gas that is all in solution
    if (!tables.hasGas || start.gas <= (1.0 + Slack) * fluid.saturatedRs * start.oil)
        floor.oil = std::min(start.oil, table.ResidualSo * fluid.poreVolume / fluid.factors.Bo);
    return floor;
}

bool staysAbove(const ConservedAmounts& held, const ConservedAmounts& floor) {
    return held.water >= floor.water && held.oil >= floor.oil && held.gas >= floor.gas;
}

ConservedAmounts moved(const ConservedAmounts& held, double h, const ConservedAmounts& in, double outFlow,
                       const ConservedAmounts& out) {
    return {held.water + h * (in.water - outFlow * out.water), held.oil + h * (in.oil - outFlow * out.oil),
            held.gas + h * (in.gas - outFlow * out.gas)};
}

/// What goes a day from `before` to `behind`.
ConservedAmounts lossOf(const ConservedAmounts& before, const ConservedAmounts& behind, double days) {
    return {(before.water - behind.water) / days, (before.oil - behind.oil) / days,
            (before.gas - behind.gas) / days};
}

/// Reservoir volume a day that goes through a tank.
double throughflow(const TankFlows& flows, double inflowVolume) {
    return std::max(inflowVolume, flows.rest + flows.asked);
}

ConservedAmounts perVolume(const ConservedAmounts& amounts, double volume) {
    return {amounts.water / volume, amounts.oil / volume, amounts.gas / volume};
}

double givenShare(double missing, double asked) {
    return missing > 0.0 && asked > 0.0 ? std::max(0.0, 1.0 - missing / asked) : 1.0;
}

/// Water of volume `water` in the place of oil, and `gas`, Rs times that volume, of what the oil held.
void exchange(const TankFluid& fluid, double water, double gas, ConservedAmounts& out) {
    out.water += water / fluid.factors.Bw;
    out.oil -= water / fluid.factors.Bo;
    out.gas -= gas / fluid.factors.Bo;
}

PairMobility pairMobility(const FluidTables& tables, const TankFluid& fluid, double Sw) {
    const RelPerms kr = relPermsAtCell(tables, fluid.cell, fluid.region, Sw, 0.0);
    return pairOf(kr.w / fluid.MuW, kr.o / fluid.MuO);
}

/// The share of buoyantShare.
double shareTurned(double pull, const PairMobility& lambda) {
    if (pull < 0.0) return -std::min(1.0, -pull * lambda.oil) * lambda.waterShare;
    return std::min(1.0, pull * lambda.water) * lambda.oilShare;
}

/// What gravity makes of the flows with a known make-up, at the mobilities of the middle of the step; returns
/// the water in them that takes the place of oil, volume a day.
double moveKnown(const FluidTables& tables, const SaturationTable& table, const TankFluid& fluid,
                 const TankFlows& flows, double dt, double Rs, const ConservedAmounts& start,
                 std::span<BuoyantFlow> buoyant) {
    const bool any = std::any_of(buoyant.begin(), buoyant.end(),
                                 [](const BuoyantFlow& face) { return face.followed > 0.0; });
    if (!any) return 0.0;
    ConservedAmounts end = moved(start, dt, flows.inflow, 1.0, flows.request);
    end = {std::max(0.0, end.water), std::max(0.0, end.oil), std::max(0.0, end.gas)};
    const double Sw =
        0.5 * (tankState(tables, table, fluid, start).Sw + tankState(tables, table, fluid, end).Sw);
    const PairMobility lambda = pairMobility(tables, fluid, Sw);
    double water = 0.0;
    for (BuoyantFlow& face : buoyant) {
        face.known = face.pull < 0.0 ? -std::min(1.0, -face.pull * lambda.oil) * face.knownWater
                                     : std::min(1.0, face.pull * lambda.water) * face.knownOil;
        face.knownGas = Rs * face.known;
        water += face.flow * face.followed * face.known;
    }
    return water;
}

/// Whether gravity can make something of the flows of a tank within the step: it does at its start, or water
/// runs in. Next to no water, as rounding or a swelling of what is immobile leaves it, is none.
bool gravityTurns(const FluidTables& tables, const TankFluid& fluid, const TankFlows& flows,
                  double inflowVolume, const PhaseState& start, std::span<const BuoyantFlow> buoyant) {
    constexpr double NextToNothing = 1e-4;  // of a flow
    if (fluid.factors.Bw * flows.inflow.water > NextToNothing * inflowVolume) return true;
    const PairMobility lambda = pairMobility(tables, fluid, start.Sw);
    return std::any_of(buoyant.begin(), buoyant.end(), [&](const BuoyantFlow& face) {
        return std::abs(shareTurned(face.pull, lambda)) > NextToNothing;
    });
}

/// Mobilities of water, oil and gas of a tank in a state, 1/cp.
std::array<double, 3> mobilityAt(const FluidTables& tables, const TankFluid& fluid, const PhaseState& state) {
    const RelPerms kr = relPermsAtCell(tables, fluid.cell, fluid.region, state.Sw, state.Sg);
    return {kr.w / fluid.MuW, kr.o / fluid.MuO, tables.hasGas ? kr.g / fluid.MuG : 0.0};
}

/// What gravity makes of the flows of a tank's own mobilities, of which `mobility` are all three.
OwnExchange turnedAt(const FluidTables& tables, const TankFluid& fluid, const PhaseState& state,
                     const std::array<double, 3>& mobility, std::span<const BuoyantFlow> buoyant) {
    if (buoyant.empty()) return {};
    if (tables.hasGas && state.Sg != 0.0) return turnedOwn(tables, fluid, state, buoyant);
    return turnedBy(pairOf(mobility[0], mobility[1]), fluid, tables.hasGas ? state.Rs : 0.0, buoyant);
}

/// Middle of a substep that starts `elapsed` days into the step, from the middle of the step, in its length.
double fromMiddle(double elapsed, double length, double dt) {
    return (elapsed + 0.5 * length) / dt - 0.5;
}

/// Water that stays of the flows of a tank, volume a day; `follow`: known make-ups are followed.
double waterGain(const TankFluid& fluid, const TankFlows& flows, const ConservedAmounts& request,
                 const ConservedAmounts& own, const OwnExchange& turned, bool follow) {
    const double apart = follow ? request.water : flows.asked * own.water + turned.asked.water;
    return fluid.factors.Bw * (flows.inflow.water - flows.rest * own.water - turned.rest.water - apart);
}

ConservedAmounts between(const ConservedAmounts& a, const ConservedAmounts& b, double weight) {
    return {a.water + weight * (b.water - a.water), a.oil + weight * (b.oil - a.oil),
            a.gas + weight * (b.gas - a.gas)};
}

bool isStill(const PhaseState& before, const PhaseState& now) {
    return std::abs(now.Sw - before.Sw) + std::abs(now.Sg - before.Sg) < StillComposition;
}

}  // namespace

PairMobility pairOf(double water, double oil) {
    const double sum = water + oil;
    return sum > 0.0 ? PairMobility{water, oil, water / sum, oil / sum} : PairMobility{water, oil};
}

PhaseState tankState(const FluidTables& tables, const SaturationTable& table, const TankFluid& fluid,
                     const ConservedAmounts& held) {
    if (tables.hasGas) {
        const double inverse = 1.0 / fluid.poreVolume;
        return recoverButBubblePoint(pvtAt(tables, fluid.cell), table, false, fluid.factors,
                                     fluid.saturatedRs,
                                     {held.water * inverse, held.oil * inverse, held.gas * inverse});
    }
    const double water = fluid.factors.Bw * held.water, oil = fluid.factors.Bo * held.oil;
    const double sum = water + oil;
    PhaseState state;
    state.Sw = sum > 0.0 ? water / sum : 1.0;
    state.So = 1.0 - state.Sw;
    return state;
}

ConservedAmounts makeUpOf(const TankFluid& fluid, const PhaseState& state, bool hasGas,
                          std::array<double, 3> mobility) {
    auto& [w, o, g] = mobility;
    if (!(w + o + g > MobilityGuard)) mobility = {state.Sw, state.So, state.Sg};
    const double share = 1.0 / (w + o + g);
    ConservedAmounts out;
    out.water = w * share / fluid.factors.Bw;
    out.oil = o * share / fluid.factors.Bo;
    if (hasGas) out.gas = g * share / fluid.factors.Bg + state.Rs * out.oil;
    return out;
}

ConservedAmounts makeUpAt(const FluidTables& tables, const TankFluid& fluid, const PhaseState& state) {
    return makeUpOf(fluid, state, tables.hasGas, mobilityAt(tables, fluid, state));
}

OwnExchange turnedOwn(const FluidTables& tables, const TankFluid& fluid, const PhaseState& state,
                      std::span<const BuoyantFlow> buoyant) {
    if (buoyant.empty()) return {};
    return turnedBy(pairMobility(tables, fluid, state.Sw), fluid, tables.hasGas ? state.Rs : 0.0, buoyant);
}

OwnExchange turnedBy(const PairMobility& lambda, const TankFluid& fluid, double Rs,
                     std::span<const BuoyantFlow> buoyant) {
    OwnExchange moved;
    moved.lambda = lambda;
    moved.Rs = Rs;
    for (const BuoyantFlow& face : buoyant) {
        const double water = face.flow * shareTurned(face.pull, lambda);
        const double own = (1.0 - face.followed) * water, apart = face.followed * water;
        exchange(fluid, own, moved.Rs * own, moved.rest);
        exchange(fluid, apart, moved.Rs * apart, moved.asked);
    }
    return moved;
}

void addMeans(double share, double moment, bool follow, const OwnExchange& turned,
              std::span<BuoyantFlow> buoyant) {
    for (BuoyantFlow& face : buoyant) {
        const double turnedShare = shareTurned(face.pull, turned.lambda);
        const double water = share * turnedShare;
        face.own += water;
        face.tilt += moment * turnedShare;
        face.ownGas += turned.Rs * water;
        if (follow) continue;
        face.apart += water;
        face.apartGas += turned.Rs * water;
    }
}

void keepWhatIsThere(ConservedAmounts& held, ConservedAmounts& missing) {
    const auto keep = [](double& amount, double& lacking) {
        if (amount >= 0.0) return;
        lacking -= amount;
        amount = 0.0;
    };
    keep(held.water, missing.water);
    keep(held.oil, missing.oil);
    keep(held.gas, missing.gas);
}

void accountForMissing(const TankFluid& fluid, const TankFlows& flows, const ConservedAmounts& request,
                       double dt, const ConservedAmounts& missing, std::span<const BuoyantFlow> buoyant,
                       TankOutflow& out) {
    if (!(missing.water + missing.oil + missing.gas > 0.0)) return;
    ConservedAmounts asked;
    add(dt * flows.rest, out.own, asked);
    add(dt * flows.asked, out.apart, asked);
    add(dt * out.followed, request, asked);
    for (const BuoyantFlow& face : buoyant)
        exchange(fluid, dt * face.flow * ((1.0 - face.followed) * face.own + face.followed * face.apart),
                 dt * face.flow * ((1.0 - face.followed) * face.ownGas + face.followed * face.apartGas),
                 asked);
    out.given = {givenShare(missing.water, asked.water), givenShare(missing.oil, asked.oil),
                 givenShare(missing.gas, asked.gas)};
    const double freeGas = std::max(0.0, missing.gas - fluid.saturatedRs * missing.oil);
    out.deficit =
        fluid.factors.Bw * missing.water + fluid.factors.Bo * missing.oil + fluid.factors.Bg * freeGas;
}

double volumeOf(const TankFluid& fluid, const ConservedAmounts& amounts) {
    const double dissolved = std::min(amounts.gas, fluid.saturatedRs * amounts.oil);
    return fluid.factors.Bw * amounts.water + fluid.factors.Bo * amounts.oil +
           fluid.factors.Bg * (amounts.gas - dissolved);
}

ConservedAmounts ownMakeUp(const FluidTables& tables, const TankFluid& fluid, const ConservedAmounts& held) {
    return makeUpAt(tables, fluid, tankState(tables, regionTable(tables, fluid.region), fluid, held));
}

namespace {

/// A tank over a step: what it reads, and what holds for all substeps.
struct TankStep {
    const FluidTables& tables;
    const SaturationTable& table;
    const TankFluid& fluid;
    const TankFlows& flows;
    ConservedAmounts request;        // of the flows, with what gravity makes of them
    std::span<BuoyantFlow> buoyant;  // empty where gravity does nothing within the step
    double dt = 0.0;
    double inVolume = 0.0;     // of the inflow, a day
    double longest = 0.0;      // substep by the steepest rise of all, days
    double tilt = 0.0;         // of the inflow, 0 where it does not count
    ConservedAmounts floor{};  // what has to be left
    LocalSlopes local{};
};

/// What leaves at a state by the tank's own mobilities.
struct Leaving {
    ConservedAmounts own;
    OwnExchange turned;
};

struct Substep {
    double elapsed = 0.0, length = 0.0;  // days: of the step before it, of itself
    bool steady = false;                 // the tank passes on what comes in, if anything does
    bool follow = false;                 // known make-ups are followed
    Leaving start, end;
    double weight = 0.0;    // of the end in the mean
    ConservedAmounts own;   // mean of what leaves
    ConservedAmounts kept;  // what the substep has to leave
    ConservedAmounts next;
    PhaseState nextState;
};

/// What gravity makes of flows with a known make-up; flows on which it does nothing are dropped.
void turnKnown(const ConservedAmounts& start, TankStep& step) {
    if (step.buoyant.empty()) return;
    const PhaseState state = tankState(step.tables, step.table, step.fluid, start);
    if (!gravityTurns(step.tables, step.fluid, step.flows, step.inVolume, state, step.buoyant))
        step.buoyant = {};
    const double Rs = step.tables.hasGas ? state.Rs : 0.0;
    const double water =
        moveKnown(step.tables, step.table, step.fluid, step.flows, step.dt, Rs, start, step.buoyant);
    exchange(step.fluid, water, Rs * water, step.request);
}

void boundSubsteps(const FractionSlopes& slopes, TankStep& step) {
    const double through = throughflow(step.flows, step.inVolume);
    const double steepest = step.buoyant.empty() ? slopes.steepest : BuoyantSlope * slopes.steepest;
    step.longest = substepOf(step.fluid, through, step.dt, steepest);
    step.local = localSlopes(slopes, step.tables, step.fluid, through, through * steepest, step.buoyant);
    step.tilt = std::abs(step.flows.tilt) > SteadyInflow * step.inVolume ? step.flows.tilt : 0.0;
}

Leaving leavingAt(const TankStep& step, const PhaseState& state) {
    const std::array<double, 3> mobility = mobilityAt(step.tables, step.fluid, state);
    Leaving leaving;
    leaving.own = makeUpOf(step.fluid, state, step.tables.hasGas, mobility);
    leaving.turned = turnedAt(step.tables, step.fluid, state, mobility, step.buoyant);
    return leaving;
}

/// What is held `time` days into a substep.
ConservedAmounts after(const TankStep& step, const ConservedAmounts& held, const Substep& sub, double time,
                       bool follow) {
    const TankFlows& flows = step.flows;
    ConservedAmounts inflow = flows.inflow;
    if (step.tilt != 0.0)
        exchange(step.fluid, step.tilt * fromMiddle(sub.elapsed, time, step.dt), 0.0, inflow);
    const ConservedAmounts net = moved(held, time, inflow, flows.rest, sub.own);
    const ConservedAmounts rest =
        moved(net, time, {}, 1.0, between(sub.start.turned.rest, sub.end.turned.rest, sub.weight));
    if (follow) return moved(rest, time, {}, 1.0, step.request);
    return moved(moved(rest, time, {}, flows.asked, sub.own), time, {}, 1.0,
                 between(sub.start.turned.asked, sub.end.turned.asked, sub.weight));
}

double gainOf(const TankStep& step, const Leaving& leaving, bool follow) {
    return waterGain(step.fluid, step.flows, step.request, leaving.own, leaving.turned, follow);
}

/// A substep by what leaves at its start, as long as the slopes allow.
Substep firstLook(const TankStep& step, const PhaseState& state, double left, int count) {
    Substep sub;
    sub.elapsed = step.dt - left;
    sub.length = std::min(step.longest, left);
    sub.steady = count > MostSubsteps;
    if (sub.steady) {
        sub.length = left;
        // Without an inflow the tank has long been emptied, and what it is asked for is missing.
        sub.own =
            step.inVolume > 0.0 ? perVolume(step.flows.inflow, step.inVolume) : leavingAt(step, state).own;
        return sub;
    }
    sub.start = leavingAt(step, state);
    sub.own = sub.start.own;
    if (step.local.region == nullptr) return sub;
    const double gain = gainOf(step, sub.start, step.flows.asked > 0.0) / step.fluid.poreVolume;
    sub.length = localSubstep(step.local, step.fluid, state.Sw, gain, left);
    return sub;
}

/// Whether known make-ups are followed, and what gravity may take of what is mobile.
void boundLength(const TankStep& step, const ConservedAmounts& held, int count, Substep& sub) {
    sub.follow = step.flows.asked > 0.0 && staysAbove(after(step, held, sub, sub.length, true), step.floor);
    if (sub.follow) sub.kept = step.floor;
    if (sub.follow || step.buoyant.empty()) return;
    sub.kept = floorIn(step.fluid, step.floor, held);
    if (count > MostSubsteps) return;
    const ConservedAmounts loss = lossOf(held, after(step, held, sub, sub.length, false), sub.length);
    sub.length = lengthUnderGravity(sub.length, held, sub.kept, loss);
}

/// Where a substep leads to.
void takeSubstep(const TankStep& step, const ConservedAmounts& held, Substep& sub) {
    sub.next = after(step, held, sub, sub.length, sub.follow);
    sub.nextState = tankState(step.tables, step.table, step.fluid, sub.next);
}

/// Takes what leaves at the state that the substep led to into its mean, unless that would take more than is
/// mobile: gravity asks for more with what the flow has brought.
void meanOverSubstep(const TankStep& step, const ConservedAmounts& held, Substep& sub) {
    const ConservedAmounts nextByStart = sub.next;
    sub.end = leavingAt(step, sub.nextState);
    const double gain = gainOf(step, sub.start, sub.follow);
    sub.weight = weightOfEnd(1.0 - gainOf(step, sub.end, sub.follow) / gain);
    sub.own = between(sub.start.own, sub.end.own, sub.weight);
    sub.next = after(step, held, sub, sub.length, sub.follow);
    if (staysAbove(sub.next, sub.kept)) {
        sub.nextState = tankState(step.tables, step.table, step.fluid, sub.next);
        return;
    }
    sub.weight = 0.0;
    sub.own = sub.start.own;
    sub.next = nextByStart;
}

/// Its part of what left, as mean and as change over the step.
void countSubstep(const TankStep& step, const Substep& sub, TankOutflow& out) {
    const double share = sub.length / step.dt;
    add(share, sub.own, out.own);
    const double moment =
        step.tables.hasGas ? 0.0 : 12.0 * sub.length / step.dt * fromMiddle(sub.elapsed, sub.length, step.dt);
    out.tilt += moment * step.fluid.factors.Bw * sub.own.water;
    addMeans((1.0 - sub.weight) * share, (1.0 - sub.weight) * moment, sub.follow, sub.start.turned,
             step.buoyant);
    if (sub.weight > 0.0)
        addMeans(sub.weight * share, sub.weight * moment, sub.follow, sub.end.turned, step.buoyant);
    if (sub.follow)
        out.followed += share;
    else
        add(share, sub.own, out.apart);
}

}  // namespace

TankOutflow emptyTank(const FluidTables& tables, const TankFluid& fluid, const TankFlows& flows, double dt,
                      const FractionSlopes& slopes, const ConservedAmounts& start,
                      std::span<BuoyantFlow> buoyant) {
    TankOutflow out;
    TankStep step{tables, regionTable(tables, fluid.region), fluid, flows, flows.request, buoyant, dt};
    step.inVolume = volumeOf(fluid, flows.inflow);
    step.floor = floorOf(tables, step.table, fluid, start);
    turnKnown(start, step);
    if (flows.rest <= 0.0) {
        if (flows.asked <= 0.0) return out;
        if (staysAbove(moved(start, dt, flows.inflow, 1.0, step.request), step.floor)) return out;
    }
    boundSubsteps(slopes, step);
    out.followed = 0.0;
    ConservedAmounts held = start, missing;
    PhaseState state = tankState(tables, step.table, fluid, held);
    int count = 0;
    for (double left = dt; left > 0.0;) {
        Substep sub = firstLook(step, state, left, ++count);
        boundLength(step, held, count, sub);
        takeSubstep(step, held, sub);
        if (step.local.region != nullptr && !sub.steady && !isStill(state, sub.nextState))
            meanOverSubstep(step, held, sub);
        countSubstep(step, sub, out);
        held = sub.next;
        keepWhatIsThere(held, missing);
        left = sub.length < left ? left - sub.length : 0.0;
        if (left > 0.0)
            state = staysAbove(sub.next, {}) ? sub.nextState : tankState(tables, step.table, fluid, held);
    }
    accountForMissing(fluid, flows, step.request, dt, missing, step.buoyant, out);
    return out;
}

}  // namespace kvr
