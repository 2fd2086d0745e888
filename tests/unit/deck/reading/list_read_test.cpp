#include "deck/reading/list_read.hpp"

#include "unit/deck/deck_bench.hpp"

#include <array>
#include <gtest/gtest.h>
#include <vector>

namespace kvr {
namespace {

std::string lineAfter(DeckCursor& cursor) {
    std::string_view line;
    return nextLine(cursor, line) ? std::string(line) : "<end>";
}

TEST(ListRead, RepeatsAndSkipsAndLeavesTargetsBehindASlashAlone) {
    DeckCursor cursor = cursorOn("3*1.5 2* 7 /\n");
    std::array<double, 7> values{};
    values.fill(9.0);
    const ListEnd end = readDoubles(cursor, values);
    EXPECT_EQ(values, (std::array<double, 7>{1.5, 1.5, 1.5, 9, 9, 7, 9}));
    EXPECT_EQ(end.count, 6);
    EXPECT_TRUE(end.slash);
    EXPECT_EQ(end.error, ListError::None);
}

TEST(ListRead, TakesExponentsWithDCommasQuotesAndWordsThatEndAtASlash) {
    DeckCursor cursor = cursorOn("1.0d-6,2D3 'A B' cd/\nnext");
    double a = 0.0;
    double b = 0.0;
    std::string c;
    std::string d;
    const std::array<ListTarget, 4> targets = {&a, &b, &c, &d};
    const ListEnd end = readList(cursor, targets);
    EXPECT_DOUBLE_EQ(a, 1e-6);
    EXPECT_DOUBLE_EQ(b, 2000.0);
    EXPECT_EQ(c, "A B");
    EXPECT_EQ(d, "cd");
    EXPECT_TRUE(end.slash);
    EXPECT_EQ(lineAfter(cursor), "next");
}

TEST(ListRead, NeedsNoSlashWhenARepeatFillsTheArray) {
    DeckCursor cursor = cursorOn("100*0.1\nNEXT");
    std::vector<double> values(100, 0.0);
    const ListEnd end = readDoubles(cursor, values);
    EXPECT_EQ(end.count, 100);
    EXPECT_FALSE(end.slash);
    EXPECT_EQ(values, std::vector<double>(100, 0.1));
    EXPECT_EQ(lineAfter(cursor), "NEXT");
}

TEST(ListRead, DropsTheRestOfTheLineBehindASlash) {
    DeckCursor cursor = cursorOn("5 /  trailing -- text\nuntouched\n");
    std::array<int, 3> values{1, 2, 3};
    readIntegers(cursor, values);
    EXPECT_EQ(values, (std::array<int, 3>{5, 2, 3}));
    EXPECT_EQ(lineAfter(cursor), "untouched");
}

TEST(ListRead, PassesOverTrailingCommentsAndCommentLinesInsideData) {
    DeckCursor cursor = cursorOn("4 -- note / 7\n-- 8\n\n5 /\n");
    std::array<int, 3> values{};
    const ListEnd end = readIntegers(cursor, values);
    EXPECT_EQ(values, (std::array<int, 3>{4, 5, 0}));
    EXPECT_EQ(end.count, 2);
}

TEST(ListRead, ReportsASlashBehindTheLastValueButNotOneInACommentOrInQuotes) {
    std::array<int, 1> value{};
    DeckCursor slash = cursorOn("1 excess /\n");
    EXPECT_TRUE(readIntegers(slash, value).slash);
    DeckCursor comment = cursorOn("1 -- km/h\n");
    EXPECT_FALSE(readIntegers(comment, value).slash);
    DeckCursor quoted = cursorOn("1 'a/b'\n");
    EXPECT_FALSE(readIntegers(quoted, value).slash);
}

TEST(ListRead, ReportsTheEndOfTheFileAndKeepsWhatItHas) {
    DeckCursor cursor = cursorOn("1 2\n");
    std::array<double, 4> values{9, 9, 9, 9};
    const ListEnd end = readDoubles(cursor, values);
    EXPECT_TRUE(end.endOfFile);
    EXPECT_EQ(end.count, 2);
    EXPECT_EQ(values, (std::array<double, 4>{1, 2, 9, 9}));
    EXPECT_EQ(cursor.lineNumber, 1);
}

TEST(ListRead, NamesTheLineAndTheTokenThatIsNoNumber) {
    for (const std::string bad : {"abc", "1.2.3", "'5'", "inf", "nan", "1e999", "0*5", "0x10", "+-1"}) {
        DeckCursor cursor = cursorOn("1\n2 " + bad + " 4\nnext\n");
        std::array<double, 4> values{};
        const ListEnd end = readDoubles(cursor, values);
        EXPECT_EQ(end.error, ListError::BadValue) << bad;
        EXPECT_EQ(end.errorLine, 2) << bad;
        EXPECT_EQ(lineAfter(cursor), "next") << bad;
    }
}

TEST(ListRead, RefusesFractionsAndOverflowWhereWholeNumbersBelong) {
    for (const std::string bad : {"1.5", "99999999999", "1e3"}) {
        DeckCursor cursor = cursorOn(bad);
        std::array<int, 1> value{};
        EXPECT_EQ(readIntegers(cursor, value).error, ListError::BadValue) << bad;
    }
}

TEST(ListRead, TakesEveryCommonFormOfANumber) {
    DeckCursor cursor = cursorOn("+5 -.5 5. 1e-400 6.02E+23 -0 1.D2 .25d+1");
    std::array<double, 8> values{};
    EXPECT_EQ(readDoubles(cursor, values).count, 8);
    EXPECT_EQ(values, (std::array<double, 8>{5, -0.5, 5, 0, 6.02e23, 0, 100, 2.5}));
}

TEST(ListRead, CountsRepeatedValuesThatFindNoTarget) {
    DeckCursor cursor = cursorOn("7*3\n");
    std::array<double, 4> values{};
    const ListEnd end = readDoubles(cursor, values);
    EXPECT_EQ(end.count, 4);
    EXPECT_EQ(end.surplus, 3);
    DeckCursor endless = cursorOn("99999999999999999999*3\n");
    EXPECT_GT(readDoubles(endless, values).surplus, 0);
}

TEST(ListRead, LetsDefaultsRunPastTheLastTarget) {
    DeckCursor cursor = cursorOn("1 9* /\n");
    std::array<double, 3> values{};
    const ListEnd end = readDoubles(cursor, values);
    EXPECT_EQ(end.surplus, 0);
    EXPECT_TRUE(end.slash);
}

TEST(ListRead, ScalesValuesReadAndLeavesSkippedOnesAlone) {
    DeckCursor cursor = cursorOn("1 1* 2*3 /\n");
    std::array<double, 4> values{7, 7, 7, 7};
    readDoubles(cursor, values, 10.0);
    EXPECT_EQ(values, (std::array<double, 4>{10, 7, 30, 30}));
}

TEST(ListRead, StepsBackOntoTheLastLineOfAList) {
    DeckCursor cursor = cursorOn("1 2\r\n3 /\r\nnext\r\n");
    std::array<double, 3> values{};
    readDoubles(cursor, values);
    EXPECT_EQ(cursor.lineNumber, 2);
    stepBack(cursor);
    EXPECT_EQ(cursor.lineNumber, 1);
    EXPECT_EQ(lineAfter(cursor), "3 /");
    EXPECT_EQ(lineAfter(cursor), "next");
}

TEST(ListRead, EndsAnOpenQuoteAtItsLine) {
    DeckCursor cursor = cursorOn("'open\nB /\n");
    std::string a;
    std::string b;
    const std::array<ListTarget, 2> targets = {&a, &b};
    readList(cursor, targets);
    EXPECT_EQ(a, "open");
    EXPECT_EQ(b, "B");
}

TEST(PathRead, KeepsTheSlashesOfAnUnquotedPath) {
    DeckCursor cursor = cursorOn("dir/file.inc /\nnext\n");
    std::string path;
    EXPECT_TRUE(readPath(cursor, path).slash);
    EXPECT_EQ(path, "dir/file.inc");
    EXPECT_EQ(lineAfter(cursor), "next");
}

TEST(PathRead, LetsQuotesWin) {
    DeckCursor cursor = cursorOn("\n \"my dir/file\" /\n");
    std::string path;
    readPath(cursor, path);
    EXPECT_EQ(path, "my dir/file");
}

TEST(PathRead, FindsNothingInFrontOfALoneSlash) {
    DeckCursor cursor = cursorOn("/\n");
    std::string path = "old";
    EXPECT_EQ(readPath(cursor, path).count, 0);
    EXPECT_EQ(path, "old");
}

}  // namespace
}  // namespace kvr
