#include "optimization/pair_efficiency.hpp"

#include "optimization/equal_arrival.hpp"
#include "optimization/rate_plan.hpp"

#include <cmath>
#include <gtest/gtest.h>

using namespace kvr;

namespace {

JoiningLine line(int injector, int producer, double flow, double time, double oilFraction = 1.0) {
    return {injector, producer, flow, time, oilFraction, oilFraction, 1.0 - oilFraction, 0.0};
}

WellPair pairOf(double flux, double time) {
    WellPair pair;
    pair.injector = 1;
    pair.producer = 2;
    pair.flux = flux;
    pair.time = time;
    return pair;
}

PairSet setOf(const std::vector<WellPair>& pairs) {
    PairSet set;
    set.pairs = pairs;
    double sum = 0.0;
    for (const WellPair& pair : pairs) {
        set.flux += pair.flux;
        sum += pair.flux * pair.time;
    }
    set.time = sum / set.flux;
    return set;
}

}  // namespace

TEST(WeighPairs, SumsTheLinesOfEachPair) {
    const std::vector<JoiningLine> lines{line(1, 3, 10.0, 100.0, 0.5), line(1, 3, 30.0, 300.0, 0.1),
                                         line(1, 4, 20.0, 50.0, 1.0)};
    const PairSet set = weighPairs(lines, 1e9);
    ASSERT_EQ(set.pairs.size(), 2U);
    EXPECT_DOUBLE_EQ(set.pairs[0].flux, 40.0);
    EXPECT_DOUBLE_EQ(set.pairs[0].time, 250.0);
    EXPECT_DOUBLE_EQ(set.pairs[0].poreVolume, 10000.0);
    EXPECT_EQ(set.pairs[0].lines, 2);
    EXPECT_DOUBLE_EQ(efficiency(set.pairs[0]), 0.2);
    EXPECT_DOUBLE_EQ(efficiency(set.pairs[1]), 1.0);
    EXPECT_DOUBLE_EQ(meanEfficiency(set), 28.0 / 60.0);
    EXPECT_DOUBLE_EQ(set.flux, 60.0);
}

TEST(WeighPairs, LeavesLongLinesOutOfTheEfficiencyButNotOutOfTheFlux) {
    const std::vector<JoiningLine> lines{line(1, 3, 10.0, 100.0, 0.5), line(1, 3, 30.0, 3000.0, 1.0)};
    const PairSet set = weighPairs(lines, 1000.0);
    EXPECT_DOUBLE_EQ(set.pairs[0].flux, 40.0);
    EXPECT_DOUBLE_EQ(efficiency(set.pairs[0]), 0.5);
    EXPECT_EQ(set.longLines, 1);
}

TEST(WeighPairs, HasNoPairsWithoutLinesThatFlow) {
    EXPECT_TRUE(weighPairs({}, 1e9).pairs.empty());
    const std::vector<JoiningLine> still{line(1, 3, 0.0, 100.0)};
    EXPECT_TRUE(weighPairs(still, 1e9).pairs.empty());
    EXPECT_EQ(meanTime(still), 0.0);
}

TEST(PairsOfArrival, DropsLongLinesAndCountsThem) {
    const std::vector<JoiningLine> lines{line(1, 3, 10.0, 100.0), line(1, 3, 10.0, 3000.0)};
    const PairSet set = pairsOfArrival(lines, 1000.0);
    EXPECT_EQ(set.longLines, 1);
    EXPECT_DOUBLE_EQ(set.pairs[0].time, 100.0);
}

TEST(ThinPairs, AreTakenOutWhereTheyArriveLateAndCarryLittle) {
    // Mean 100, limit of the flux (99.9 + 0.1)/2/100 = 0.5.
    PairSet set = setOf({pairOf(99.9, 99.889), pairOf(0.1, 211.0)});
    ASSERT_GT(set.pairs[1].time, 2.1 * set.time);
    EXPECT_EQ(removeThinPairs(set), std::vector<std::size_t>{1});
    EXPECT_EQ(set.pairs[1].flux, 2.220446049250313e-16);
    EXPECT_EQ(set.pairs[1].time, 0.0);
    EXPECT_NEAR(meanArrival(set), 99.889, 1e-9);
}

TEST(ThinPairs, StayWhereTheirFluxIsAboveTheLimit) {
    PairSet set = setOf({pairOf(99.0, 98.0), pairOf(1.0, 298.0)});
    ASSERT_GT(set.pairs[1].time, 2.1 * set.time);
    EXPECT_TRUE(removeThinPairs(set).empty());
    EXPECT_EQ(set.pairs[1].flux, 1.0);
}

