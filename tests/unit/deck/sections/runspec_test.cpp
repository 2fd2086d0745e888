#include "deck/sections/runspec.hpp"

#include "unit/deck/deck_bench.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

struct RunspecBench : DeckBench {
    RunOptions options;
    GridModel grid;
    FluidTables tables;
    RunClock clock;

    explicit RunspecBench(std::string_view text) : DeckBench(text) {}
    void read() {
        RunspecRecords records{options, units, grid, tables, clock};
        readRunspec(reader, records);
    }
};

constexpr std::string_view OneCell = "DIMENS\n1 1 1 /\n";

TEST(Runspec, ReadsSizesPhasesUnitsAndDate) {
    RunspecBench bench(
        "DIMENS\n 10 5 3 /\nOIL -- phase\nWATER\nGAS\nDISGAS\nFIELD  /\nSTART\n 2 'FEB' 1999 /\n"
        "GRID\n");
    bench.read();
    EXPECT_EQ(bench.grid.NCELLS, 150);
    EXPECT_EQ(bench.grid.PORO.count(), 150);
    EXPECT_TRUE(bench.options.hasOil && bench.options.hasWater && bench.options.hasGas);
    EXPECT_TRUE(bench.tables.hasGas);
    EXPECT_EQ(bench.units.deck, DeckUnits::Field);
    EXPECT_EQ(bench.clock.day, 2);
    EXPECT_EQ(bench.clock.month, 2);
    EXPECT_EQ(bench.clock.year, 1999);
    EXPECT_EQ(bench.next(), "GRID");
    EXPECT_EQ(bench.screen(),
              "READ -> DIMENS\nNX = 10\nNY = 5\nNZ = 3\nREAD -> OIL\nUSE OIL PHASE\nREAD -> WATER\n"
              "USE WATER PHASE\nREAD -> GAS\nUSE GAS PHASE\nREAD -> DISGAS\nUSE SOLUTION GAS IN OIL PHASE\n"
              "READ -> FIELD\nREAD -> START\n-> Finished Reading RUNSPEC. Move to Next Section\n");
}

TEST(Runspec, DerivesTheDimensionality) {
    const std::pair<const char*, const char*> cases[] = {{"10 1 1", "x_1d"},
                                                         {"10 5 1", "xy_2d"},
                                                         {"10 1 4", "xz_2d"},
                                                         {"1 5 4", "xyz_3d"},
                                                         {"1 5 1", "xy_2d"}};
    for (const auto& [cells, name] : cases) {
        RunspecBench bench(std::string("DIMENS\n") + cells + " /\n");
        bench.read();
        EXPECT_EQ(bench.options.gridDimensionality, name) << cells;
    }
}

TEST(Runspec, MakesMatrixAndFracturesOfAnEvenNumberOfLayers) {
    RunspecBench bench("DIMENS\n3 1 2 /\nDUALPORO\nGRAVDR\nNODPPM\n");
    bench.read();
    EXPECT_EQ(bench.options.modelName, "DPSP");
    EXPECT_TRUE(bench.grid.dual.isSet);
    EXPECT_TRUE(bench.options.gravityDrainage && bench.grid.dual.gravityDrainage);
    EXPECT_TRUE(bench.grid.dual.permeabilityEffective);
    EXPECT_EQ(bench.options.gridDimensionality, "x_1d");
}

TEST(RunspecDeathTest, StopsAtAnOddNumberOfLayersForTwoContinua) {
    EXPECT_DEATH(
        {
            RunspecBench bench("DUALPORO\nDIMENS\n3 1 3 /\n");
            bench.speakToStandardError();
            bench.read();
        },
        "DUALPORO NEEDS AN EVEN NUMBER OF LAYERS, DIMENS GIVES 3");
}

TEST(Runspec, MultipliesWellsAndConnectionsWhenBothAreGiven) {
    RunspecBench both(std::string(OneCell) + "WELLDIMS\n4 10 1 2 /\n");
    both.read();
    EXPECT_EQ(both.options.maxConnAll, 40);
    EXPECT_TRUE(both.printed("-> Maximum Well Connection Adjusted(ALL) (Def = 500)-> 40\n"));
    RunspecBench one(std::string(OneCell) + "WELLDIMS\n0 10 /\n");
    one.read();
    EXPECT_EQ(one.options.maxConnAll, 50);
}

