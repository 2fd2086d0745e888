#include "pressure/stirred_tank.hpp"

#include "base/constants.hpp"
#include "fluid/saturation_functions.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double Courant = 0.8;            // of a substep: below 1 no component is overdrawn by its own flow
constexpr double LeastSlope = 1.0;         // of a fractional flow, that substeps go by
constexpr double MobileShare = 0.4;        // of what is mobile that a substep takes by gravity ...
constexpr double LeastPart = 1e-3;         // ... of a substep without it, at the least
constexpr double Rounding = 1e-9;          // of what is held: to lose no more than that is to keep it
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

/// Even parts of `days`, of at most `longest` each.
double evenPart(double longest, double days) {
    return days / std::max(1.0, std::ceil(days / longest));
}

/// Length of a substep by the steepest rise of all: even parts of the step.
double substepOf(const TankFluid& fluid, double through, double dt, double slope) {
    return dt / std::max(1.0, std::ceil(dt * through * slope / (Courant * fluid.poreVolume)));
}

/// What bounds the substeps of a tank by the saturations that they lead through.
struct LocalSlopes {
    const RegionSlopes* region = nullptr;  // none: the steepest rise holds
    double through = 0.0;                  // reservoir volume a day
    double pull = 0.0;                     // sum of |pull| * flow, cp volume a day
    double steepest = 0.0;                 // bound of what gravity makes of them, volume a day
};

LocalSlopes localSlopes(const FractionSlopes& slopes, const FluidTables& tables, const TankFluid& fluid,
                        double through, double steepest, std::span<const BuoyantFlow> buoyant) {
    const bool served = tables.RegionTableCell.empty() || tables.RegionTableCell[fluid.cell] != 0;
    if (slopes.regions.empty() || !served) return {};
    LocalSlopes local{&slopes.regions[static_cast<std::size_t>(fluid.region) - 1], through, 0.0, steepest};
    for (const BuoyantFlow& face : buoyant) local.pull += std::abs(face.pull) * face.flow;
    return local;
}

/// Rise of what leaves with saturation between two of them, volume a day.
double riseBetween(const LocalSlopes& slopes, double a, double b) {
    const SlopeRange range = steepestBetween(*slopes.region, a, b);
    const double rise = slopes.through * std::max(LeastSlope, range.flow) + slopes.pull * range.exchange;
    return std::min(rise, slopes.steepest);
}

/// Length of a substep from Sw at which water comes in the place of oil by `gain` pore volumes a day.
double localSubstep(const LocalSlopes& slopes, const TankFluid& fluid, double Sw, double gain, double left) {
    const double volume = Courant * fluid.poreVolume;
    const double first = std::min(left, volume / riseBetween(slopes, Sw, Sw));
    return evenPart(volume / riseBetween(slopes, Sw, Sw + first * gain), left);
}

/// The immobile parts in the volume that is held. A step of compression leaves it apart from the pore volume
/// by more than what may be mobile.
ConservedAmounts floorIn(const TankFluid& fluid, const ConservedAmounts& floor,
                         const ConservedAmounts& held) {
    const double filled = volumeOf(fluid, held) / fluid.poreVolume;
    return {filled * floor.water, filled * floor.oil, filled * floor.gas};
}

/// Days in which a component loses MobileShare of what is above its immobile part; no bound where all of
/// `length` days take no more than rounding, as they do from what is immobile to the last digits.
double daysAbove(double length, double held, double floor, double loss) {
    return length * loss > Rounding * held ? MobileShare * std::max(0.0, held - floor) / loss : HUGE_VAL;
}

