#include "fluid/components/mixture_volume.hpp"

#include "unit/fluid/components/component_samples.hpp"

#include <cmath>
#include <gtest/gtest.h>

namespace kvr {
namespace {

double volumeOf(const ComponentSet& set, const Composition& moles, double pressure) {
    double sum = 0.0;
    for (int i = 0; i < set.count; ++i) sum += moles[i];
    Composition feed{};
    for (int i = 0; i < set.count; ++i) feed[i] = moles[i] / sum;
    FlashState fresh;
    FlashPT(set, feed, pressure, fresh);
    const PhaseVolumes volumes = phaseVolumes(set, pressure, fresh);
    return sum * (volumes.liquid + volumes.vapour);
}

TEST(MixtureVolume, ChangesInOnePhaseAsTheDifferencesOfItsVolumeDo) {
    const ComponentSet set = sixComponentOil(620.0);
    struct Case {
        Composition feed;
        double pressure;
    };
    const Case cases[] = {{{0.5, 0.08, 0.12, 0.15, 0.1, 0.05}, 5000.0},  // liquid
                          {{0.97, 0.02, 0.01, 0.0, 0.0, 0.0}, 600.0},    // gas
                          {{0.9, 0.08, 0.02, 0.0, 0.0, 0.0}, 6000.0}};   // dense
    for (const Case& one : cases) {
        FlashState state;
        const MixtureVolume mixture = mixtureVolume(set, one.feed, one.pressure, state);
        ASSERT_NE(state.phases, FluidPhases::Both);
        const double step = 0.5;
        const double slope =
            (volumeOf(set, one.feed, one.pressure + step) - volumeOf(set, one.feed, one.pressure - step)) /
            (2.0 * step);
        EXPECT_NEAR(mixture.slope / slope, 1.0, 1e-5) << one.pressure;
        EXPECT_NEAR(mixtureSlope(set, one.feed, one.pressure, state) / slope, 1.0, 1e-5);
        for (int i = 0; i < 3; ++i) {
            Composition more = one.feed, less = one.feed;
            more[i] += 1e-4;
            less[i] -= 1e-4;
            const double partial =
                (volumeOf(set, more, one.pressure) - volumeOf(set, less, one.pressure)) / 2e-4;
            EXPECT_NEAR(mixture.partial[i], partial, 1e-6 * mixture.volume) << one.pressure << ' ' << i;
        }
    }
}

TEST(MixtureVolume, SharesItselfAmongTheMolesOfEachComponent) {
    const ComponentSet set = sixComponentOil(620.0);
    const Composition feed = {0.5, 0.08, 0.12, 0.15, 0.1, 0.05};
    for (const double pressure : {500.0, 1500.0, 4000.0}) {
        FlashState state;
        const MixtureVolume mixture = mixtureVolume(set, feed, pressure, state);
        double mean = 0.0;
        for (int i = 0; i < 6; ++i) mean += feed[i] * mixture.partial[i];
        EXPECT_NEAR(mean, mixture.volume, 1e-12 * mixture.volume);
        // A hundredth of a mole of methane and of the heaviest component, by the volume of the whole.
        for (const int i : {0, 5}) {
            Composition more = feed, less = feed;
            more[i] += 1e-2;
            less[i] -= 1e-2;
            const auto whole = [&](const Composition& moles) {
                double sum = 0.0;
                for (int j = 0; j < 6; ++j) sum += moles[j];
                FlashState fresh;
                FlashPT(set, moles, pressure, fresh);  // takes its share of the sum
                const PhaseVolumes volumes = phaseVolumes(set, pressure, fresh);
                return sum * (volumes.liquid + volumes.vapour);
            };
            EXPECT_NEAR((whole(more) - whole(less)) / 2e-2, mixture.partial[i], 2e-3 * mixture.volume)
                << i << ' ' << pressure;
        }
    }
}

TEST(MixtureVolume, OfAGasThatDissolvesShrinksBelowThatOfTheFreeGas) {
    // A mole of methane added to undersaturated liquid takes far less room than as gas.
    const ComponentSet set = methaneDecane();
    FlashState whole, split;
    const MixtureVolume liquid = mixtureVolume(set, {0.1, 0.9}, 1000.0, whole);
    const MixtureVolume both = mixtureVolume(set, {0.5, 0.5}, 1000.0, split);
    const double asGas = 1.0 / molarDensity(set, 1000.0, split.zVapour);
    EXPECT_LT(liquid.partial[0], 0.2 * asGas);
    // With two phases there it goes into the gas, which the pair's phase rule leaves as it is: along the tie
    // line volumes add up linearly.
    const double vL = 1.0 / molarDensity(set, 1000.0, split.zLiquid);
    const double perFraction = (asGas - vL) / (split.vapour[0] - split.liquid[0]);
    EXPECT_NEAR(both.partial[0] - both.partial[1], perFraction, 1e-4 * asGas);
}

}  // namespace
}  // namespace kvr
