#include "fluid/components/flash.hpp"

#include "fluid/components/phase_split.hpp"
#include "fluid/components/rachford_rice.hpp"
#include "fluid/components/stability.hpp"
#include "unit/fluid/components/component_samples.hpp"

#include <cmath>
#include <gtest/gtest.h>
#include <vector>

namespace kvr {
namespace {

FlashState flashed(const ComponentSet& set, const Composition& feed, double pressure) {
    FlashState state;
    FlashPT(set, feed, pressure, state);
    return state;
}

TEST(RachfordRice, NamesOnePhaseByTheEndThatHasNoRoot) {
    const Composition z = {0.5, 0.5};
    EXPECT_EQ(vapourFraction(2, z, {1.5, 0.1}, 0.5), 0.0);
    EXPECT_EQ(vapourFraction(2, z, {9.0, 0.9}, 0.5), 1.0);
    EXPECT_EQ(vapourFraction(2, z, {1.0, 1.0}, 0.5), 0.0);
}

TEST(RachfordRice, FindsTheRootOfTwoComponentsInClosedForm) {
    // V = -(z1 (K1 - 1) + z2 (K2 - 1)) / ((K1 - 1)(K2 - 1)).
    const Composition z = {0.3, 0.7};
    for (const double heavy : {0.5, 1e-3, 1e-12})
        for (const double light : {4.0, 1e3, 1e8}) {
            const double expected =
                -(z[0] * (light - 1.0) + z[1] * (heavy - 1.0)) / ((light - 1.0) * (heavy - 1.0));
            double V = 0.5;
            EXPECT_TRUE(negativeFlash(2, z, {light, heavy}, V));
            EXPECT_NEAR(V, expected, 1e-12) << light << ' ' << heavy;
            const double clipped = expected <= 0.0 ? 0.0 : expected >= 1.0 ? 1.0 : expected;
            EXPECT_NEAR(vapourFraction(2, z, {light, heavy}, 0.9), clipped, 1e-12);
        }
    double V = 0.5;
    EXPECT_FALSE(negativeFlash(2, z, {4.0, 1.1}, V));
}

TEST(Wilson, GivesTheFirstKValues) {
    Composition lnK;
    wilsonLnK(methaneDecane(), 1000.0, lnK);
    EXPECT_NEAR(std::exp(lnK[0]), 7.52901161, 1e-8);
    EXPECT_NEAR(std::exp(lnK[1]), 5.32030853e-4, 1e-12);
    wilsonLnK(onlyComponent(1, 1.0), 1000.0, lnK);
    EXPECT_NEAR(std::exp(lnK[0]), 1e-20, 1e-32);
}

TEST(Substitution, ComesWithinAMillionthInEightPasses) {
    const ComponentSet set = methaneDecane();
    PhaseSplit split;
    EXPECT_LE(substituteFromWilson(set, {0.5, 0.5}, 1000.0, 50, 1e-6, split), 8);
    EXPECT_NEAR(split.V, 0.344412676, 1e-6);
}

TEST(FlashPT, SplitsMethaneAndDecaneInTwo) {
    const ComponentSet set = methaneDecane();
    const FlashState state = flashed(set, {0.5, 0.5}, 1000.0);
    EXPECT_EQ(state.phases, FluidPhases::Both);
    EXPECT_NEAR(state.vapourFraction, 0.344412676, 1e-9);
    EXPECT_NEAR(state.liquid[0], 0.238466796, 1e-9);
    EXPECT_NEAR(state.liquid[1], 0.761533204, 1e-9);
    EXPECT_NEAR(state.vapour[0], 0.997826779, 1e-9);
    EXPECT_NEAR(state.vapour[1], 0.002173221, 1e-9);
    EXPECT_NEAR(std::exp(state.lnK[0]), 4.18434262, 1e-8);
    EXPECT_NEAR(std::exp(state.lnK[1]), 0.00285374397, 1e-11);
    EXPECT_NEAR(state.zLiquid, 0.435894296, 1e-9);
    EXPECT_NEAR(state.zVapour, 0.922606878, 1e-9);
    const double liquid = molarDensity(set, 1000.0, state.zLiquid),
                 vapour = molarDensity(set, 1000.0, state.zVapour);
    EXPECT_NEAR(liquid, 0.344980281, 1e-9);
    EXPECT_NEAR(vapour, 0.162989178, 1e-9);
    EXPECT_NEAR(liquid * molarMass(set, state.liquid), 38.70005, 1e-5);
    EXPECT_NEAR(vapour * molarMass(set, state.vapour), 2.659552, 1e-6);
}

TEST(FlashPT, SplitsALighterFeedAtMorePressure) {
    const FlashState state = flashed(methaneDecane(), {0.7, 0.3}, 1500.0);
    EXPECT_NEAR(state.vapourFraction, 0.55262833, 1e-8);
    EXPECT_NEAR(state.liquid[0], 0.333222595, 1e-9);
    EXPECT_NEAR(state.vapour[0], 0.996918944, 1e-9);
    EXPECT_NEAR(state.zLiquid, 0.597328324, 1e-9);
    EXPECT_NEAR(state.zVapour, 0.898141844, 1e-9);
}

TEST(FlashPT, LeavesAFeedWholeAndNamesIt) {
    const ComponentSet set = methaneDecane();
    const struct {
        Composition feed;
        double pressure, V;
    } cases[] = {{{0.5, 0.5}, 3000.0, 0.0}, {{0.3, 0.7}, 4000.0, 0.0}, {{0.99, 0.01}, 14.7, 1.0}};
    for (const auto& c : cases) {
        const FlashState state = flashed(set, c.feed, c.pressure);
        EXPECT_EQ(state.vapourFraction, c.V) << c.pressure;
        for (int i = 0; i < 2; ++i) {
            EXPECT_NEAR(state.liquid[i], c.feed[i], 1e-16);
            EXPECT_NEAR(state.vapour[i], c.feed[i], 1e-16);
        }
        EXPECT_EQ(state.zLiquid, state.zVapour);
    }
}

TEST(FlashPT, HasOnePhaseOfOneComponent) {
    for (const double pressure : {0.01, 14.7, 1000.0, 10000.0}) {
        const FlashState gas = flashed(onlyComponent(0, Fahrenheit160), {1.0}, pressure);
        EXPECT_EQ(gas.phases, FluidPhases::Vapour) << pressure;
    }
    EXPECT_EQ(flashed(onlyComponent(1, Fahrenheit160), {1.0}, 14.7).phases, FluidPhases::Liquid);
    EXPECT_EQ(flashed(onlyComponent(1, Fahrenheit160), {1.0}, 1e-3).phases, FluidPhases::Vapour);
}

TEST(FlashPT, TakesComponentsThatAreNotThere) {
    const ComponentSet six = sixComponentOil(Fahrenheit160);
    const FlashState state = flashed(six, {0.5, 0.0, 0.0, 0.5, 0.0, 0.0}, 1000.0);
    EXPECT_EQ(state.phases, FluidPhases::Both);
    for (const int absent : {1, 2, 4, 5}) EXPECT_LT(state.liquid[absent] + state.vapour[absent], 1e-28);
    EXPECT_TRUE(std::isfinite(state.vapourFraction));
}

TEST(FlashPT, GivesTheSameFromTheLastStateAsFromNothing) {
    const ComponentSet set = sixComponentOil(620.0);
    const Composition oil = {0.5, 0.03, 0.07, 0.2, 0.15, 0.05};
    FlashState kept;
    for (double pressure = 5000.0; pressure > 50.0; pressure *= 0.93) {
        FlashPT(set, oil, pressure, kept);
        const FlashState fresh = flashed(set, oil, pressure);
        EXPECT_EQ(kept.phases, fresh.phases) << pressure;
        EXPECT_NEAR(kept.vapourFraction, fresh.vapourFraction, 1e-9) << pressure;
        for (int i = 0; i < 6; ++i) EXPECT_NEAR(kept.liquid[i], fresh.liquid[i], 1e-9) << pressure;
    }
    EXPECT_EQ(kept.phases, FluidPhases::Both);
}

/// Pressure between two where the phases change.
double boundaryBetween(const ComponentSet& set, const Composition& feed, double split, double whole) {
    for (int halving = 0; halving < 60; ++halving) {
        const double middle = 0.5 * (split + whole);
        (flashed(set, feed, middle).phases == FluidPhases::Both ? split : whole) = middle;
    }
    return 0.5 * (split + whole);
}

TEST(FlashPT, TracesTheEnvelopeOfSixComponentsThroughTheirCriticalPoint) {
    // At the upper boundary the incipient phase is vapour below the critical temperature and liquid above it,
    // its K-values meet 1 between, and the pressure goes on without a jump.
    const Composition oil = {0.5, 0.08, 0.12, 0.15, 0.1, 0.05};
    std::vector<double> before;
    bool wasBubble = true;
    int turns = 0;
    double nearest = 1e9;
    for (double temperature = 600.0; temperature <= 1108.0; temperature += 4.0) {
        const ComponentSet set = sixComponentOil(temperature);
        ASSERT_EQ(flashed(set, oil, 300.0).phases, FluidPhases::Both) << temperature;
        const double pressure = boundaryBetween(set, oil, 300.0, 8000.0);
        if (before.size() >= 2) {
            const double bend = pressure - 2.0 * before[before.size() - 1] + before[before.size() - 2];
            EXPECT_LT(std::abs(bend), 2.0) << temperature;
        }
        const FlashState inside = flashed(set, oil, pressure * (1.0 - 1e-7));
        ASSERT_EQ(inside.phases, FluidPhases::Both) << temperature;
        const bool isBubble = inside.vapourFraction < 0.5;
        if (isBubble != wasBubble) ++turns;
        wasBubble = isBubble;
        double largest = 0.0;
        for (int i = 0; i < 6; ++i) largest = std::max(largest, std::abs(inside.lnK[i]));
        nearest = std::min(nearest, largest);
        before.push_back(pressure);
    }
    EXPECT_EQ(turns, 1);
    EXPECT_LT(nearest, 0.2);
}

TEST(Stability, IsZeroForAFeedOnTheTieLine) {
    // Both phases of a split are stable, and each sees the other at no distance.
    const ComponentSet set = methaneDecane();
    const FlashState state = flashed(set, {0.5, 0.5}, 1000.0);
    Composition lnPhi;
    EosMixture mixture;
    PR_EOS(set, state.liquid, 1000.0, mixture);
    fugacityCoefficients(set, mixture, state.zLiquid, lnPhi);
    const Stability plane = stabilityTest(set, state.liquid, 1000.0, lnPhi, true);
    EXPECT_TRUE(plane.hasShadow);
    EXPECT_NEAR(plane.distance, 0.0, 1e-10);
    EXPECT_NEAR(plane.shadow[0], state.vapour[0], 1e-8);
}

/// A walk of feeds and pressures from one phase until it is two: at each place the kept state and one that
/// the tangent plane is asked anew for. Returns the share of the places that needed no tangent plane.
template <class Feed, class Pressure>
double shareWithoutPlane(const ComponentSet& set, Feed feedAt, Pressure pressureAt) {
    constexpr int Steps = 3000;
    FlashState kept;
    int spared = 0, n = 0;
    for (; n < Steps && kept.phases != FluidPhases::Both; ++n) {
        const double s = static_cast<double>(n) / Steps;
        FlashState asked = kept;
        if (!asked.hasK) asked.lnK = {};
        const Composition before = kept.lnK;
        FlashPT(set, feedAt(s), pressureAt(s), kept);
        FlashPT(set, feedAt(s), pressureAt(s), asked);
        EXPECT_EQ(kept.phases, asked.phases) << s;
        EXPECT_EQ(kept.zLiquid, asked.zLiquid) << s;
        if (!kept.hasK && kept.lnK == before) ++spared;
    }
    EXPECT_EQ(kept.phases, FluidPhases::Both);
    return static_cast<double>(spared) / n;
}

TEST(FlashPT, AsksNoTangentPlaneNearAStableFeedAndMissesNoSecondPhase) {
    const ComponentSet set = sixComponentOil(620.0);
    const Composition oil = {0.5, 0.08, 0.12, 0.15, 0.1, 0.05}, gas = {0.9, 0.08, 0.02};
    const auto mixed = [&](double s) {
        Composition z{};
        for (std::size_t i = 0; i < 6; ++i) z[i] = (1.0 - s) * gas[i] + s * oil[i];
        return z;
    };
    const auto at = [](double pressure) { return [pressure](double) { return pressure; }; };
    // Down to the bubble point, then from oil toward gas.
    EXPECT_GT(shareWithoutPlane(
                  set, [&](double) { return oil; }, [](double s) { return 5000.0 - 4000.0 * s; }),
              0.8);
    EXPECT_GT(shareWithoutPlane(
                  set, [&](double s) { return mixed(1.0 - s); }, at(3500.0)),
              0.5);
    // From gas toward oil, where traces of the heaviest condense first, cold and beside the critical point.
    shareWithoutPlane(
        set, [&](double s) { return mixed(0.3 * s * s); }, at(2500.0));
    const ComponentSet hot = sixComponentOil(900.0);
    EXPECT_GT(shareWithoutPlane(
                  hot, [&](double s) { return mixed(0.8 * s); }, at(2500.0)),
              0.5);
}

}  // namespace
}  // namespace kvr
