#include "optimization/reallocation.hpp"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

using namespace kvr;

namespace {

const ChangeLimits BuiltIn;  // emin 0, emax 1, alpha 2, wmin -0.25, wmax 25

}  // namespace

TEST(EfficiencyChange, IsAPowerOfTheDistanceBelowTheMean) {
    EXPECT_NEAR(efficiencyChange(0.3, 0.5, BuiltIn), -0.04, 1e-15);
}

TEST(EfficiencyChange, GoesFarAboveOneWithTheBuiltInLargestIncrease) {
    EXPECT_NEAR(efficiencyChange(0.8, 0.5, BuiltIn), 9.0, 1e-12);
}

TEST(EfficiencyChange, IsTheWholeDecreaseAtTheLowerBound) {
    EXPECT_EQ(efficiencyChange(0.0, 0.5, BuiltIn), -0.25);
}

TEST(EfficiencyChange, IsNothingWithinAThousandthOfTheMean) {
    EXPECT_EQ(efficiencyChange(0.5004, 0.5, BuiltIn), 0.0);
    EXPECT_EQ(efficiencyChange(0.4996, 0.5, BuiltIn), 0.0);
    EXPECT_NE(efficiencyChange(0.5006, 0.5, BuiltIn), 0.0);
}

TEST(EfficiencyChange, IsNothingWhereNoOilIsLeft) {
    EXPECT_EQ(efficiencyChange(0.9, 0.0009, BuiltIn), 0.0);
    EXPECT_EQ(efficiencyChange(0.0, 0.0, BuiltIn), 0.0);
}

TEST(EfficiencyChange, IsWholeWhereTheMeanStandsAtABound) {
    ChangeLimits limits = BuiltIn;
    limits.emin = 0.5;
    limits.emax = 0.5;
    EXPECT_EQ(efficiencyChange(0.3, 0.5, limits), -0.25);
    EXPECT_EQ(efficiencyChange(0.8, 0.5, limits), 25.0);
    EXPECT_EQ(efficiencyChange(0.5, 0.5, limits), 0.0);
}

TEST(EfficiencyChange, StaysWithinItsLimitsFarOutsideTheBounds) {
    ChangeLimits limits = BuiltIn;
    limits.emin = 0.4;
    limits.emax = 0.6;
    limits.wmax = 0.5;
    EXPECT_EQ(efficiencyChange(0.1, 0.5, limits), -0.25);
    EXPECT_EQ(efficiencyChange(1.0, 0.5, limits), 0.5);
}

TEST(ArrivalChange, SlowsTheEarlyPairAndRaisesTheLateOne) {
    EXPECT_NEAR(arrivalChange(100.0, 125.0, BuiltIn), -0.2, 1e-15);
    EXPECT_NEAR(arrivalChange(200.0, 125.0, BuiltIn), 0.6, 1e-15);
}

TEST(ArrivalChange, KeepsTheLimits) {
    EXPECT_EQ(arrivalChange(10.0, 125.0, BuiltIn), -0.25);
    EXPECT_EQ(arrivalChange(1e9, 125.0, BuiltIn), 25.0);
}

TEST(ArrivalChange, IsNothingAtTheMeanAndWithoutATime) {
    EXPECT_EQ(arrivalChange(125.0, 125.0, BuiltIn), 0.0);
    EXPECT_EQ(arrivalChange(0.0, 125.0, BuiltIn), 0.0);
    EXPECT_EQ(arrivalChange(100.0, 0.0, BuiltIn), 0.0);
}

TEST(PairFlows, ShareARateByAllocationFactors) {
    EXPECT_EQ(pairFlows(1000.0, std::vector<double>{0.6, 0.4}), (std::vector<double>{600.0, 400.0}));
    EXPECT_EQ(pairFlows(1000.0, std::vector<double>{3.0, 1.0}), (std::vector<double>{750.0, 250.0}));
    EXPECT_EQ(pairFlows(1000.0, std::vector<double>{0.0, 0.0}), (std::vector<double>{0.0, 0.0}));
}

TEST(ChangeLimits, AllowNothingWhereBothAreZero) {
    EXPECT_TRUE(allowsNothing({0.0, 1.0, 2.0, 0.0, 0.0}));
    EXPECT_FALSE(allowsNothing({0.0, 1.0, 2.0, -0.25, 0.0}));
    EXPECT_FALSE(allowsNothing({0.0, 1.0, 2.0, 0.0, 25.0}));
}
