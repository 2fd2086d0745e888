#include "implicit/damping.hpp"

#include <gtest/gtest.h>

using namespace kvr;

namespace {

const std::vector<ThirdUnknown> TwoCells(2, ThirdUnknown::FreeGas);

double share(const std::vector<double>& step, NewtonDamping& damping) {
    return dampedShare(step, 2, TwoCells, damping);
}

}  // namespace

TEST(DampedShare, FallsWhileIteratesGoBackAndForthAndGrowsAgain) {
    NewtonDamping damping;
    double expected = 1.0;
    EXPECT_EQ(share({0.0, 0.02, 0.0, 0.1}, damping), 1.0);
    EXPECT_EQ(share({0.0, 0.02, 0.0, 0.1}, damping), 1.0);
    for (int n = 0; n < 3; ++n) {
        expected *= 0.7;
        EXPECT_NEAR(share({0.0, 0.02, 0.0, n % 2 == 0 ? -0.1 : 0.1}, damping), expected, 1e-12);
    }
    EXPECT_NEAR(share({0.0, 0.02, 0.0, 0.1}, damping), 0.3, 1e-12) << "at least";
    EXPECT_NEAR(share({0.0, 0.02, 0.0, 0.1}, damping), 0.39, 1e-12);
    for (int n = 0; n < 4; ++n) share({0.0, 0.02, 0.0, 0.1}, damping);
    EXPECT_EQ(share({0.0, 0.02, 0.0, 0.1}, damping), 1.0);
}

TEST(DampedShare, LeavesIteratesAloneThatComeCloserOrGoElsewhere) {
    NewtonDamping damping;
    for (const double value : {0.1, -0.06, 0.036, -0.0216})
        EXPECT_EQ(share({0.0, value, 0.0, 0.0}, damping), 1.0);
    NewtonDamping small;
    EXPECT_EQ(share({0.0, 0.1, 0.0, 0.0}, small), 1.0);
    EXPECT_EQ(share({0.0, -0.04, 0.0, 0.0}, small), 1.0) << "less than half of the way back";
    EXPECT_EQ(share({0.0, 0.13, 0.0, 0.0}, small), 1.0) << "more than three times of it";
}

TEST(DampedShare, WeighsPressuresAndRsByAHundred) {
    NewtonDamping damping;
    // The saturation is the largest and does not go back; then the pressure is, and does.
    EXPECT_EQ(share({9.0, 0.1, 0.0, 0.0}, damping), 1.0);
    EXPECT_EQ(share({-9.0, 0.1, 0.0, 0.0}, damping), 1.0);
    EXPECT_NEAR(share({11.0, 0.1, 0.0, 0.0}, damping), 0.7, 1e-12);
    NewtonDamping gas;
    // The same with Rs.
    const std::vector<ThirdUnknown> unknown = {ThirdUnknown::SolutionGas};
    EXPECT_EQ(dampedShare(std::vector<double>{0.0, 0.1, 9.0}, 3, unknown, gas), 1.0);
    EXPECT_EQ(dampedShare(std::vector<double>{0.0, 0.1, -9.0}, 3, unknown, gas), 1.0);
    EXPECT_NEAR(dampedShare(std::vector<double>{0.0, 0.1, 11.0}, 3, unknown, gas), 0.7, 1e-12);
}

TEST(DampedShare, ForgetsAnAttempt) {
    NewtonDamping damping;
    share({0.0, 0.1, 0.0, 0.0}, damping);
    share({0.0, -0.1, 0.0, 0.0}, damping);
    share({0.0, 0.1, 0.0, 0.0}, damping);
    resetDamping(damping);
    EXPECT_EQ(share({0.0, -0.1, 0.0, 0.0}, damping), 1.0);
}
