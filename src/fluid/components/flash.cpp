#include "fluid/components/flash.hpp"

#include "fluid/components/phase_split.hpp"
#include "fluid/components/stability.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double LeastFeed = 1e-30;  // a component that is not there; keeps logarithms finite
constexpr int MostSubstitutions = 50;
constexpr double NearEnough = 1e-3;  // |1 - f_L/f_V| from where Newton is quicker
constexpr double EnergyRounding = 1e-13;
// B/Z of a phase that has no other phase beside it: above, liquid; 1/1.75 is the usual limit of V/b.
constexpr double LiquidPacking = 1.0 / 1.75;
constexpr double SureVapour = 0.45, SureLiquid = 0.75;
constexpr double NearLimit = -1e-4;  // tangent plane distance in RT of a feed near its limit of stability
constexpr int MostShareHalvings = 40;

// What a feed found stable tells of its neighbours, see keepStable.
constexpr double StableReach = 0.02;               // of ln(f/P) of a component and of twice ln P
constexpr double ClearDistance = 4 * StableReach;  // of the lowest trial from the tangent plane
constexpr double LeastJudged = 1e-8;               // fraction of a component that tells a change of the feed
constexpr std::size_t PressurePlace = MaxComponents - 1;

Composition usableFeed(int count, const Composition& feed) {
    Composition z{};
    double sum = 0.0;
    for (int i = 0; i < count; ++i) sum += z[i] = std::max(feed[i], LeastFeed);
    for (int i = 0; i < count; ++i) z[i] /= sum;
    return z;
}

void keepSplit(const PhaseSplit& split, bool isSolved, FlashState& state) {
    state.phases = FluidPhases::Both;
    state.hasK = isSolved;
    state.isSolved = isSolved;
    state.vapourFraction = split.V;
    state.lnK = split.lnK;
    state.liquid = split.x;
    state.vapour = split.y;
    state.zLiquid = split.zLiquid;
    state.zVapour = split.zVapour;
}

void keepOnePhase(const Composition& feed, FluidPhases name, double Z, FlashState& state) {
    state.phases = name;
    state.isSolved = true;
    state.vapourFraction = name == FluidPhases::Vapour ? 1.0 : 0.0;
    state.liquid = state.vapour = feed;
    state.zLiquid = state.zVapour = Z;
}

/// Name of a stable feed that no tie line tells.
FluidPhases nameByDensity(double feedPacking, const Stability& plane, FluidPhases last) {
    if (plane.hasShadow)
        return feedPacking >= plane.shadowPacking ? FluidPhases::Liquid : FluidPhases::Vapour;
    const bool isBetween = feedPacking > SureVapour && feedPacking < SureLiquid;
    if (isBetween && (last == FluidPhases::Liquid || last == FluidPhases::Vapour)) return last;
    return feedPacking > LiquidPacking ? FluidPhases::Liquid : FluidPhases::Vapour;
}

/// The feed at its stable root.
struct WholeFeed {
    EosMixture mixture;
    double Z = 1.0;
    Composition lnPhi{};
};

WholeFeed wholeFeed(const ComponentSet& set, const Composition& feed, double pressure) {
    WholeFeed whole;
    PR_EOS(set, feed, pressure, whole.mixture);
    whole.Z = stableRoot(whole.mixture);
    fugacityCoefficients(set, whole.mixture, whole.Z, whole.lnPhi);
    return whole;
}

/// A state without K keeps in their place the ln(f_i/P) of a feed that the tangent plane has found stable,
/// behind them its pressure: 0 where the next feed has to be tested, as it always has where there is no room
/// for it.
///
/// The distance of a trial W from the plane changes by -sum W_i (change of ln f_i/P of the feed), where the
/// sum of W is at most 1 above the plane. Feeds within StableReach need no test where the lowest trial is
/// clear of the plane and the feed of its own limit of stability, so that none appears beside it.
void keepStable(const ComponentSet& set, const Composition& feed, const WholeFeed& whole,
                const Stability& plane, FlashState& state) {
    const bool isClear = set.count < MaxComponents && (!plane.hasShadow || plane.distance >= ClearDistance) &&
                         isFarFromLimit(set, whole.mixture, feed, whole.Z);
    state.lnK[PressurePlace] = isClear ? whole.mixture.pressure : 0.0;
    for (int i = 0; isClear && i < set.count; ++i) state.lnK[i] = std::log(feed[i]) + whole.lnPhi[i];
}

bool isNearStable(const ComponentSet& set, const Composition& feed, const WholeFeed& whole,
                  const FlashState& state) {
    const double tested = state.lnK[PressurePlace];
    const bool isOne = state.phases == FluidPhases::Liquid || state.phases == FluidPhases::Vapour;
    if (!isOne || state.hasK || set.count == MaxComponents || !(tested > 0.0)) return false;
    if (std::abs(whole.mixture.pressure - tested) > 0.5 * StableReach * tested) return false;
    const double least = std::log(LeastJudged);
    for (int i = 0; i < set.count; ++i) {
        const double now = std::log(feed[i]), before = state.lnK[i] - whole.lnPhi[i];
        if (std::abs(now - before) > StableReach && std::max(now, before) > least) return false;
    }
    return true;
}

