#include "base/constants.hpp"
#include "fluid/saturation_functions.hpp"
#include "pressure/stirred_tank.hpp"
#include "pressure/tank_arithmetic.hpp"
#include "pressure/tank_substeps.hpp"

#include <algorithm>
#include <array>
#include <cmath>

namespace kvr {

namespace {

constexpr int MostSubsteps = 4000;         // behind them a tank counts as steady
constexpr double SteadyInflow = 1e-3;      // change of its make-up over the step that does not count
constexpr double StillComposition = 1e-8;  // change of a volume share in one substep
constexpr double BuoyantSlope = 2.0;       // steeper than without is what gravity makes of a fractional flow

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

/// What gravity makes of the flows with a known make-up, at the mobilities of the middle of the step; returns
/// the water in them that takes the place of oil, volume a day.
double moveKnown(const FluidTables& tables, const SaturationTable& table, const TankFluid& fluid,
                 const TankFlows& flows, double dt, double Rs, const ConservedAmounts& start,
                 std::span<BuoyantFlow> buoyant) {
    const bool any = std::any_of(buoyant.begin(), buoyant.end(),
                                 [](const BuoyantFlow& face) { return face.followed > 0.0; });
    if (!any) return 0.0;
    ConservedAmounts end = moved<true>(start, dt, flows.inflow, 1.0, flows.request);
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

/// What a tank holds and meets, known to the compiler: what is not there costs nothing. Only inlined whole do
/// the kernels of a substep keep its records in registers; left to itself the compiler stores and reloads
/// them.
template <bool Gas, bool Buoyant>
struct TankKind {
    static constexpr bool HasGas = Gas;
    static constexpr bool Turns = Buoyant;  // gravity does something within the step
};

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
    bool byRegion = true;      // relative permeabilities are those of `table`
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
    step.byRegion = hasRegionTable(step.tables, step.fluid.cell);
}

template <class Kind>
[[gnu::always_inline]] inline PhaseState stateOf(const TankStep& step, const ConservedAmounts& held) {
    if constexpr (Kind::HasGas) return tankState(step.tables, step.table, step.fluid, held);
    return waterOilState(step.fluid, held);
}

/// Mobilities of water, oil and gas of a tank in a state, 1/cp.
template <class Kind>
[[gnu::always_inline]] inline std::array<double, 3> mobilityAt(const TankStep& step,
                                                               const PhaseState& state) {
    const TankFluid& fluid = step.fluid;
    const RelPerms kr = step.byRegion
                            ? relPerms(step.table, Kind::HasGas, state.Sw, state.Sg)
                            : relPermsAtCell(step.tables, fluid.cell, fluid.region, state.Sw, state.Sg);
    return {kr.w / fluid.MuW, kr.o / fluid.MuO, Kind::HasGas ? kr.g / fluid.MuG : 0.0};
}

template <class Kind>
[[gnu::always_inline]] inline Leaving leavingAt(const TankStep& step, const PhaseState& state) {
    const std::array<double, 3> mobility = mobilityAt<Kind>(step, state);
    Leaving leaving;
    leaving.own = makeUpOf(step.fluid, state, Kind::HasGas, mobility);
    if constexpr (!Kind::Turns) return leaving;
    if (Kind::HasGas && state.Sg != 0.0)
        leaving.turned = turnedOwn(step.tables, step.fluid, state, step.buoyant);
    else
        leaving.turned = turnedBy(pairOf(mobility[0], mobility[1]), step.fluid, Kind::HasGas ? state.Rs : 0.0,
                                  step.buoyant);
    return leaving;
}

/// Middle of a substep that starts `elapsed` days into the step, from the middle of the step, in its length.
double fromMiddle(double elapsed, double length, double dt) {
    return (elapsed + 0.5 * length) / dt - 0.5;
}

/// What is held `time` days into a substep; `follow`: known make-ups are followed.
template <class Kind>
[[gnu::always_inline]] inline ConservedAmounts after(const TankStep& step, const ConservedAmounts& held,
                                                     const Substep& sub, double time, bool follow) {
    constexpr bool HasGas = Kind::HasGas;
    const TankFlows& flows = step.flows;
    ConservedAmounts inflow = flows.inflow;
    if (step.tilt != 0.0)
        exchange(step.fluid, step.tilt * fromMiddle(sub.elapsed, time, step.dt), 0.0, inflow);
    ConservedAmounts rest = moved<HasGas>(held, time, inflow, flows.rest, sub.own);
    if constexpr (Kind::Turns)
        rest = moved<HasGas>(rest, time, {}, 1.0,
                             between<HasGas>(sub.start.turned.rest, sub.end.turned.rest, sub.weight));
    if (follow) return moved<HasGas>(rest, time, {}, 1.0, step.request);
    rest = moved<HasGas>(rest, time, {}, flows.asked, sub.own);
    if constexpr (Kind::Turns)
        rest = moved<HasGas>(rest, time, {}, 1.0,
                             between<HasGas>(sub.start.turned.asked, sub.end.turned.asked, sub.weight));
    return rest;
}

/// Water that stays of the flows of a tank, volume a day.
double gainOf(const TankStep& step, const Leaving& leaving, bool follow) {
    const TankFlows& flows = step.flows;
    const double apart =
        follow ? step.request.water : flows.asked * leaving.own.water + leaving.turned.asked.water;
    return step.fluid.factors.Bw *
           (flows.inflow.water - flows.rest * leaving.own.water - leaving.turned.rest.water - apart);
}

/// A substep by what leaves at its start, as long as the slopes allow.
template <class Kind>
[[gnu::always_inline]] inline void firstLook(const TankStep& step, const PhaseState& state, double left,
                                             int count, Substep& sub) {
    sub.elapsed = step.dt - left;
    sub.length = std::min(step.longest, left);
    sub.steady = count > MostSubsteps;
    if (sub.steady) {
        sub.length = left;
        // Without an inflow the tank has long been emptied, and what it is asked for is missing.
        sub.own = step.inVolume > 0.0 ? perVolume(step.flows.inflow, step.inVolume)
                                      : leavingAt<Kind>(step, state).own;
        return;
    }
    sub.start = leavingAt<Kind>(step, state);
    sub.own = sub.start.own;
    if (step.local.region == nullptr) return;
    const double gain = gainOf(step, sub.start, step.flows.asked > 0.0) / step.fluid.poreVolume;
    sub.length = localSubstep(step.local, step.fluid, state.Sw, gain, left);
}

/// Where a substep leads to: with known make-ups followed unless that would take what is not mobile, and no
/// further than gravity may take of what is.
template <class Kind>
[[gnu::always_inline]] inline void takeSubstep(const TankStep& step, const ConservedAmounts& held,
                                               Substep& sub) {
    if (step.flows.asked > 0.0) {
        sub.next = after<Kind>(step, held, sub, sub.length, true);
        sub.follow = staysAbove(sub.next, step.floor);
        if (sub.follow) {
            sub.kept = step.floor;
            return;
        }
    }
    sub.next = after<Kind>(step, held, sub, sub.length, false);
    if constexpr (!Kind::Turns) return;
    sub.kept = floorIn(step.fluid, step.floor, held);
    if (sub.steady) return;
    const double length = lengthUnderGravity(sub.length, held, sub.kept, lossOf(held, sub.next, sub.length));
    if (length == sub.length) return;
    sub.length = length;
    sub.next = after<Kind>(step, held, sub, sub.length, false);
}

/// Takes what leaves at the state that the substep led to into its mean, unless that would take more than is
/// mobile: gravity asks for more with what the flow has brought.
template <class Kind>
[[gnu::always_inline]] inline void meanOverSubstep(const TankStep& step, const ConservedAmounts& held,
                                                   Substep& sub) {
    const ConservedAmounts nextByStart = sub.next;
    sub.end = leavingAt<Kind>(step, sub.nextState);
    const double gain = gainOf(step, sub.start, sub.follow);
    sub.weight = weightOfEnd(1.0 - gainOf(step, sub.end, sub.follow) / gain);
    sub.own = between<Kind::HasGas>(sub.start.own, sub.end.own, sub.weight);
    sub.next = after<Kind>(step, held, sub, sub.length, sub.follow);
    if (staysAbove(sub.next, sub.kept)) {
        sub.nextState = stateOf<Kind>(step, sub.next);
        return;
    }
    sub.weight = 0.0;
    sub.own = sub.start.own;
    sub.next = nextByStart;
}

/// Its part of what left, as mean and as change over the step.
template <class Kind>
[[gnu::always_inline]] inline void countSubstep(const TankStep& step, const Substep& sub, TankOutflow& out) {
    const double share = sub.length / step.dt;
    add(share, sub.own, out.own);
    const double moment =
        Kind::HasGas ? 0.0 : 12.0 * sub.length / step.dt * fromMiddle(sub.elapsed, sub.length, step.dt);
    out.tilt += moment * step.fluid.factors.Bw * sub.own.water;
    if constexpr (Kind::Turns) {
        addMeans((1.0 - sub.weight) * share, (1.0 - sub.weight) * moment, sub.follow, sub.start.turned,
                 step.buoyant);
        if (sub.weight > 0.0)
            addMeans(sub.weight * share, sub.weight * moment, sub.follow, sub.end.turned, step.buoyant);
    }
    if (sub.follow)
        out.followed += share;
    else
        add(share, sub.own, out.apart);
}

bool isStill(const PhaseState& before, const PhaseState& now) {
    return std::abs(now.Sw - before.Sw) + std::abs(now.Sg - before.Sg) < StillComposition;
}

/// All substeps; returns what was not there to be given.
template <class Kind>
ConservedAmounts passSubsteps(const TankStep& step, const ConservedAmounts& start, TankOutflow& out) {
    ConservedAmounts held = start, missing;
    PhaseState state = stateOf<Kind>(step, held);
    int count = 0;
    for (double left = step.dt; left > 0.0;) {
        Substep sub;
        firstLook<Kind>(step, state, left, ++count, sub);
        takeSubstep<Kind>(step, held, sub);
        sub.nextState = stateOf<Kind>(step, sub.next);
        if (step.local.region != nullptr && !sub.steady && !isStill(state, sub.nextState))
            meanOverSubstep<Kind>(step, held, sub);
        countSubstep<Kind>(step, sub, out);
        held = sub.next;
        keepWhatIsThere(held, missing);
        left = sub.length < left ? left - sub.length : 0.0;
        if (left > 0.0) state = staysAbove(sub.next, {}) ? sub.nextState : stateOf<Kind>(step, held);
    }
    return missing;
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
        if (staysAbove(moved<true>(start, dt, flows.inflow, 1.0, step.request), step.floor)) return out;
    }
    boundSubsteps(slopes, step);
    out.followed = 0.0;
    const auto pass = tables.hasGas ? (step.buoyant.empty() ? passSubsteps<TankKind<true, false>>
                                                            : passSubsteps<TankKind<true, true>>)
                                    : (step.buoyant.empty() ? passSubsteps<TankKind<false, false>>
                                                            : passSubsteps<TankKind<false, true>>);
    const ConservedAmounts missing = pass(step, start, out);
    accountForMissing(fluid, flows, step.request, dt, missing, step.buoyant, out);
    return out;
}

}  // namespace kvr
