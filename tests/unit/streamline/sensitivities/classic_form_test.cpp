#include "streamline/sensitivities/classic_form.hpp"

#include <gtest/gtest.h>

using namespace kvr;

TEST(ClassicForm, DividesTheTimeOfFlightBySaturationAndRateRatio) {
    EXPECT_DOUBLE_EQ(travelTimeTerm(10.0, 0.5, 4.0), 5.0);
}

TEST(ClassicForm, HoldsTheRateRatioBetweenOneAndTheNumberOfLines) {
    EXPECT_EQ(rateRatio(50.0, 100.0, 20.0), 1.0);
    EXPECT_EQ(rateRatio(1e6, 1.0, 20.0), 20.0);
    EXPECT_EQ(rateRatio(300.0, 100.0, 20.0), 3.0);
}

TEST(ClassicForm, GivesTheSameTermForwardAndBackwardWhateverTheNeighbour) {
    SegmentNeighbourhood s{20.0, 15.0, 30.0, 100.0, 200.0, 50.0, 7.0};
    constexpr double Expected = 25.3357943;  // a / (D k), k = 100 * 0.00112771
    EXPECT_NEAR(forwardTerm(s), Expected, 1e-7);
    EXPECT_NEAR(backwardTerm(s), Expected, 1e-7);
    s.kb = 1.0;
    s.kf = 5000.0;
    EXPECT_NEAR(forwardTerm(s), Expected, 1e-7);
    EXPECT_NEAR(backwardTerm(s), Expected, 1e-7);
}

TEST(ClassicForm, LeavesOutANeighbourThatIsNotThere) {
    SegmentNeighbourhood s{20.0, 15.0, 30.0, 100.0, 200.0, 50.0, 7.0};
    s.hasBefore = false;
    EXPECT_EQ(backwardTerm(s), 0.0);
    EXPECT_GT(forwardTerm(s), 0.0);
}

TEST(ClassicForm, SharesALineBetweenRateWellsByTimeOfFlight) {
    EXPECT_DOUBLE_EQ(classicShare(false, 30.0, 100.0), 0.3);
    EXPECT_EQ(classicShare(true, 30.0, 100.0), 1.0);
}
