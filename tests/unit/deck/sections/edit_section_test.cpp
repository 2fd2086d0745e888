#include "model/conditioning.hpp"
#include "unit/deck/sections/grid_bench.hpp"
#include "unit/scratch_folder.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

TEST(EditSection, KeepsTheRowsOfEveryMultiplyInOneList) {
    GridBench bench(1, 1, 3,
                    "MULTIPLY\nPERMX 2 1 1 1 1 2 2 /\nPORV 2 /\n/\nMULTIPLY\n'PERMX' 3 1 1 1 1 2 2 /\n"
                    "PERMY 1 /\nPERMZ 1 /\n/\n",
                    "EDIT");
    bench.readEdit();
    ASSERT_EQ(bench.grid.editRows.size(), 5U);
    EXPECT_EQ(bench.grid.editRows[2].name, "PERMX");
    EXPECT_DOUBLE_EQ(bench.grid.editRows[2].value, 3.0);
    EXPECT_EQ(bench.grid.editRows[2].box.k1, 2);
    EXPECT_TRUE(bench.printed("READ -> MULTIPLY"));
    EXPECT_TRUE(bench.printed("-> Finished Reading EDIT. Move to Next Section"));
}

TEST(EditSection, LeavesTheArraysToConditioning) {
    GridBench bench(1, 1, 3, "EDIT\nMULTIPLY\nPORV 0.5 1 1 1 1 2 2 /\n/\nPROPS\n", "EDIT");
    for (double& value : bench.grid.PORO.cells()) value = 0.2;
    bench.readEdit();
    EXPECT_DOUBLE_EQ(bench.grid.PORO[2], 0.2);
    EXPECT_TRUE(bench.printed("Grid keyword found.. read here as grid section"));
    EXPECT_EQ(bench.next(), "PROPS");

    ConnectionTable connections;
    CALCTRANS_STATICGEOPART(bench.console, bench.options, bench.units, bench.grid, connections);
    EXPECT_DOUBLE_EQ(bench.grid.PORO[1], 0.2);
    EXPECT_DOUBLE_EQ(bench.grid.PORO[2], 0.1);
    EXPECT_TRUE(bench.printed("-> Multiplied by EDIT"));
}

TEST(EditSection, TakesPoreVolumesAndTransmissibilitiesInTheUnitsOfTheDeck) {
    GridBench bench(1, 1, 3, "PORV\n1* 10 20 /\nTRANZ\n2 2* /\n", "EDIT");
    bench.units = metricUnits();
    bench.readEdit();
    const CellArray<double>& volumes = bench.grid.given.poreVolume;
    EXPECT_LT(volumes[1], 0.0);
    EXPECT_NEAR(volumes[2], 353.14667, 1e-4);  // 10 m3 in ft3
    EXPECT_NEAR(volumes[3], 706.29333, 1e-4);
    // cp m3/(day bar) to cp rb/(day psi): 6.2898108 * 0.0689475729
    EXPECT_NEAR(bench.grid.given.trans[2][1], 2 * 0.43366720, 1e-6);
    EXPECT_LT(bench.grid.given.trans[2][2], 0.0);
}

TEST(EditSection, SetsAndMultipliesThemOverABox) {
    GridBench bench(1, 1, 3,
                    "EQUALS\nPORV 500 1 1 1 1 2 3 /\nTRANZ 4 1 1 1 1 1 1 /\nPERMX 3 /\n/\n"
                    "MULTIPLY\nPORV 2 1 1 1 1 3 3 /\nTRANZ 0.5 1 1 1 1 1 1 /\n/\n",
                    "EDIT");
    bench.reader.commonForm = true;
    bench.readEdit();
    EXPECT_LT(bench.grid.given.poreVolume[1], 0.0);
    EXPECT_EQ(bench.grid.given.poreVolume[3], 500.0);
    EXPECT_EQ(bench.grid.MULTPV[2], 1.0);
    EXPECT_EQ(bench.grid.MULTPV[3], 2.0);
    EXPECT_EQ(bench.grid.given.trans[2][1], 4.0);
    EXPECT_EQ(bench.grid.faceMultiplier[5][1], 0.5);
    EXPECT_TRUE(bench.printed(" PERMX    -> not surpported  "));
}

TEST(EditSection, SkipsOtherKeywordsAndGoesOn) {
    GridBench bench(1, 1, 3, "OPERATE\n1 1 1 1 1 1 /\nMULTIPLY\nPORV 0.5 /\n/\n", "EDIT");
    bench.readEdit();
    EXPECT_TRUE(bench.printed(" OPERATE  -> not surpported  "));
    EXPECT_EQ(bench.grid.editRows.size(), 1U);
}

TEST(EditSection, StopsOnALetterInTheFactor) {
    const auto read = [] {
        GridBench bench(1, 1, 3, "MULTIPLY\nPORV half /\n/\n", "EDIT");
        bench.speakToStandardError();
        bench.readEdit();
    };
    EXPECT_EXIT(
        read(), testing::ExitedWithCode(1),
        "ERROR: File reading error, code = 64\nReading error, in EDIT Section\nFile TEST.DATA, line 2");
}

TEST(EditSection, ReadsOnInAnotherFile) {
    const ScratchFolder folder;
    folder.write("more.inc", "MULTIPLY\nPORV 0.5 /\n/\n");
    GridBench bench(1, 1, 3, "MULTIPLY\nPERMX 2 /\n/\nINCLUDE\n'more.inc' /\n", "EDIT");
    bench.reader.workingFolder = folder.path;
    bench.readEdit();
    EXPECT_EQ(bench.grid.editRows.size(), 2U);
    EXPECT_TRUE(bench.printed("INCLUDE FILE FINISHED, EDIT SECTION\n"));
}

TEST(EditSection, StopsOnAMissingFile) {
    const auto read = [] {
        GridBench bench(1, 1, 3, "INCLUDE\n'missing' /\n", "EDIT");
        bench.speakToStandardError();
        bench.readEdit();
    };
    EXPECT_EXIT(read(), testing::ExitedWithCode(1),
                "ERROR: INCLUDE File Open Error at EDIT section\nFile I/O Error, in EDIT Section");
}

TEST(EditSection, StopsOnABoxOutsideTheGrid) {
    const auto read = [] {
        GridBench bench(1, 1, 3, "MULTIPLY\nPORV 0.5 1 1 1 1 1 4 /\n/\n", "EDIT");
        bench.speakToStandardError();
        bench.readEdit();
    };
    EXPECT_EXIT(read(), testing::ExitedWithCode(1), "BOX OUTSIDE THE GRID");
}

}  // namespace
}  // namespace kvr
