#include "pressure/stirred_tank.hpp"

#include "base/constants.hpp"
#include "fluid/saturation_functions.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double Courant = 0.8;            // of a substep: below 1 no component is overdrawn by its own flow
constexpr int MostSubsteps = 4000;         // behind them a tank counts as steady
constexpr double StillComposition = 1e-8;  // change of a volume share in one substep
constexpr double MobilityGuard = 1e-20;    // 1/cp

/// Saturations as volume shares, and the solution gas of the oil.
PhaseState stateOf(const FluidTables& tables, const SaturationTable& table, const TankFluid& fluid,
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

/// Surface amounts that a reservoir volume takes along at the tank's own mobilities. Where nothing is mobile
/// the phases leave as they stand.
ConservedAmounts flowing(const FluidTables& tables, const TankFluid& fluid, const PhaseState& state) {
    const RelPerms kr = relPermsAtCell(tables, fluid.cell, fluid.region, state.Sw, state.Sg);
    double w = kr.w / fluid.MuW, o = kr.o / fluid.MuO, g = tables.hasGas ? kr.g / fluid.MuG : 0.0;
    if (!(w + o + g > MobilityGuard)) {
        w = state.Sw;
        o = state.So;
        g = state.Sg;
    }
    const double share = 1.0 / (w + o + g);
    ConservedAmounts out;
    out.water = w * share / fluid.factors.Bw;
    out.oil = o * share / fluid.factors.Bo;
    if (tables.hasGas) out.gas = g * share / fluid.factors.Bg + state.Rs * out.oil;
    return out;
}

/// What a known make-up has to leave of each component: its immobile part, as far as it is there.
ConservedAmounts floorOf(const FluidTables& tables, const SaturationTable& table, const TankFluid& fluid,
                         const ConservedAmounts& start) {
    ConservedAmounts floor;
    floor.water = std::min(start.water, table.ConnateSw * fluid.poreVolume / fluid.factors.Bw);
    if (!tables.hasGas)
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

/// Length of a substep: even parts of the step.
double substepOf(const TankFluid& fluid, const TankFlows& flows, double inflowVolume, double dt,
                 double slope) {
    const double through = std::max(inflowVolume, flows.rest + flows.asked);
    return dt / std::max(1.0, std::ceil(dt * through * slope / (Courant * fluid.poreVolume)));
}

/// Amounts that are left after a substep may not be negative: takes back what was not there.
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

ConservedAmounts perVolume(const ConservedAmounts& amounts, double volume) {
    return {amounts.water / volume, amounts.oil / volume, amounts.gas / volume};
}

double givenShare(double missing, double asked) {
    return missing > 0.0 && asked > 0.0 ? std::max(0.0, 1.0 - missing / asked) : 1.0;
}

/// Shares of the outflow that were there, and the reservoir volume of what was not.
void accountForMissing(const TankFluid& fluid, const TankFlows& flows, double dt,
                       const ConservedAmounts& missing, TankOutflow& out) {
    if (!(missing.water + missing.oil + missing.gas > 0.0)) return;
    ConservedAmounts asked;
    add(dt * flows.rest, out.own, asked);
    add(dt * flows.asked, out.apart, asked);
    add(dt * out.followed, flows.request, asked);
    out.given = {givenShare(missing.water, asked.water), givenShare(missing.oil, asked.oil),
                 givenShare(missing.gas, asked.gas)};
    const double freeGas = std::max(0.0, missing.gas - fluid.saturatedRs * missing.oil);
    out.deficit =
        fluid.factors.Bw * missing.water + fluid.factors.Bo * missing.oil + fluid.factors.Bg * freeGas;
}

bool isStill(const PhaseState& before, const PhaseState& now) {
    return std::abs(now.Sw - before.Sw) + std::abs(now.Sg - before.Sg) < StillComposition;
}

}  // namespace

double volumeOf(const TankFluid& fluid, const ConservedAmounts& amounts) {
    const double dissolved = std::min(amounts.gas, fluid.saturatedRs * amounts.oil);
    return fluid.factors.Bw * amounts.water + fluid.factors.Bo * amounts.oil +
           fluid.factors.Bg * (amounts.gas - dissolved);
}

ConservedAmounts ownMakeUp(const FluidTables& tables, const TankFluid& fluid, const ConservedAmounts& held) {
    return flowing(tables, fluid, stateOf(tables, regionTable(tables, fluid.region), fluid, held));
}

TankOutflow emptyTank(const FluidTables& tables, const TankFluid& fluid, const TankFlows& flows, double dt,
                      double slope, const ConservedAmounts& start) {
    TankOutflow out;
    const SaturationTable& table = regionTable(tables, fluid.region);
    const ConservedAmounts floor = floorOf(tables, table, fluid, start);
    if (flows.rest <= 0.0) {
        if (flows.asked <= 0.0) return out;
        if (staysAbove(moved(start, dt, flows.inflow, 1.0, flows.request), floor)) return out;
    }
    const double inVolume = volumeOf(fluid, flows.inflow);
    const double h = substepOf(fluid, flows, inVolume, dt, slope);
    out.followed = 0.0;
    ConservedAmounts held = start, missing;
    PhaseState state = stateOf(tables, table, fluid, held);
    int count = 0;
    for (double left = dt; left > 0.0;) {
        double length = std::min(h, left);
        const bool steady = ++count > MostSubsteps && inVolume > 0.0;
        if (steady) length = left;
        const ConservedAmounts own =
            steady ? perVolume(flows.inflow, inVolume) : flowing(tables, fluid, state);
        const auto after = [&](double time, bool follow) {
            const ConservedAmounts rest = moved(held, time, flows.inflow, flows.rest, own);
            return follow ? moved(rest, time, {}, 1.0, flows.request)
                          : moved(rest, time, {}, flows.asked, own);
        };
        const bool follow = flows.asked > 0.0 && staysAbove(after(length, true), floor);
        ConservedAmounts next = after(length, follow);
        PhaseState nextState = stateOf(tables, table, fluid, next);
        if (length < left && isStill(state, nextState) &&
            staysAbove(after(left, follow), follow ? floor : ConservedAmounts{})) {
            length = left;
            next = after(left, follow);
        }
        add(length / dt, own, out.own);
        if (follow)
            out.followed += length / dt;
        else
            add(length / dt, own, out.apart);
        held = next;
        keepWhatIsThere(held, missing);
        left = length < left ? left - length : 0.0;
        if (left > 0.0) state = staysAbove(next, {}) ? nextState : stateOf(tables, table, fluid, held);
    }
    accountForMissing(fluid, flows, dt, missing, out);
    return out;
}

}  // namespace kvr
