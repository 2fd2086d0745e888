#include "pressure/acceleration.hpp"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace kvr {
namespace {

constexpr double Unbounded = 1e8;

/// Iterates x += step on a map whose solution is f_i = -(1 - q_i) x_i, from the given x; returns how many
/// steps bring every |f| below 1e-8, or `limit`.
int stepsToZero(const std::vector<double>& q, std::vector<double>& x, int limit) {
    IterationHistory history;
    std::vector<double> f(x.size());
    for (int it = 1; it <= limit; ++it) {
        double most = 0.0;
        for (std::size_t i = 0; i < x.size(); ++i) {
            f[i] = -(1.0 - q[i]) * x[i];
            most = std::max(most, std::abs(f[i]));
        }
        if (most < 1e-8) return it;
        const auto step = acceleratedStep(f, Unbounded, history);
        for (std::size_t i = 0; i < x.size(); ++i) x[i] += step[i];
    }
    return limit;
}

TEST(Acceleration, ReachesTheFixedPointOfOneLinearModeInTwoSteps) {
    // f = -(1 - 0.85) 100 = -15, then -(0.15) 85 = -12.75. g = f1/(f1 - f0) = -12.75/2.25, so that the
    // second step is -12.75 - g (-15 + 2.25) = -85: all that is left.
    IterationHistory history;
    const std::vector<double> first{-15.0}, second{-12.75};
    EXPECT_DOUBLE_EQ(acceleratedStep(first, Unbounded, history)[0], -15.0);
    EXPECT_NEAR(acceleratedStep(second, Unbounded, history)[0], -85.0, 85.0e-8);
}

TEST(Acceleration, NeedsOneStepMoreForEveryLinearMode) {
    // The plain iteration of factor 0.9 needs ln(1e10)/ln(1/0.9), some 200 steps.
    std::vector<double> x{100.0, -40.0, 7.0};
    EXPECT_LE(stepsToZero({0.9, 0.6, 0.2}, x, 50), 12);
    for (const double left : x) EXPECT_NEAR(left, 0.0, 1e-6);
}

TEST(Acceleration, TakesThePlainStepWhenTheSolutionHasNotShrunk) {
    IterationHistory history;
    const std::vector<double> first{1.0, 0.5}, equal{-1.0, 0.25}, grown{1.5, 0.0};
    acceleratedStep(first, Unbounded, history);
    EXPECT_EQ(acceleratedStep(equal, Unbounded, history)[0], -1.0);
    EXPECT_EQ(history.used, 0);
    EXPECT_EQ(acceleratedStep(grown, Unbounded, history)[0], 1.5);
    EXPECT_EQ(acceleratedStep(grown, Unbounded, history)[1], 0.0);
}

TEST(Acceleration, TakesThePlainStepInsteadOfOneThatPassesTheBound) {
    IterationHistory history;
    const std::vector<double> first{-15.0}, second{-12.75};
    acceleratedStep(first, 80.0, history);
    EXPECT_EQ(acceleratedStep(second, 80.0, history)[0], -12.75);
}

TEST(Acceleration, TakesThePlainStepInsteadOfOneOfManyTimesTheSolution) {
    // A factor of 0.99 asks for a hundred times the solution.
    IterationHistory history;
    const std::vector<double> first{1.0}, second{0.99};
    acceleratedStep(first, Unbounded, history);
    EXPECT_EQ(acceleratedStep(second, Unbounded, history)[0], 0.99);
}

TEST(Acceleration, ForgetsWhatWasBeforeAReset) {
    IterationHistory history;
    const std::vector<double> first{-15.0}, second{-12.75};
    acceleratedStep(first, Unbounded, history);
    resetHistory(history);
    EXPECT_EQ(acceleratedStep(second, Unbounded, history)[0], -12.75);
}

TEST(Acceleration, ForgetsUnknownsOfAnotherNumber) {
    IterationHistory history;
    const std::vector<double> first{-15.0, 1.0}, second{-12.75};
    acceleratedStep(first, Unbounded, history);
    const auto step = acceleratedStep(second, Unbounded, history);
    ASSERT_EQ(step.size(), 1U);
    EXPECT_EQ(step[0], -12.75);
}

TEST(Acceleration, PassesOnWhatIsNoNumber) {
    IterationHistory history;
    const std::vector<double> first{-15.0, 1.0};
    const std::vector<double> bad{std::numeric_limits<double>::quiet_NaN(), 0.5};
    acceleratedStep(first, Unbounded, history);
    const auto step = acceleratedStep(bad, Unbounded, history);
    EXPECT_TRUE(std::isnan(step[0]));
    EXPECT_EQ(step[1], 0.5);
}

TEST(Acceleration, PassesOverChangesThatSayNothingNew) {
    // Proportional solutions: the second change is a multiple of the first and adds nothing.
    IterationHistory history;
    const std::vector<double> a{4.0, 8.0}, b{2.0, 4.0}, c{1.0, 2.0};
    acceleratedStep(a, Unbounded, history);
    acceleratedStep(b, Unbounded, history);
    const auto step = acceleratedStep(c, Unbounded, history);
    for (const double value : step) EXPECT_TRUE(std::isfinite(value));
}

}  // namespace
}  // namespace kvr
