#include "run/time_stepping.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

Schedule tables() {
    Schedule schedule;
    schedule.stepLength = {10.0, 20.0};
    schedule.stepEnd = {0.0, 10.0, 30.0};
    schedule.reportEnd = {10.0, 30.0};
    schedule.wellEventTime = {0.0, 25.0};
    schedule.endTime = 30.0;
    return schedule;
}

RunClock clockAt(double time, int reportIndex, int tstepIndex) {
    RunClock clock;
    clock.time = time;
    clock.endTime = 30.0;
    clock.reportIndex = reportIndex;
    clock.tstepIndex = tstepIndex;
    return clock;
}

RunOptions onePhase() {
    RunOptions options;
    options.solverPhaseEnd = {30.0};
    return options;
}

TEST(NextStepLength, RunsToTheEarliestOfAllTables) {
    EXPECT_DOUBLE_EQ(nextStepLength(onePhase(), tables(), clockAt(0.0, 1, 1)), 10.0);
    EXPECT_DOUBLE_EQ(nextStepLength(onePhase(), tables(), clockAt(10.0, 2, 2)), 15.0);
}

TEST(NextStepLength, IsCappedByTheLongestStep) {
    RunOptions options = onePhase();
    options.maxDt = 7.0;
    EXPECT_DOUBLE_EQ(nextStepLength(options, tables(), clockAt(0.0, 1, 1)), 7.0);
    EXPECT_DOUBLE_EQ(nextStepLength(options, tables(), clockAt(7.0, 1, 1)), 3.0);
}

TEST(NextStepLength, IsNeverNegative) {
    EXPECT_DOUBLE_EQ(nextStepLength(onePhase(), tables(), clockAt(30.5, 3, 3)), 0.0);
}

TEST(PressureLimitedStep, ScalesTheStepByTheControlValue) {
    EXPECT_DOUBLE_EQ(pressureLimitedStep(10.0, 400.0, 100.0), 2.5);
    EXPECT_DOUBLE_EQ(pressureLimitedStep(10.0, 50.0, 100.0), 10.0);
}

TEST(PressureLimitedStep, StopsAtAThousandthOfADay) {
    EXPECT_DOUBLE_EQ(pressureLimitedStep(10.0, 1e9, 1.0), 1e-3);
}

TEST(PressureIsUpdated, FollowsTheFrequencyAndEveryWellEvent) {
    RunOptions options;
    options.pressureUpdateFrequency = 3;
    RunClock clock;
    std::vector<bool> updated;
    for (int step = 0; step < 5; ++step) {
        clock.stepsSinceEvent = step;
        updated.push_back(pressureIsUpdated(options, clock));
    }
    EXPECT_EQ(updated, (std::vector<bool>{true, false, false, true, false}));
}

TEST(SnapTo, MovesATimeWithinTheToleranceOnly) {
    double near = 10.0 - 5e-11;
    EXPECT_TRUE(snapTo(10.0, near));
    EXPECT_EQ(near, 10.0);
    double far = 10.0 - 1e-9;
    EXPECT_FALSE(snapTo(10.0, far));
    EXPECT_EQ(far, 10.0 - 1e-9);
}

}  // namespace
}  // namespace kvr