TEST(MeanArrival, IsWeightedByTheFlux) {
    const PairSet set = setOf({pairOf(3.0, 100.0), pairOf(1.0, 200.0)});
    EXPECT_DOUBLE_EQ(meanArrival(set), 125.0);
    // (3 * 0.2^2 + 0.6^2) / 4
    EXPECT_NEAR(arrivalVariance(set), 0.12, 1e-14);
}

TEST(MeanArrival, IsThatOfASinglePair) {
    const PairSet set = setOf({pairOf(3.0, 100.0)});
    EXPECT_DOUBLE_EQ(meanArrival(set), 100.0);
    EXPECT_EQ(arrivalChange(100.0, meanArrival(set), {}), 0.0);
}

TEST(MeanArrival, ChangesNothingWhereEveryPairIsRemoved) {
    PairSet set = setOf({pairOf(3.0, 100.0)});
    set.pairs[0].time = 0.0;
    set.pairs[0].flux = 2.220446049250313e-16;
    EXPECT_EQ(meanArrival(set), 0.0);
    EXPECT_EQ(arrivalVariance(set), 0.0);
    EXPECT_EQ(arrivalChange(set.pairs[0].time, meanArrival(set), {}), 0.0);
}

TEST(WellDemands, SumThePairFlowsOfAWell) {
    const std::vector<JoiningLine> lines{line(1, 2, 600.0, 100.0), line(1, 3, 400.0, 100.0)};
    const PairSet set = weighPairs(lines, 1e9);
    const std::vector<double> changes{-0.25, 0.5};
    const std::vector<WellDemand> demands = wellDemands(4, set.pairs, changes);
    EXPECT_NEAR(demands[0].factor, 0.6 * 0.75 + 0.4 * 1.5, 1e-15);
    EXPECT_NEAR(demands[1].factor, 0.75, 1e-15);
    EXPECT_NEAR(demands[2].factor, 1.5, 1e-15);
    EXPECT_FALSE(demands[3].joined);
    EXPECT_EQ(demands[3].factor, 1.0);
}

TEST(ExpectedOutput, FollowsTheMixtureOfThePairs) {
    const std::vector<JoiningLine> lines{line(1, 2, 60.0, 100.0, 0.5), line(3, 2, 40.0, 100.0, 0.1)};
    const PairSet set = weighPairs(lines, 1e9);
    const std::vector<double> none{0.0, 0.0}, same{1.0, 1.0, 1.0};
    const ExpectedOutput before = expectedOutput(set.pairs, none, same);
    EXPECT_NEAR(before.oil, 34.0, 1e-12);
    EXPECT_NEAR(before.water, 66.0, 1e-12);
    const std::vector<double> shift{0.0, -1.0}, factors{1.0, 0.5, 1.0};
    const ExpectedOutput after = expectedOutput(set.pairs, shift, factors);
    EXPECT_NEAR(after.oil, 25.0, 1e-12);
    EXPECT_NEAR(after.water, 25.0, 1e-12);
}

TEST(RatesStay, WhereNextToNothingChanges) {
    EXPECT_TRUE(staysAsItIs(0.0009, 0.001, {10.0, 10.0}, {20.0, 0.0}));
    EXPECT_TRUE(staysAsItIs(0.5, 0.001, {10.0, 10.0}, {10.09, 9.91}));
    EXPECT_FALSE(staysAsItIs(0.5, 0.001, {10.0, 10.0}, {10.11, 9.91}));
    EXPECT_FALSE(staysAsItIs(0.5, 0.001, {10.0, 0.0}, {10.0, 0.1}));
    EXPECT_NEAR(changeNorm(std::vector<double>{1.3, 0.6}), std::sqrt((0.09 + 0.16) / 2.0), 1e-15);
    EXPECT_EQ(changeNorm({}), 0.0);
}

TEST(ValueEfficiency, RunsFromWaterToOil) {
    WellPair pair = pairOf(10.0, 100.0);
    pair.counted = 10.0;
    pair.surfaceOil = 2.0;
    pair.surfaceWater = 8.0;
    EXPECT_NEAR(valueEfficiency(pair, 50.0, -5.0, 0.0), 0.2, 1e-15);
    EXPECT_EQ(valueEfficiency(pair, 0.0, 0.0, 0.0), 0.0);
}
