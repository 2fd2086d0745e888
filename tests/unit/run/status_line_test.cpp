#include "run/status_line.hpp"

#include "unit/quiet_console.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

RunClock clockAt(double time, double end) {
    RunClock clock;
    clock.time = time;
    clock.endTime = end;
    clock.day = 7;
    clock.month = 3;
    clock.year = 2004;
    return clock;
}

TEST(StatusText, GivesDateShareAndTimes) {
    // A quarter done in 3675 s: three times as long is left.
    EXPECT_EQ(statusText(clockAt(250.0, 1000.0), 3675.0, 200),
              "07.03.2004   25.0 % of the schedule   elapsed 1:01:15   left 3:03:45");
}

TEST(StatusText, SaysNothingOfTheTimeLeftBeforeTheFirstStep) {
    EXPECT_EQ(statusText(clockAt(0.0, 1000.0), 5.0, 200),
              "07.03.2004    0.0 % of the schedule   elapsed 0:00:05   left -");
    EXPECT_EQ(statusText(clockAt(0.0, 0.0), 0.0, 200),
              "07.03.2004  100.0 % of the schedule   elapsed 0:00:00   left 0:00:00");
}

TEST(StatusText, FitsTheWidthOfTheScreen) {
    EXPECT_EQ(statusText(clockAt(250.0, 1000.0), 3675.0, 12), "07.03.2004  ");
}

TEST(StatusLine, NeverReachesAFile) {
    const QuietConsole quiet;
    Simulation run;
    run.console = quiet.console;
    startStatus(run);
    updateStatus(run);
    EXPECT_EQ(run.console.status, nullptr);
    EXPECT_EQ(quiet.screenText(), "");
}

TEST(StatusLine, StaysBelowTheLinesAndLeavesNothingBehind) {
    const QuietConsole quiet;
    StatusLine status;
    Console console = quiet.console;
    console.status = &status;
    lineToBoth(console, "first");
    showStatus(console, "10 %");
    lineToBoth(console, "second");
    showStatus(console, "20 %");
    clearStatus(console);
    lineToBoth(console, "third");
    const std::string erase = "\r\033[K";
    EXPECT_EQ(quiet.screenText(),
              "first\n10 %" + erase + "second\n10 %" + erase + "20 %" + erase + "third\n");
    EXPECT_EQ(quiet.logText(), "first\nsecond\nthird\n");
}

}  // namespace
}  // namespace kvr
