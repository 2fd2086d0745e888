#include "deck/sections/grid_barriers.hpp"

#include "unit/deck/sections/grid_bench.hpp"

namespace kvr {
namespace {

TEST(GridBarriers, TakeOneFactorPerCellAndFace) {
    GridBench bench(2, 2, 2, SoundBlocks + "MULTX\n0.5 7*1 /\nMULTZ-\n4*1 4*0.1 /\n");
    bench.readGrid();
    EXPECT_EQ(bench.grid.faceMultiplier[1][1], 0.5);
    EXPECT_EQ(bench.grid.faceMultiplier[1][2], 1.0);
    EXPECT_EQ(bench.grid.faceMultiplier[4][4], 1.0);
    EXPECT_EQ(bench.grid.faceMultiplier[4][8], 0.1);
    EXPECT_TRUE(bench.grid.faceMultiplier[0].empty());
}

TEST(GridBarriers, BelowZeroAreToldAndSetToOne) {
    GridBench bench(2, 2, 2, SoundBlocks + "MULTY\n-1 7*0.5 /\n");
    bench.readGrid();
    EXPECT_EQ(bench.grid.faceMultiplier[3][1], 1.0);
    EXPECT_EQ(bench.grid.faceMultiplier[3][2], 0.5);
    EXPECT_TRUE(bench.printed("WARNING :: 1 MULTIPLIERS BELOW ZERO, SET TO 1"));
}

TEST(GridBarriers, OfEqualsAndMultiplyRowsActOnTheirBox) {
    GridBench bench(
        2, 2, 2,
        SoundBlocks + "EQUALS\n'MULTX-' 0.5 2 2 1 2 1 2 /\n/\nMULTIPLY\n'MULTX-' 0.1 2 2 1 1 1 1 /\n/\n");
    bench.readGrid();
    EXPECT_EQ(bench.grid.faceMultiplier[0][1], 1.0);
    EXPECT_DOUBLE_EQ(bench.grid.faceMultiplier[0][2], 0.05);
    EXPECT_DOUBLE_EQ(bench.grid.faceMultiplier[0][4], 0.5);
}

TEST(GridBarriers, AreFacesOfFaultsWithTheirLastFactor) {
    GridBench bench(2, 2, 2,
                    SoundBlocks +
                        "FAULTS\n'F1' 1 1 1 2 1 2 'X' /\n'F2' 1 2 1 1 1 1 'J-' /\n/\n"
                        "MULTFLT\n'F*' 0.5 /\n'F2' 0.1 /\n/\n");
    bench.readGrid();
    ASSERT_EQ(bench.grid.faultFaces.size(), 2U);
    EXPECT_EQ(bench.grid.faultFaces[0].face, 2);
    EXPECT_EQ(bench.grid.faultFaces[1].face, 3);
    ASSERT_EQ(bench.grid.faultMultipliers.size(), 2U);
    EXPECT_EQ(bench.grid.faultMultipliers[0].value, 0.5);
    EXPECT_EQ(bench.grid.faultMultipliers[1].value, 0.1);
}

TEST(GridBarriers, OfEditMultiplyThoseOfGrid) {
    GridBench bench(2, 2, 2, SoundBlocks + "FAULTS\n'F1' 1 1 1 2 1 2 'X' /\n/\nMULTFLT\n'F1' 0.5 /\n/\n");
    bench.readGrid();
    DeckCursor edit = cursorOn("MULTFLT\n'F1' 0.2 /\n/\n");
    bench.reader.cursor = &edit;
    bench.reader.section = "EDIT";
    bench.readEdit();
    EXPECT_DOUBLE_EQ(bench.grid.faultMultipliers[0].value, 0.1);
}

TEST(GridBox, TakesArraysForItsCellsAloneUntilItsEnd) {
    GridBench bench(
        2, 2, 2,
        SoundBlocks + "BOX\n2 2 1 2 2 2 /\nPERMX\n7 8 /\nEQUALS\nPORO 0.3 /\n/\nENDBOX\nPERMY\n8*50 /\n");
    bench.reader.gridSize = {2, 2, 2};
    bench.readGrid();
    EXPECT_EQ(bench.grid.PERMX[6], 7.0);
    EXPECT_EQ(bench.grid.PERMX[8], 8.0);
    for (const CellId cell : {1, 2, 3, 4, 5, 7}) EXPECT_EQ(bench.grid.PERMX[cell], 100.0) << cell;
    EXPECT_EQ(bench.grid.PORO[6], 0.3);
    EXPECT_EQ(bench.grid.PORO[5], 0.2);
    EXPECT_EQ(bench.grid.PERMY[1], 50.0);
}

TEST(GridBox, OutsideTheGridStops) {
    GridBench bench(2, 2, 2, "BOX\n1 3 1 2 1 2 /\n");
    bench.reader.gridSize = {2, 2, 2};
    bench.speakToStandardError();
    EXPECT_EXIT(bench.readGrid(), testing::ExitedWithCode(1), "ERROR :: BOX OUTSIDE THE GRID");
}

TEST(GridSkip, DropsWhatStandsUpToItsEnd) {
    GridBench bench(2, 2, 2,
                    SoundBlocks + "SKIP\nPERMX\n8*1 /\nSCHEDULE\nENDSKIP\nSKIP300\nPERMY\n8*3 /\nENDSKIP\n");
    bench.readGrid();
    EXPECT_EQ(bench.grid.PERMX[1], 100.0);
    EXPECT_EQ(bench.grid.PERMY[1], 3.0);
}

TEST(GridBarriers, KnowFaultsByTheirWholeNames) {
    GridBench bench(2, 2, 2,
                    SoundBlocks +
                        "FAULTS\n'NORTHERN_1' 1 1 1 2 1 2 'X' /\n'NORTHERN_2' 1 2 1 1 1 1 'J' /\n/\n"
                        "MULTFLT\n'NORTHERN_2' 0.1 /\n'NORTHERN_*' 0.5 /\n'NORTHERN_1' 0.2 /\n/\n");
    bench.readGrid();
    ASSERT_EQ(bench.grid.faultMultipliers.size(), 2U);
    EXPECT_EQ(bench.grid.faultMultipliers[0].fault, "NORTHERN_2");
    EXPECT_EQ(bench.grid.faultMultipliers[0].value, 0.5);
    EXPECT_EQ(bench.grid.faultMultipliers[1].value, 0.2);
}

TEST(GridBarriers, TakeFactorsOfPoreVolumesByArrayAndByRows) {
    GridBench bench(
        2, 2, 2,
        SoundBlocks +
            "MULTPV\n4*2 4*1 /\nEQUALS\nMULTPV 3 1 1 1 1 1 1 /\n/\nMULTIPLY\nMULTPV 10 1 2 1 1 1 1 /\n/\n");
    bench.readGrid();
    EXPECT_EQ(bench.grid.MULTPV[1], 30.0);
    EXPECT_EQ(bench.grid.MULTPV[2], 20.0);
    EXPECT_EQ(bench.grid.MULTPV[4], 2.0);
    EXPECT_EQ(bench.grid.MULTPV[5], 1.0);
    EXPECT_EQ(bench.grid.PORO[1], 0.2) << "what a boundary cell holds in addition is no porosity above 1";
}

TEST(GridBarriers, OfPoreVolumesInEditTakeThePlaceOfThoseOfGrid) {
    GridBench bench(2, 2, 2, SoundBlocks + "MULTPV\n8*2 /\n");
    bench.readGrid();
    DeckCursor edit = cursorOn("MULTPV\n8*5 /\n");
    bench.reader.cursor = &edit;
    bench.reader.section = "EDIT";
    bench.readEdit();
    EXPECT_EQ(bench.grid.MULTPV[8], 5.0);
}

TEST(GridBarriers, TellRegionsInRowsOfConnections) {
    GridBench plain(2, 2, 2, SoundBlocks + "NNC\n1 1 1 2 2 2 0.5 /\n/\n");
    plain.readGrid();
    EXPECT_FALSE(plain.printed("REGIONS IN"));
    GridBench given(2, 2, 2, SoundBlocks + "NNC\n1 1 1 2 2 2 0.5 1 2 /\n1 1 1 2 2 1 0.5 /\n/\n");
    given.readGrid();
    EXPECT_TRUE(given.printed("WARNING :: REGIONS IN 1 ROWS OF NNC ARE NOT USED"));
    EXPECT_EQ(given.grid.connectionRows.size(), 2U);
}

}  // namespace
}  // namespace kvr
