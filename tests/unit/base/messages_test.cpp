#include "base/messages.hpp"

#include "unit/quiet_console.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

struct Recorded {
    QuietConsole quiet;
    MessageRecord messages;
    Console console = quiet.console;

    Recorded() { console.messages = &messages; }
};

TEST(Warn, PrintsTheLineAndKeepsOneRowForAllOfItsKind) {
    Recorded run;
    for (int cell = 1; cell <= 3; ++cell) warn(run.console, "WARNING :: CELL {} IS ODD", cell);
    warn(run.console, "WARNING :: ANOTHER KIND");
    ASSERT_EQ(run.messages.warnings.size(), 2U);
    EXPECT_EQ(run.messages.warnings[0].first, "WARNING :: CELL 1 IS ODD");
    EXPECT_EQ(run.messages.warnings[0].count, 3);
    EXPECT_EQ(run.messages.warnings[1].count, 1);
    EXPECT_EQ(warningCount(run.messages), 4);
    EXPECT_EQ(run.quiet.logText(),
              "WARNING :: CELL 1 IS ODD\nWARNING :: CELL 2 IS ODD\nWARNING :: CELL 3 IS ODD\n"
              "WARNING :: ANOTHER KIND\n");
}

TEST(Warn, TellsThePlaceOnALineBehindAndKeepsThatOfTheFirst) {
    Recorded run;
    warnAt(run.console, {"CASE.DATA", 12}, "PORO", "WARNING :: {} VALUES ABOVE 1", 4);
    warnAt(run.console, {"CASE.DATA", 90}, "PORO", "WARNING :: {} VALUES ABOVE 1", 1);
    EXPECT_EQ(run.quiet.screenText(),
              "WARNING :: 4 VALUES ABOVE 1\nFile CASE.DATA, line 12, keyword PORO\n"
              "WARNING :: 1 VALUES ABOVE 1\nFile CASE.DATA, line 90, keyword PORO\n");
    ASSERT_EQ(run.messages.warnings.size(), 1U);
    EXPECT_EQ(run.messages.warnings[0].place.lineNumber, 12);
    EXPECT_EQ(run.messages.warnings[0].keyword, "PORO");
}

TEST(Warn, KeepsNothingWithoutARecord) {
    QuietConsole quiet;
    warn(quiet.console, "WARNING :: ALONE");
    EXPECT_EQ(quiet.logText(), "WARNING :: ALONE\n");
}

TEST(UnusedKeywords, ThatOnlySteerOutputStandApartFromThoseThatChangeTheAnswer) {
    Recorded run;
    noteUnused(run.console, "RPTSCHED", {"CASE.DATA", 1}, "SCHEDULE");
    noteUnused(run.console, "WELLDIMS", {"CASE.DATA", 2}, "RUNSPEC");
    noteUnused(run.console, "FOPR", {"CASE.DATA", 3}, "SUMMARY");
    noteUnused(run.console, "TUNING", {"CASE.DATA", 4}, "SCHEDULE");
    noteUnused(run.console, "FAULTDIM", {"CASE.DATA", 4}, "RUNSPEC");
    noteUnused(run.console, "FAULTS", {"CASE.DATA", 5}, "GRID");
    noteUnused(run.console, "FAULTS", {"CASE.DATA", 6}, "GRID");
    const std::vector<UnusedKeyword>& unused = run.messages.unused;
    ASSERT_EQ(unused.size(), 6U);
    for (std::size_t n = 0; n < 5; ++n) EXPECT_EQ(unused[n].effect, KeywordEffect::Output) << unused[n].name;
    EXPECT_EQ(unused[5].effect, KeywordEffect::Answer);
    EXPECT_EQ(unused[5].count, 2);
    EXPECT_EQ(unused[5].place.lineNumber, 5);
    EXPECT_EQ(warningCount(run.messages), 2);
}

}  // namespace
}  // namespace kvr
