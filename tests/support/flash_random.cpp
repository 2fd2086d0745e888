// A given number of random flashes, each judged by what must hold whatever the mixture: finite numbers,
// fractions that sum to 1, moles that add up to the feed, equal fugacities. Prints a summary; exit status 1
// where one fails.

#include "fluid/components/flash.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>

namespace {

using Random = std::mt19937_64;

constexpr double SumTolerance = 1e-10, FugacityTolerance = 1e-9;

double between(Random& random, double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random);
}

/// Components along the line of the paraffins, from lighter than methane to C40, each displaced at random.
kvr::FluidTables randomComponents(Random& random, std::size_t count) {
    kvr::FluidTables tables;
    for (std::size_t i = 0; i < count; ++i) {
        const double heaviness = between(random, 0.0, 1.0);
        tables.TCRIT.push_back((300.0 + 1250.0 * std::pow(heaviness, 0.6)) * between(random, 0.9, 1.1));
        tables.PCRIT.push_back((750.0 - 640.0 * heaviness) * between(random, 0.9, 1.4));
        tables.ACF.push_back(0.01 + 1.2 * heaviness * between(random, 0.8, 1.2));
    }
    tables.BIC.assign(count * count, 0.0);
    for (std::size_t i = 0; i < count; ++i)
        for (std::size_t j = 0; j < i; ++j)
            tables.BIC[i * count + j] = tables.BIC[j * count + i] = between(random, 0.0, 0.1);
    return tables;
}

kvr::Composition randomFeed(Random& random, int count) {
    kvr::Composition feed{};
    double sum = 0.0;
    for (int i = 0; i < count; ++i) sum += feed[i] = -std::log(between(random, 1e-12, 1.0)) + 1e-12;
    for (int i = 0; i < count; ++i) feed[i] /= sum;
    return feed;
}

struct Tally {
    long both = 0, unsolved = 0, wrongSums = 0, unequal = 0, notFinite = 0;
    double worstSum = 0.0, worstFugacity = 0.0;
};

double largestFugacityGap(const kvr::ComponentSet& set, double pressure, const kvr::FlashState& state) {
    kvr::EosMixture liquid, vapour;
    kvr::Composition ofLiquid, ofVapour;
    kvr::PR_EOS(set, state.liquid, pressure, liquid);
    kvr::PR_EOS(set, state.vapour, pressure, vapour);
    kvr::fugacityCoefficients(set, liquid, state.zLiquid, ofLiquid);
    kvr::fugacityCoefficients(set, vapour, state.zVapour, ofVapour);
    double gap = 0.0;
    for (int i = 0; i < set.count; ++i)
        gap =
            std::max(gap, std::abs(std::log(state.liquid[i] / state.vapour[i]) + ofLiquid[i] - ofVapour[i]));
    return gap;
}

void judge(const kvr::ComponentSet& set, const kvr::Composition& feed, double pressure,
           const kvr::FlashState& state, Tally& tally) {
    double sumX = 0.0, sumY = 0.0, moles = 0.0;
    for (int i = 0; i < set.count; ++i) {
        sumX += state.liquid[i];
        sumY += state.vapour[i];
        const double held =
            (1.0 - state.vapourFraction) * state.liquid[i] + state.vapourFraction * state.vapour[i];
        moles = std::max(moles, std::abs(held - feed[i]));
    }
    const double sums = std::max({std::abs(sumX - 1.0), std::abs(sumY - 1.0), moles});
    if (!std::isfinite(sums + state.zLiquid + state.zVapour)) ++tally.notFinite;
    if (!(sums <= SumTolerance)) ++tally.wrongSums;
    tally.worstSum = std::max(tally.worstSum, sums);
    if (!state.isSolved) ++tally.unsolved;
    if (state.phases != kvr::FluidPhases::Both) return;
    ++tally.both;
    const double gap = largestFugacityGap(set, pressure, state);
    if (!(gap <= FugacityTolerance)) ++tally.unequal;
    tally.worstFugacity = std::max(tally.worstFugacity, gap);
}

}  // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 3) {
        std::fprintf(stderr, "flash_random COUNT SEED\n");
        return 2;
    }
    const long count = std::atol(arguments[1]);
    Random random(static_cast<unsigned long>(std::atol(arguments[2])));
    Tally tally;
    for (long i = 0; i < count; ++i) {
        const auto components = std::uniform_int_distribution<std::size_t>(1, kvr::MaxComponents)(random);
        const kvr::FluidTables tables = randomComponents(random, components);
        const kvr::ComponentSet set = kvr::componentSet(tables, 459.67 + between(random, 60.0, 400.0));
        const kvr::Composition feed = randomFeed(random, set.count);
        const double pressure = std::exp(between(random, std::log(15.0), std::log(10000.0)));
        kvr::FlashState state;
        kvr::FlashPT(set, feed, pressure, state);
        judge(set, feed, pressure, state, tally);
    }
    std::printf(
        "flashes %ld two_phases %ld unsolved %ld not_finite %ld wrong_sums %ld unequal %ld worst_sum %.3g "
        "worst_fugacity %.3g\n",
        count, tally.both, tally.unsolved, tally.notFinite, tally.wrongSums, tally.unequal, tally.worstSum,
        tally.worstFugacity);
    return tally.notFinite + tally.wrongSums + tally.unequal + tally.unsolved > 0 ? 1 : 0;
}
