#pragma once

#include "fluid/saturation_functions.hpp"
#include "pressure/stirred_tank.hpp"

#include <algorithm>
#include <array>
#include <span>

namespace kvr {

// What a stirred tank computes for every substep, inline: a step takes it millions of times. Where `HasGas`
// or `hasGas` is a constant false the gas costs nothing.

/// Saturations as volume shares of a tank without gas.
inline PhaseState waterOilState(const TankFluid& fluid, const ConservedAmounts& held) {
    const double water = fluid.factors.Bw * held.water, oil = fluid.factors.Bo * held.oil;
    const double sum = water + oil;
    PhaseState state;
    state.Sw = sum > 0.0 ? water / sum : 1.0;
    state.So = 1.0 - state.Sw;
    return state;
}

/// Surface amounts that a reservoir volume takes along at these mobilities of water, oil and gas, 1/cp. Where
/// nothing is mobile the phases leave as they stand.
inline ConservedAmounts makeUpOf(const TankFluid& fluid, const PhaseState& state, bool hasGas,
                                 std::array<double, 3> mobility) {
    constexpr double MobilityGuard = 1e-20;  // 1/cp
    auto& [w, o, g] = mobility;
    if (!(w + o + g > MobilityGuard)) mobility = {state.Sw, state.So, state.Sg};
    const double share = 1.0 / (w + o + g);
    ConservedAmounts out;
    out.water = w * share / fluid.factors.Bw;
    out.oil = o * share / fluid.factors.Bo;
    if (hasGas) out.gas = g * share / fluid.factors.Bg + state.Rs * out.oil;
    return out;
}

inline PairMobility pairOf(double water, double oil) {
    const double sum = water + oil;
    return sum > 0.0 ? PairMobility{water, oil, water / sum, oil / sum} : PairMobility{water, oil};
}

inline PairMobility pairMobility(const FluidTables& tables, const TankFluid& fluid, double Sw) {
    const RelPerms kr = relPermsAtCell(tables, fluid.cell, fluid.region, Sw, 0.0);
    return pairOf(kr.w / fluid.MuW, kr.o / fluid.MuO);
}

/// The share of buoyantShare.
inline double shareTurned(double pull, const PairMobility& lambda) {
    if (pull < 0.0) return -std::min(1.0, -pull * lambda.oil) * lambda.waterShare;
    return std::min(1.0, pull * lambda.water) * lambda.oilShare;
}

/// Water of volume `water` in the place of oil, and `gas`, Rs times that volume, of what the oil held.
inline void exchange(const TankFluid& fluid, double water, double gas, ConservedAmounts& out) {
    out.water += water / fluid.factors.Bw;
    out.oil -= water / fluid.factors.Bo;
    out.gas -= gas / fluid.factors.Bo;
}

/// The same as turnedOwn by known mobilities.
inline OwnExchange turnedBy(const PairMobility& lambda, const TankFluid& fluid, double Rs,
                            std::span<const BuoyantFlow> buoyant) {
    double rest = 0.0, asked = 0.0;  // water in the place of oil
    for (const BuoyantFlow& face : buoyant) {
        const double water = face.flow * shareTurned(face.pull, lambda);
        rest += (1.0 - face.followed) * water;
        asked += face.followed * water;
    }
    OwnExchange turned{lambda, Rs, {}, {}};
    exchange(fluid, rest, Rs * rest, turned.rest);
    exchange(fluid, asked, Rs * asked, turned.asked);
    return turned;
}

/// Counts a substep, a share of the step, in the means of the faces and by its `moment` in their change over
/// the step. `follow`: known make-ups were followed.
inline void addMeans(double share, double moment, bool follow, const OwnExchange& turned,
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

/// Held amounts after h days of what comes in and of a flow that takes `out` along per volume.
template <bool HasGas>
ConservedAmounts moved(const ConservedAmounts& held, double h, const ConservedAmounts& in, double outFlow,
                       const ConservedAmounts& out) {
    return {held.water + h * (in.water - outFlow * out.water), held.oil + h * (in.oil - outFlow * out.oil),
            HasGas ? held.gas + h * (in.gas - outFlow * out.gas) : 0.0};
}

template <bool HasGas>
ConservedAmounts between(const ConservedAmounts& a, const ConservedAmounts& b, double weight) {
    return {a.water + weight * (b.water - a.water), a.oil + weight * (b.oil - a.oil),
            HasGas ? a.gas + weight * (b.gas - a.gas) : 0.0};
}

inline bool staysAbove(const ConservedAmounts& held, const ConservedAmounts& floor) {
    return held.water >= floor.water && held.oil >= floor.oil && held.gas >= floor.gas;
}

/// Amounts that are left after a substep may not be negative: takes back what was not there.
inline void keepWhatIsThere(ConservedAmounts& held, ConservedAmounts& missing) {
    const auto keep = [](double& amount, double& lacking) {
        if (amount >= 0.0) return;
        lacking -= amount;
        amount = 0.0;
    };
    keep(held.water, missing.water);
    keep(held.oil, missing.oil);
    keep(held.gas, missing.gas);
}

}  // namespace kvr