TEST(Runspec, LeavesDefaultedTableSizesAlone) {
    RunspecBench bench(std::string(OneCell) + "TABDIMS\n2 1* 40 /\nTABDIMS\n/\n");
    bench.read();
    EXPECT_EQ(bench.options.maxRockTables, 2);
    EXPECT_EQ(bench.options.maxPvtTables, 1);
    EXPECT_EQ(bench.options.maxRockRows, 40);
    EXPECT_EQ(bench.options.maxPvtRows, 200);
}

TEST(Runspec, OpensTwentySixConnectionsForNinePoints) {
    RunspecBench bench(std::string(OneCell) + "NINEPOIN\n");
    bench.read();
    EXPECT_TRUE(bench.options.ninePoint);
    EXPECT_EQ(bench.options.maxConnectionsPerCell, 26);
    EXPECT_TRUE(bench.printed("READ -> NINEPOIN, Nine point scheme activated"));
}

TEST(Runspec, TakesZeroTracersForActiveAndANegativeCountForNone) {
    RunspecBench none(std::string(OneCell) + "TRACERS\n1 0 1 /\n");
    none.read();
    EXPECT_TRUE(none.options.tracerActive);
    EXPECT_EQ(none.options.tracerCount, 0);
    RunspecBench negative(std::string(OneCell) + "TRACERS\n1 -1 1 /\n");
    negative.read();
    EXPECT_FALSE(negative.options.tracerActive);
}

TEST(Runspec, RepairsADateBelowTheFirst) {
    RunspecBench bench(std::string(OneCell) + "START\n0 JAN 0 /\n");
    bench.read();
    EXPECT_EQ(bench.clock.day, 1);
    EXPECT_EQ(bench.clock.month, 1);
    EXPECT_EQ(bench.clock.year, 2000);
}

TEST(Runspec, AsksForUnitCopiesOnlyByTheExactComment) {
    RunspecBench exact("-- ConvertUnitCommandKVR\n" + std::string(OneCell));
    exact.read();
    EXPECT_TRUE(exact.options.outputMetric);
    RunspecBench other("--  ConvertUnitCommandKVR\n" + std::string(OneCell));
    other.read();
    EXPECT_FALSE(other.options.outputMetric);
}

TEST(Runspec, FindsTheUnitCopyCommentAlsoBehindAKeywordThatItSkips) {
    RunspecBench bench("NOECHO\n-- ConvertUnitCommandKVR\n" + std::string(OneCell));
    bench.read();
    EXPECT_TRUE(bench.options.outputMetric);
}

TEST(Runspec, TellsItsSizesTracersAndComponents) {
    RunspecBench bench(
        "RUNSPEC\nDIMENS\n1 1 1 /\nTABDIMS\n2 3 40 50 1 1 /\nWELLDIMS\n4 10 /\nTRACERS\n0 2 /\nSGAS\nMETRIC\n"
        "COMPS\n3 /\n");
    bench.read();
    EXPECT_EQ(bench.screen(),
              "READING - RUNSPEC SECTION\n"
              "READ -> DIMENS\nNX = 1\nNY = 1\nNZ = 1\n"
              "READ -> TABDIMS\n-> Maximum Rock Table Num   (Def = 1   )-> 2\n"
              "-> Maximum PVT  Table Num   (Def = 1   )-> 3\n"
              "-> Maximum Rock Table Col   (Def = 1000)-> 40\n"
              "-> Maximum PVT  Table Col   (Def = 200 )-> 50\n"
              "READ -> WELLDIMS\n-> Maximum Allocatable Memory Adjusted   (Def = 500)-> 4\n"
              "-> Maximum Well Connection Adjusted(PER) (Def = 500)-> 10\n"
              "-> Maximum Well Connection Adjusted(ALL) (Def = 500)-> 40\n"
              "READ -> TRACERS\n-> Tracer Option Activated, Make Sure That Other Data are Assigned. \n"
              "READ -> SGAS\nUSE SOLUTION GAS IN OIL PHASE\nREAD -> METRIC\n"
              "READ -> COMPS\n-> COMPS.. Composotional model Activated.\n"
              "-> Finished Reading RUNSPEC. Move to Next Section\n");
    EXPECT_EQ(bench.options.componentCount, 3);
    EXPECT_TRUE(bench.options.hasGas);
    EXPECT_EQ(bench.options.tracerCount, 2);
}