/// Newton from the K of the last flash of the place.
bool flashFromLast(const ComponentSet& set, const Composition& feed, double pressure, FlashState& state) {
    PhaseSplit split;
    split.lnK = state.lnK;
    split.V = state.vapourFraction;
    if (!convergeNear(set, feed, pressure, split)) return false;
    if (split.V > 0.0 && split.V < 1.0) {
        keepSplit(split, true, state);
        return true;
    }
    state.lnK = split.lnK;
    const WholeFeed whole = wholeFeed(set, feed, pressure);
    keepOnePhase(feed, split.V <= 0.0 ? FluidPhases::Liquid : FluidPhases::Vapour, whole.Z, state);
    return true;
}

/// Successive substitution, then Newton; only a result that is better than the undivided feed counts.
bool flashFromWilson(const ComponentSet& set, const Composition& feed, double pressure,
                     const WholeFeed& whole, FlashState& state) {
    PhaseSplit split;
    substituteFromWilson(set, feed, pressure, MostSubstitutions, NearEnough, split);
    if (!(split.V > 0.0 && split.V < 1.0)) return false;
    if (!convergeNear(set, feed, pressure, split) || !(split.V > 0.0 && split.V < 1.0)) return false;
    if (splitEnergy(set.count, split) > feedEnergy(set.count, feed, whole.lnPhi) + EnergyRounding)
        return false;
    keepSplit(split, true, state);
    return true;
}

/// A first split of an unstable feed: as much of the second phase as lowers the energy.
bool firstSplit(const ComponentSet& set, const Composition& feed, double pressure, const WholeFeed& whole,
                const Stability& plane, PhaseSplit& split) {
    const bool isVapour = plane.shadowPacking < packing(whole.mixture, whole.Z);
    double share = 1.0;
    for (int i = 0; i < set.count; ++i)
        share = std::min(share, feed[i] / std::max(plane.shadow[i], LeastFeed));
    share *= 0.5;
    const double undivided = feedEnergy(set.count, feed, whole.lnPhi);
    for (int halving = 0; halving < MostShareHalvings; ++halving, share *= 0.5) {
        for (int i = 0; i < set.count; ++i) {
            const double second = std::max(plane.shadow[i], LeastFeed);
            const double first = (feed[i] - share * second) / (1.0 - share);
            split.lnK[i] = isVapour ? std::log(second / first) : std::log(first / second);
        }
        split.V = isVapour ? share : 1.0 - share;
        if (!evaluateSplit(set, feed, pressure, SplitRange::Inside, split)) continue;
        if (splitEnergy(set.count, split) < undivided) return true;
    }
    return false;
}

/// Two phases from the lowest point of the tangent plane: by Newton where the feed is so near its limit that
/// the other phase has that composition, else down the energy.
bool splitUnstable(const ComponentSet& set, const Composition& feed, double pressure, const WholeFeed& whole,
                   const Stability& plane, FlashState& state) {
    PhaseSplit split;
    const bool isVapour = plane.shadowPacking < packing(whole.mixture, whole.Z);
    for (int i = 0; i < set.count; ++i) {
        const double ratio = std::log(std::max(plane.shadow[i], LeastFeed) / feed[i]);
        split.lnK[i] = isVapour ? ratio : -ratio;
    }
    split.V = isVapour ? 0.0 : 1.0;
    const double highest = feedEnergy(set.count, feed, whole.lnPhi) + EnergyRounding;
    if (plane.distance > NearLimit && convergeNear(set, feed, pressure, split) && split.V > 0.0 &&
        split.V < 1.0 && splitEnergy(set.count, split) <= highest) {
        keepSplit(split, true, state);
        return true;
    }
    if (!firstSplit(set, feed, pressure, whole, plane, split)) return false;
    const bool isSolved = descendSplit(set, feed, pressure, split);
    keepSplit(split, isSolved, state);
    return true;
}

}  // namespace

void FlashPT(const ComponentSet& set, const Composition& given, double pressure, FlashState& state) {
    const Composition feed = usableFeed(set.count, given);
    if (state.hasK && flashFromLast(set, feed, pressure, state)) return;
    const WholeFeed whole = wholeFeed(set, feed, pressure);
    if (isNearStable(set, feed, whole, state)) return keepOnePhase(feed, state.phases, whole.Z, state);
    const bool isNew = state.phases == FluidPhases::Unknown || state.hasK;
    if (isNew && flashFromWilson(set, feed, pressure, whole, state)) return;
    const Stability plane = stabilityTest(set, feed, pressure, whole.lnPhi, isNew);
    if (!plane.isStable && splitUnstable(set, feed, pressure, whole, plane, state)) return;
    state.hasK = false;
    keepStable(set, feed, whole, plane, state);
    keepOnePhase(feed, nameByDensity(packing(whole.mixture, whole.Z), plane, state.phases), whole.Z, state);
}

PhaseVolumes phaseVolumes(const ComponentSet& set, double pressure, const FlashState& state) {
    const double unit = GasConstant * set.temperature / pressure;
    return {(1.0 - state.vapourFraction) * state.zLiquid * unit, state.vapourFraction * state.zVapour * unit};
}

}  // namespace kvr
