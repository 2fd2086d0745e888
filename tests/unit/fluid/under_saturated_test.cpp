#include "fluid/under_saturated.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

// Bubble points 1000 and 3000 psia with B 1.25 and 2, each with one row above; mu 1 and 0.5.
const std::vector<OilRowsOfRs> Both = {{1000, 1.25, 1.0, 2000, 1.0 / 0.82, 1.1},
                                       {3000, 2.0, 0.5, 5000, 1.0 / 0.56, 0.6}};

TEST(UnderSaturatedRows, FactorBetweenTwoBubblePointsIsTheirWeightedMeanAtTheSameRise) {
    const UnderSaturatedRows rows = underSaturatedRows(Both);
    const TablePlace quarter = {0, 1, 0.25, true};
    // By hand: 1/B rises from 0.8 to 0.82 in 1000 psi and from 0.5 to 0.56 in 2000 psi; 500 psi up by 0.0125
    // and 0.03.
    EXPECT_NEAR(underSaturatedFactor(rows, rows.invFvf, quarter, 500.0), 1.0 + 0.75 * 0.0125 + 0.25 * 0.03,
                1e-14);
    // 1/(B mu): 0.8 to 0.82/1.1, and 1 to 0.56/0.6.
    EXPECT_NEAR(underSaturatedFactor(rows, rows.invFvfVisc, {0, 0, 0.0, true}, 1000.0), 0.82 / (1.1 * 0.8),
                1e-14);
    EXPECT_NEAR(underSaturatedFactor(rows, rows.invFvfVisc, {1, 1, 0.0, true}, 1000.0),
                0.5 * (1.0 + 0.56 / 0.6), 1e-14);
}

TEST(UnderSaturatedRows, OilWithMoreGasThanItsTableHasTheFactorOfTheLastRow) {
    const UnderSaturatedRows rows = underSaturatedRows(Both);
    EXPECT_NEAR(underSaturatedFactor(rows, rows.invFvf, {0, 1, 3.0, true}, 2000.0), 0.56 / 0.5, 1e-14);
}

TEST(UnderSaturatedRows, BeyondItsNodesARisingBranchGoesOnAsItEndsAndBelowAsItBegins) {
    const std::vector<OilRowsOfRs> one = {{1000, 1.25, 1.0, 2000, 1.0 / 0.82, 1.0, 3000, 1.0 / 0.83, 1.0}};
    const UnderSaturatedRows rows = underSaturatedRows(one);
    const TablePlace only = {0, 0, 0.0, true};
    EXPECT_NEAR(underSaturatedFactor(rows, rows.invFvf, only, 3000.0), 1.05, 1e-14);
    EXPECT_NEAR(underSaturatedFactor(rows, rows.invFvf, only, -500.0), 0.9875, 1e-14);
}

TEST(UnderSaturatedRows, AFallingBranchNeverReachesZero) {
    const std::vector<OilRowsOfRs> thickening = {{1000, 1.25, 1.0, 2000, 1.25, 2.0}};
    const UnderSaturatedRows rows = underSaturatedRows(thickening);
    const TablePlace only = {0, 0, 0.0, true};
    // 1/(B mu) halves in 1000 psi. Beyond, its reciprocal has the slope that the branch ends with: 2 + 2 per
    // 1000 psi.
    EXPECT_NEAR(underSaturatedFactor(rows, rows.invFvfVisc, only, 2000.0), 1.0 / 4.0, 1e-14);
    EXPECT_NEAR(underSaturatedFactor(rows, rows.invFvfVisc, only, 20000.0), 1.0 / 40.0, 1e-14);
}

TEST(UnderSaturatedRows, AnRsWithoutRowsHasTheFactorsOfTheNextOneAbove) {
    const std::vector<OilRowsOfRs> last = {{1000, 1.25, 1.0}, {3000, 2.0, 0.5, 5000, 1.0 / 0.56, 0.5}};
    const UnderSaturatedRows rows = underSaturatedRows(last);
    EXPECT_NEAR(underSaturatedFactor(rows, rows.invFvf, {0, 0, 0.0, true}, 2000.0), 0.56 / 0.5, 1e-14);
    EXPECT_NEAR(underSaturatedFactor(rows, rows.invFvf, {1, 1, 0.0, true}, 2000.0), 0.56 / 0.5, 1e-14);
}

TEST(UnderSaturatedRows, NoRowsGiveNone) {
    const std::vector<OilRowsOfRs> none = {{1000, 1.25, 1.0}, {3000, 2.0, 0.5}};
    EXPECT_TRUE(underSaturatedRows(none).first.empty());
}

TEST(UnderSaturatedRows, RowsThatDoNotRiseAddNoNode) {
    const std::vector<OilRowsOfRs> flat = {{1000, 1.25, 1.0, 1000, 1.2, 1.0, 2000, 1.2, 1.0}};
    EXPECT_EQ(underSaturatedRows(flat).step.size(), 1U);
}

}  // namespace
}  // namespace kvr
