#include "run/traced_step.hpp"

#include "unit/eclipse/small_case.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

struct TracedTables : SmallCase {
    TracedTables() : SmallCase(2, 1, 1) {
        run.schedule.reportEnd = {10.0, 20.0, 30.0, 40.0};
        run.schedule.stepEnd = {0.0, 10.0, 20.0, 30.0, 40.0};
        run.schedule.stepLength = {10.0, 10.0, 10.0, 10.0};
        run.schedule.wellEventTime = {0.0};
        run.schedule.steps.resize(1);
        run.clock.endTime = 40.0;
    }
    void passTo(double time) {
        run.clock.time = time;
        passTableEntries(run);
        passWellEvents(run);
    }
};

TEST(TracedTables, GoPastWhatARestartHasLeftBehind) {
    TracedTables c;
    c.passTo(25.0);
    EXPECT_EQ(c.run.clock.reportIndex, 3);  // that of day 30 comes next
    EXPECT_EQ(c.run.clock.tstepIndex, 3);
}

TEST(TracedTables, KeepTheEntryThatTheRestartStandsOn) {
    TracedTables c;
    c.passTo(20.0);
    EXPECT_EQ(c.run.clock.reportIndex, 2);
    EXPECT_EQ(c.run.clock.tstepIndex, 2);
    c.passTo(20.0 + 1e-11);
    EXPECT_EQ(c.run.clock.reportIndex, 2);
}

TEST(TracedTables, EndWithTheirLastEntry) {
    TracedTables c;
    c.passTo(1000.0);
    EXPECT_EQ(c.run.clock.reportIndex, 5);
}

TEST(TracedTables, BringTheWellsOfTheLastEventLeftBehind) {
    TracedTables c;
    c.run.schedule.wellEventTime = {0.0, 10.0, 20.0, 35.0};
    c.run.schedule.steps.resize(4);
    c.passTo(30.0);
    EXPECT_EQ(c.run.clock.wellChangeIndex, 2);
}

}  // namespace
}  // namespace kvr
