#include "deck/reading/section_reader.hpp"

#include "unit/deck/deck_bench.hpp"

#include <array>
#include <gtest/gtest.h>
#include <vector>

namespace kvr {
namespace {

TEST(DeckCursor, StepsBackOneLineAndCountsLines) {
    DeckCursor cursor = cursorOn("one\r\ntwo\nthree");
    std::string_view line;
    ASSERT_TRUE(nextLine(cursor, line));
    EXPECT_EQ(line, "one");
    ASSERT_TRUE(nextLine(cursor, line));
    EXPECT_EQ(cursor.lineNumber, 2);
    stepBack(cursor);
    EXPECT_EQ(cursor.lineNumber, 1);
    ASSERT_TRUE(nextLine(cursor, line));
    EXPECT_EQ(line, "two");
    ASSERT_TRUE(nextLine(cursor, line));
    EXPECT_EQ(line, "three");
    EXPECT_FALSE(nextLine(cursor, line));
}

TEST(DeckCursor, DoesNotLoadFoldersOrMissingFiles) {
    DeckCursor cursor;
    EXPECT_FALSE(loadDeck("/", cursor));
    EXPECT_FALSE(loadDeck("no such file", cursor));
    EXPECT_TRUE(cursor.text.empty());
}

TEST(CommentLine, IsTwoDashesOrNothingButBlanks) {
    EXPECT_TRUE(isCommentLine("  -- x"));
    EXPECT_TRUE(isCommentLine(" \t \r"));
    EXPECT_FALSE(isCommentLine("- 1"));
    EXPECT_FALSE(isCommentLine("1 -- x"));
}

TEST(ConsumeSlashLines, CountsBlankCommentAndSlashLinesUpToTheData) {
    DeckBench bench("\n--c\n/\n1 2\n");
    EXPECT_EQ(consumeSlashLines(bench.reader), 3);
    EXPECT_EQ(bench.next(), "1 2");
}

TEST(SkipCommentLines, EchoesWhatItSkipsToLogAndCopies) {
    DeckBench bench("-- one\n\n  DATA\n");
    skipCommentLines(bench.reader);
    EXPECT_EQ(bench.next(), "  DATA");
    EXPECT_EQ(bench.logged(), "-- one\n\n");
    EXPECT_EQ(contentsOf(bench.sinks.metricCopy), "-- one\n\n");
    EXPECT_EQ(contentsOf(bench.sinks.fieldCopy), "-- one\n\n");
}

TEST(SkipCommentLines, SaysWhenTheFileEnds) {
    DeckBench bench("-- one\n");
    skipCommentLines(bench.reader);
    EXPECT_EQ(bench.screen(), "FILE I/O -> END OF FILE..\n");
}

TEST(SkipKeywordData, DropsLinesWithSlashOrAsteriskAndEchoesAllButTheFirst) {
    DeckBench bench("1 2 /\n3*4\n-- c\nNEXT\n");
    skipKeywordData(bench.reader);
    EXPECT_EQ(bench.next(), "NEXT");
    EXPECT_EQ(bench.logged(), "3*4\n-- c\n");
}

TEST(KeywordOf, TakesTheFirstWordCutAndPaddedToEight) {
    EXPECT_EQ(keywordOf("   DIMENS"), "DIMENS  ");
    EXPECT_EQ(keywordOf("OIL -- x"), "OIL     ");
    EXPECT_EQ(keywordOf("OPTIONKVRX"), "OPTIONKV");
    EXPECT_EQ(keywordOf("\tFIELD/"), "FIELD   ");
}

TEST(NextLineIsKeyword, LooksAtTheFirstLetterWithoutMoving) {
    EXPECT_TRUE(nextLineIsKeyword(DeckBench("  DENSITY\n").reader));
    EXPECT_TRUE(nextLineIsKeyword(DeckBench("").reader));
    EXPECT_FALSE(nextLineIsKeyword(DeckBench("'P1' 1\n").reader));
    EXPECT_FALSE(nextLineIsKeyword(DeckBench("1 2\n").reader));
    EXPECT_FALSE(nextLineIsKeyword(DeckBench("\nABC").reader));
}

TEST(NextLineIsLoneWord, TellsAKeywordFromARowThatStartsWithAName) {
    EXPECT_TRUE(nextLineIsLoneWord(DeckBench("COMPDAT -- wells\n").reader));
    EXPECT_TRUE(nextLineIsLoneWord(DeckBench("END OF DECK\n").reader));
    EXPECT_FALSE(nextLineIsLoneWord(DeckBench("P1 1 2 /\n").reader));
    EXPECT_FALSE(nextLineIsLoneWord(DeckBench("'P1'\n").reader));
}

// --- rows ------------------------------------------------------------------------------------------

std::vector<double> firstColumn(DeckBench& bench, RowLoop loop) {
    std::vector<double> column;
    while (nextTableRow(bench.reader, loop)) {
        std::array<double, 2> row{};
        loop.last = readDoubles(bench.cursor, row);
        column.push_back(row[0]);
    }
    return column;
}
const RowLoop Table{RowSlash::EndsTable, RowStart::Number};
const RowLoop RowList{RowSlash::EndsRow, RowStart::Number};

TEST(TableRows, EndAtTheSlashOfTheLastRow) {
    DeckBench bench("-- p b\n1 10\n2 20\n3 30 / end\nDENSITY\n");
    EXPECT_EQ(firstColumn(bench, Table), (std::vector<double>{1, 2, 3}));
    EXPECT_EQ(bench.next(), "DENSITY");
}

TEST(TableRows, EndAtASlashLine) {
    DeckBench bench("1 10\n2 20\n/\nDENSITY\n");
    EXPECT_EQ(firstColumn(bench, Table), (std::vector<double>{1, 2}));
    EXPECT_EQ(bench.next(), "DENSITY");
}

TEST(TableRows, EndAtACommentOrBlankLineBehindARow) {
    DeckBench comment("1 10\n2 20\n3 30\n-- note\n4 40 /\n");
    EXPECT_EQ(firstColumn(comment, Table).size(), 3U);
    DeckBench blank("1 10\n2 20\n\n3 30 /\n");
    EXPECT_EQ(firstColumn(blank, Table).size(), 2U);
}

TEST(TableRows, TakeSlashesForRowEndsWhenTheFirstRowHasOne) {
    DeckBench bench("1 10 /\n2 20 /\n3 30 /\n/\nNEXT");
    EXPECT_EQ(firstColumn(bench, Table), (std::vector<double>{1, 2, 3}));
    EXPECT_EQ(bench.next(), "NEXT");
}

TEST(TableRows, EndInFrontOfTheNextKeywordWithoutASlash) {
    DeckBench bench("1 10\n2 20\nDENSITY\n");
    EXPECT_EQ(firstColumn(bench, Table), (std::vector<double>{1, 2}));
    EXPECT_EQ(bench.next(), "DENSITY");
}

TEST(TableRows, AreNoneInFrontOfASlashLineOrAtTheEndOfTheFile) {
    DeckBench slash("/\nNEXT\n");
    EXPECT_TRUE(firstColumn(slash, Table).empty());
    EXPECT_EQ(slash.next(), "NEXT");
    DeckBench nothing("");
    EXPECT_TRUE(firstColumn(nothing, Table).empty());
}

TEST(TableRows, GoOnBehindCommentsInTheCommonForm) {
    DeckBench bench("1 10\n2 20\n-- note\n\n3 30\n/\nNEXT\n");
    bench.reader.commonForm = true;
    EXPECT_EQ(firstColumn(bench, Table), (std::vector<double>{1, 2, 3}));
    EXPECT_EQ(bench.next(), "NEXT");
}

TEST(TableRows, EndBehindACommentInFrontOfAKeywordOrAnotherTable) {
    DeckBench keyword("1 10\n2 20\n-- note\nNEXT\n");
    keyword.reader.commonForm = true;
    EXPECT_EQ(firstColumn(keyword, Table).size(), 2U);
    EXPECT_EQ(keyword.next(), "NEXT");
    DeckBench table("-- note\n1 30\n/\n");
    table.reader.commonForm = true;
    RowLoop rows = Table;
    rows.rows = 1;
    rows.axis = 2.0;  // of the row before
    EXPECT_FALSE(nextTableRow(table.reader, rows));
    EXPECT_EQ(table.next(), "1 30");
}

TEST(TableRows, MayHaveTheirSlashOnTheNextLineInTheCommonForm) {
    DeckBench bench("1 10\n/\n2 20\n/\n/\nNEXT\n");
    bench.reader.commonForm = true;
    EXPECT_EQ(firstColumn(bench, RowList), (std::vector<double>{1, 2}));
    EXPECT_EQ(bench.next(), "NEXT");
}

TEST(ScheduleRows, MayHaveTheirSlashOnTheNextLineInTheCommonForm) {
    DeckBench bench("WELSPECS\nA 1\n/\n-- note\nB 2\n/\n/\nNEXT\n");
    bench.reader.commonForm = true;
    bench.next();
    std::vector<std::string> names;
    while (nextRow(bench.reader)) {
        std::string name;
        int number = 0;
        const std::array<ListTarget, 2> targets{&name, &number};
        readList(bench.cursor, targets);
        names.push_back(name);
    }
    EXPECT_EQ(names, (std::vector<std::string>{"A", "B"}));
    EXPECT_EQ(bench.next(), "NEXT");
}

TEST(SkipKeywordData, PassesOverTheNamesOfReportsInTheCommonForm) {
    DeckBench bench(" PRESSURE SWAT\n SGAS /\nNEXT\n");
    bench.reader.commonForm = true;
    bench.reader.keyword = "RPTSOL";
    skipKeywordData(bench.reader);
    EXPECT_EQ(bench.next(), "NEXT");
}

TEST(ListRows, EndAtASlashLineButNotAtTheirOwnSlash) {
    DeckBench bench("1 1 /\n2 2 /\n/\nNEXT");
    EXPECT_EQ(firstColumn(bench, RowList), (std::vector<double>{1, 2}));
    EXPECT_EQ(bench.next(), "NEXT");
}

TEST(ScheduleRows, AllowCommentsBetweenThemAndEndAtASlashLine) {
    DeckBench bench("-- first\nP1 1 /\n\n-- second\nP2 2 /\n/\nTSTEP\n");
    std::vector<std::string> names;
    while (nextRow(bench.reader)) {
        std::string name;
        const std::array<ListTarget, 1> targets = {&name};
        readList(bench.cursor, targets);
        names.push_back(name);
    }
    EXPECT_EQ(names, (std::vector<std::string>{"P1", "P2"}));
    EXPECT_EQ(bench.next(), "TSTEP");
}

TEST(ScheduleRows, EndInFrontOfAKeywordWhoseSlashLineWasForgotten) {
    DeckBench bench("P1 1 /\nTSTEP\n10 /\n");
    EXPECT_TRUE(nextRow(bench.reader));
    bench.next();
    EXPECT_FALSE(nextRow(bench.reader));
    EXPECT_EQ(bench.next(), "TSTEP");
}

// --- arrays and failures ---------------------------------------------------------------------------

TEST(CellArrayRead, ConvertsAndWritesBothCopies) {
    DeckBench bench("2*100 300 /\n");
    bench.units = fieldUnits();
    bench.reader.outputMetric = true;
    bench.reader.keyword = "PRESSURE";
    std::array<double, 3> values{};
    readCellArray(bench.reader, values, bench.units.pressure, bench.units.copyPressure);
    EXPECT_EQ(values, (std::array<double, 3>{100, 100, 300}));
    EXPECT_EQ(contentsOf(bench.sinks.fieldCopy), "PRESSURE\n100 100 300 /\n");
    EXPECT_EQ(contentsOf(bench.sinks.metricCopy), "PRESSURE\n6.894757 6.894757 20.684271 /\n");
}

TEST(CellArrayRead, WritesTheNumbersOfAMetricDeckToTheMetricCopyAsTheyAre) {
    DeckBench bench("10 20\n");
    bench.units = metricUnits();
    bench.reader.outputMetric = true;
    bench.reader.keyword = "DX";
    std::array<double, 2> values{};
    readCellArray(bench.reader, values, bench.units.length, bench.units.copyLength);
    EXPECT_DOUBLE_EQ(values[0], 32.8084);
    EXPECT_EQ(contentsOf(bench.sinks.metricCopy), "DX\n10 20 /\n");
    EXPECT_EQ(contentsOf(bench.sinks.fieldCopy), "DX\n32.8084 65.6168 /\n");
}

void readThreeCells(std::string_view text) {
    DeckBench bench(text, "GRID");
    bench.speakToStandardError();
    bench.reader.keyword = "PORO";
    std::array<double, 3> values{};
    readCellArray(bench.reader, values);
}

TEST(CellArrayReadDeathTest, StopsOnTooFewValuesWithFileLineAndKeyword) {
    EXPECT_EXIT(readThreeCells("0.1\n0.2 /\n"), testing::ExitedWithCode(1),
                "ERROR: File reading error, code = 66\nReading error, in GRID Section\n"
                "File TEST.DATA, line 2, keyword PORO: 3 values, 2 given");
}

TEST(CellArrayReadDeathTest, StopsOnARepeatPastTheLastCell) {
    EXPECT_EXIT(readThreeCells("4*0.1 /\n"), testing::ExitedWithCode(1), "code = 65\n.*\n.*line 1.* 4 given");
    EXPECT_EXIT(readThreeCells("0.1 99999999999*0.1 /\n"), testing::ExitedWithCode(1), "2147483648 given");
}

TEST(CellArrayReadDeathTest, StopsOnLettersWhereNumbersBelong) {
    EXPECT_EXIT(readThreeCells("0.1 0.2\nPERMX\n"), testing::ExitedWithCode(1),
                "code = 64\nReading error, in GRID Section\n"
                "File TEST.DATA, line 2, keyword PORO: \"PERMX\"");
}

TEST(CellArrayRead, KeepsWhatItHasAtTheEndOfTheFile) {
    DeckBench bench("0.1 0.2");
    bench.reader.keyword = "PORO";
    std::array<double, 3> values{9, 9, 9};
    readCellArray(bench.reader, values);
    EXPECT_EQ(values, (std::array<double, 3>{0.1, 0.2, 9}));
    EXPECT_EQ(bench.screen(), "FILE I/O -> END OF FILE..\nFile TEST.DATA, line 1, keyword PORO\n");
}

void readLetterInsideInclude() {
    DeckBench bench("x", "EDIT");
    bench.speakToStandardError();
    bench.reader.insideInclude = true;
    std::array<int, 1> value{};
    checkRead(bench.reader, readIntegers(bench.cursor, value));
}

TEST(ReadErrorDeathTest, NamesTheIncludeFileInsideAnInclude) {
    EXPECT_EXIT(readLetterInsideInclude(), testing::ExitedWithCode(1), "Reading error, in EDIT INCLUDE file");
}

TEST(NotSupported, PrintsEightCharactersAndKeepsEachKeywordOnceWithItsFirstLine) {
    DeckBench bench("UNIFOUT\nMULTFLTS\nUNIFOUT\n1 2 3\n");
    for (int n = 0; n < 4; ++n) reportNotSupported(bench.reader, bench.next());
    EXPECT_EQ(bench.screen(),
              " UNIFOUT  -> not surpported  \n MULTFLTS -> not surpported  \n"
              " UNIFOUT  -> not surpported  \n 1 2 3    -> not surpported  \n");
    ASSERT_EQ(bench.sinks.skipped.size(), 2U);
    EXPECT_EQ(bench.sinks.skipped[0].name, "UNIFOUT");
    EXPECT_EQ(bench.sinks.skipped[0].lineNumber, 1);
    EXPECT_EQ(bench.sinks.skipped[0].count, 2);
    EXPECT_EQ(bench.sinks.skipped[1].lineNumber, 2);
}

}  // namespace
}  // namespace kvr
