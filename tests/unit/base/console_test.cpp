#include "base/console.hpp"

#include "unit/quiet_console.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

/// A quiet console whose screen may have `limit` bytes.
struct Accounted {
    QuietConsole quiet;
    ScreenAccount account;
    Console console = quiet.console;

    explicit Accounted(std::size_t limit) {
        account.limit = limit;
        console.account = &account;
    }
};

bool holds(const std::string& text, std::string_view part) {
    return text.find(part) != std::string::npos;
}

TEST(ScreenAccount, LeavesLinesBeyondItsLimitToTheLog) {
    Accounted run(10);
    lineToBoth(run.console, "first");
    EXPECT_FALSE(isFolded(run.console));
    lineToBoth(run.console, "second");
    lineToBoth(run.console, "third");
    EXPECT_TRUE(isFolded(run.console));
    const std::string screen = run.quiet.screenText();
    EXPECT_EQ(screen.substr(0, 6), "first\n");
    EXPECT_TRUE(holds(screen, "KVR_dbg.out"));
    EXPECT_FALSE(holds(screen, "second"));
    EXPECT_FALSE(holds(screen, "third"));
    EXPECT_EQ(run.quiet.logText(), "first\nsecond\nthird\n");
}

TEST(ScreenAccount, ShowsTheLastLinesBeforeAStop) {
    Accounted run(1);
    for (int n = 0; n < 100; ++n) both(run.console, "line {};", n);
    lineToBoth(run.console, "ERROR :: the reason");
    unfold(run.console, true);
    const std::string screen = run.quiet.screenText();
    EXPECT_TRUE(holds(screen, "line 99;\nERROR :: the reason\n"));
    EXPECT_FALSE(holds(screen, "line 50;"));
}

TEST(ScreenAccount, LetsProgressPassAndEverythingBehindTheSteps) {
    Accounted run(1);
    lineToBoth(run.console, "step");
    lineToScreenAlways(run.console, "half way");
    unfold(run.console, false);
    lineToBoth(run.console, "the end");
    const std::string screen = run.quiet.screenText();
    EXPECT_FALSE(holds(screen, "step\n"));
    EXPECT_TRUE(holds(screen, "half way\nthe end\n"));
}

TEST(ScreenAccount, BoundsNothingWithoutALimit) {
    Accounted run(0);
    for (int n = 0; n < 1000; ++n) lineToBoth(run.console, "line");
    EXPECT_EQ(run.quiet.screenText().size(), 5000U);
}

TEST(ConciseConsole, ShowsOnlyWhatIsMeantForTheUserAndTheLastLinesBeforeAStop) {
    Accounted run(0);
    run.console.concise = true;
    lineToBoth(run.console, "a stage speaks");
    tell(run.console, "for the user");
    EXPECT_EQ(run.quiet.screenText(), "for the user\n");
    EXPECT_EQ(run.quiet.logText(), "a stage speaks\nfor the user\n");
    lineToBoth(run.console, "ERROR :: the reason");
    unfold(run.console, true);
    EXPECT_TRUE(holds(run.quiet.screenText(), "ERROR :: the reason\n"));
}

}  // namespace
}  // namespace kvr