TEST(Runspec, WritesDimensAndStartToBothCopies) {
    RunspecBench bench("DIMENS\n-- c\n 3 2 1 /\nSTART\n 1 JAN 2000/\n");
    bench.read();
    EXPECT_EQ(contentsOf(bench.sinks.metricCopy), "-- c\nDIMENS\n3 2 1 /\nSTART\n1 JAN 2000/\n");
    EXPECT_EQ(contentsOf(bench.sinks.fieldCopy), contentsOf(bench.sinks.metricCopy));
}

TEST(Runspec, DoesNothingForWordsItDoesNotKnow) {
    RunspecBench bench("NOECHO\nUNIFOUT\n" + std::string(OneCell));
    bench.read();
    EXPECT_TRUE(bench.printed(" NOECHO   -> not surpported  \n UNIFOUT  -> not surpported  \n"));
    EXPECT_EQ(bench.reader.keywordCount, 1);
}

void readAndStop(std::string_view text) {
    RunspecBench bench(text);
    bench.speakToStandardError();
    bench.read();
}

TEST(RunspecDeathTest, StopsWithoutDimensions) {
    EXPECT_EXIT(readAndStop("OIL\n"), testing::ExitedWithCode(1),
                "ERROR :: DIMENS NOT SPECIFIED\nFile TEST.DATA");
}

TEST(RunspecDeathTest, StopsOnDimensionsOfZeroOrLessAndNamesTheirLine) {
    EXPECT_EXIT(readAndStop("OIL\nDIMENS\n 10 0 1 /\nGAS\n"), testing::ExitedWithCode(1),
                "ERROR :: DIMENS NOT SPECIFIED\nFile TEST.DATA, line 3, keyword DIMENS");
    EXPECT_EXIT(readAndStop("DIMENS\n -10 1 1 /\n"), testing::ExitedWithCode(1), "DIMENS NOT SPECIFIED");
}

TEST(RunspecDeathTest, StopsOnAGridThatNoMachineHolds) {
    EXPECT_EXIT(readAndStop("DIMENS\n 100000 100000 100000 /\n"), testing::ExitedWithCode(1),
                "Error :: Memory error , Variable\nFile TEST.DATA, line 2, keyword DIMENS");
}

TEST(RunspecDeathTest, StopsOnLettersInDimens) {
    EXPECT_EXIT(readAndStop("DIMENS\n ten 1 1 /\n"), testing::ExitedWithCode(1),
                "ERROR: File reading error, code = 64\nReading error, in RUNSPEC Section\n"
                "File TEST.DATA, line 2, keyword DIMENS: \"ten\"");
}

TEST(Runspec, StopsAtALargeGridThatNoArrayOfTheDeckCouldFill) {
    const auto read = [](const std::string& dimensions) {
        RunspecBench bench("OIL\nDIMENS\n" + dimensions + " /\nGRID\nPORO\n2500*0.2 /\n");
        bench.speakToStandardError();
        bench.read();
    };
    EXPECT_EXIT(read("50 50 100"), testing::ExitedWithCode(1),
                "ERROR :: DIMENS GIVES 250000 CELLS, THE LARGEST ARRAY OF THE DECK HAS 2500 VALUES\n"
                ".*line 3, keyword DIMENS");
}

TEST(Runspec, TakesALargeGridThatARowOfEqualsMayFill) {
    RunspecBench bench("DIMENS\n50 50 100 /\nGRID\nEQUALS\nPORO 0.2 /\n/\n");
    bench.read();
    EXPECT_EQ(bench.grid.NCELLS, 250000);
}

TEST(Runspec, TellsOfADeckWithoutAUnitWord) {
    RunspecBench bench(OneCell);
    bench.read();
    EXPECT_TRUE(
        bench.printed("WARNING :: NEITHER FIELD NOR METRIC IS GIVEN, THE DECK IS READ IN FIELD UNITS"));
    RunspecBench metric("METRIC\n" + std::string(OneCell));
    metric.read();
    EXPECT_FALSE(metric.printed("NEITHER FIELD NOR METRIC"));
}

}  // namespace
}  // namespace kvr