/// Length of a substep of at most `length` days in which water or oil leave by gravity too. The fraction of
/// water then rises to 1 within a little of what is mobile, as steep as gravity is strong against the flow:
/// no slope of the curves without it bounds what a substep would take.
double lengthUnderGravity(double length, const ConservedAmounts& held, const ConservedAmounts& floor,
                          const ConservedAmounts& loss) {
    const double days = std::min(daysAbove(length, held.water, floor.water, loss.water),
                                 daysAbove(length, held.oil, floor.oil, loss.oil));
    return std::clamp(days, LeastPart * length, length);
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

/// Share of what leaves at the end of a substep in its mean, the rest is of its start. Where the flow of a
/// component out of a tank rises in line with what it holds, by `rise` of what it gains at the start over
/// the substep, that is that of the exponential: (1 - (1 - exp(-z)) / z) / z.
double weightOfEnd(double rise) {
    // No number where nothing is gained. Up to 1 the series errs by less than 2e-4.
    const double z = rise > 0.0 ? std::min(rise, 1.0) : 0.0;
    return 1.0 / 2.0 - z * (1.0 / 6.0 - z * (1.0 / 24.0 - z * (1.0 / 120.0 - z / 720.0)));
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

TankOutflow emptyTank(const FluidTables& tables, const TankFluid& fluid, const TankFlows& flows, double dt,
                      const FractionSlopes& slopes, const ConservedAmounts& start,
                      std::span<BuoyantFlow> buoyant) {
    TankOutflow out;
    const SaturationTable& table = regionTable(tables, fluid.region);
    const ConservedAmounts floor = floorOf(tables, table, fluid, start);
    const double inVolume = volumeOf(fluid, flows.inflow);
    ConservedAmounts request = flows.request;
    PhaseState state;
    if (!buoyant.empty()) {
        state = tankState(tables, table, fluid, start);
        if (!gravityTurns(tables, fluid, flows, inVolume, state, buoyant)) buoyant = {};
        const double Rs = tables.hasGas ? state.Rs : 0.0;
        const double turnedKnown = moveKnown(tables, table, fluid, flows, dt, Rs, start, buoyant);
        exchange(fluid, turnedKnown, Rs * turnedKnown, request);
    }
    if (flows.rest <= 0.0) {
        if (flows.asked <= 0.0) return out;
        if (staysAbove(moved(start, dt, flows.inflow, 1.0, request), floor)) return out;
    }
    const double through = throughflow(flows, inVolume);
    const double steepest = buoyant.empty() ? slopes.steepest : BuoyantSlope * slopes.steepest;
    const double h = substepOf(fluid, through, dt, steepest);
    const LocalSlopes local = localSlopes(slopes, tables, fluid, through, through * steepest, buoyant);
    out.followed = 0.0;
    ConservedAmounts held = start, missing;
    state = tankState(tables, table, fluid, held);
    int count = 0;
    const double tilt = std::abs(flows.tilt) > SteadyInflow * inVolume ? flows.tilt : 0.0;
    for (double left = dt; left > 0.0;) {
        const double elapsed = dt - left;
        double length = std::min(h, left);
        const bool steady = ++count > MostSubsteps && inVolume > 0.0;
        ConservedAmounts own;
        OwnExchange turned, turnedThen;
        double weight = 0.0;  // of the substep's end in the mean of what leaves
        if (steady) {
            length = left;
            own = perVolume(flows.inflow, inVolume);
        } else {
            const std::array<double, 3> mobility = mobilityAt(tables, fluid, state);
            own = makeUpOf(fluid, state, tables.hasGas, mobility);
            turned = turnedAt(tables, fluid, state, mobility, buoyant);
            if (local.region != nullptr) {
                const double gain =
                    waterGain(fluid, flows, request, own, turned, flows.asked > 0.0) / fluid.poreVolume;
                length = localSubstep(local, fluid, state.Sw, gain, left);
            }
        }
        const auto after = [&](double time, bool follow) {
            ConservedAmounts inflow = flows.inflow;
            if (tilt != 0.0) exchange(fluid, tilt * fromMiddle(elapsed, time, dt), 0.0, inflow);
            const ConservedAmounts net = moved(held, time, inflow, flows.rest, own);
            const ConservedAmounts rest =
                moved(net, time, {}, 1.0, between(turned.rest, turnedThen.rest, weight));
            if (follow) return moved(rest, time, {}, 1.0, request);
            return moved(moved(rest, time, {}, flows.asked, own), time, {}, 1.0,
                         between(turned.asked, turnedThen.asked, weight));
        };
        const bool follow = flows.asked > 0.0 && staysAbove(after(length, true), floor);
        ConservedAmounts kept = follow ? floor : ConservedAmounts{};
        if (!follow && !buoyant.empty()) {
            kept = floorIn(fluid, floor, held);
            if (count <= MostSubsteps)
                length = lengthUnderGravity(length, held, kept, lossOf(held, after(length, false), length));
        }
        ConservedAmounts next = after(length, follow);
        PhaseState nextState = tankState(tables, table, fluid, next);
        if (local.region != nullptr && !steady && !isStill(state, nextState)) {
            const ConservedAmounts ownNow = own, nextByStart = next;
            const std::array<double, 3> mobility = mobilityAt(tables, fluid, nextState);
            const ConservedAmounts ownThen = makeUpOf(fluid, nextState, false, mobility);
            turnedThen = turnedAt(tables, fluid, nextState, mobility, buoyant);
            const double gain = waterGain(fluid, flows, request, own, turned, follow);
            weight = weightOfEnd(1.0 - waterGain(fluid, flows, request, ownThen, turnedThen, follow) / gain);
            own = between(ownNow, ownThen, weight);
            next = after(length, follow);
            if (!staysAbove(next, kept)) {  // where gravity asks for more with what the flow has brought
                weight = 0.0;
                own = ownNow;
                next = nextByStart;
            } else {
                nextState = tankState(tables, table, fluid, next);
            }
        }
        add(length / dt, own, out.own);
        const double moment = tables.hasGas ? 0.0 : 12.0 * length / dt * fromMiddle(elapsed, length, dt);
        out.tilt += moment * fluid.factors.Bw * own.water;
        addMeans((1.0 - weight) * length / dt, (1.0 - weight) * moment, follow, turned, buoyant);
        if (weight > 0.0) addMeans(weight * length / dt, weight * moment, follow, turnedThen, buoyant);
        if (follow)
            out.followed += length / dt;
        else
            add(length / dt, own, out.apart);
        held = next;
        keepWhatIsThere(held, missing);
        left = length < left ? left - length : 0.0;
        if (left > 0.0) state = staysAbove(next, {}) ? nextState : tankState(tables, table, fluid, held);
    }
    accountForMissing(fluid, flows, request, dt, missing, buoyant, out);
    return out;
}

}  // namespace kvr
