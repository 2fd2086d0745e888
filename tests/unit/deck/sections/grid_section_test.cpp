#include "deck/sections/grid_section.hpp"

#include "unit/deck/sections/grid_bench.hpp"

#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

namespace kvr {
namespace {

void expectAll(const CellArray<double>& array, double value) {
    for (const double entry : array.cells()) EXPECT_DOUBLE_EQ(entry, value);
}

TEST(GridSection, CopiesBeforeItMultipliesInAnyDeckOrder) {
    const std::string copy = "COPY\nPERMX PERMZ /\n/\n";
    const std::string multiply = "MULTIPLY\nPERMZ 0.1 1 2 1 2 2 2 /\n/\n";
    const std::string rest = Sizes + Tops + Poro + "PERMY\n8*100 /\n";
    for (const std::string& deck :
         {rest + PermX + copy + multiply, multiply + copy + PermX + rest, copy + rest + multiply + PermX}) {
        GridBench bench(2, 2, 2, deck);
        bench.readGrid();
        for (CellId cell = 1; cell <= 8; ++cell)
            EXPECT_DOUBLE_EQ(bench.grid.PERMZ[cell], cell <= 4 ? 100.0 : 10.0);
    }
}

TEST(GridSection, AppliesAnEqualsRowWithABoxOfZerosToTheWholeArrayWhateverTheOrder) {
    const std::string equals = "EQUALS\n'PERMX' 5 6*0 /\n/\n";
    expectAll(GridBench(2, 2, 2, SoundBlocks + equals).readGrid().grid.PERMX, 5.0);
    expectAll(GridBench(2, 2, 2, equals + SoundBlocks).readGrid().grid.PERMX, 5.0);
    expectAll(GridBench(2, 2, 2, SoundBlocks + "EQUALS\npermx 5 /\n/\n").readGrid().grid.PERMX, 5.0);
}

TEST(GridSection, KeepsAnEqualsRowInsideItsBox) {
    GridBench bench(2, 2, 2, SoundBlocks + "EQUALS\nPORO 0.3 1 1 1 1 1 1 /\n/\n");
    bench.readGrid();
    EXPECT_DOUBLE_EQ(bench.grid.PORO[1], 0.3);
    for (CellId cell = 2; cell <= 8; ++cell) EXPECT_DOUBLE_EQ(bench.grid.PORO[cell], 0.2);
    EXPECT_TRUE(bench.printed("EQUALS  : PORO 0.3"));
}

TEST(GridSection, CopiesTheWholeArrayWhateverStandsBehindTheNames) {
    GridBench bench(2, 2, 2, SoundBlocks + "EQUALS\nPERMX 7 /\n/\nCOPY\nPERMX PERMY 1 1 1 1 1 1 /\n/\n");
    bench.readGrid();
    expectAll(bench.grid.PERMY, 7.0);
    EXPECT_TRUE(bench.printed("COPY : PERMX -> PERMY"));
}

TEST(GridSection, AppliesOnlyTheFirstHundredCopyRows) {
    std::string copies = "COPY\n";
    for (int row = 0; row < 100; ++row) copies += "PERMX PERMX /\n";
    GridBench bench(2, 2, 2, SoundBlocks + copies + "PERMX PERMY /\n/\nEQUALS\nPERMX 7 /\n/\n");
    bench.readGrid();
    expectAll(bench.grid.PERMY, 100.0);
    EXPECT_TRUE(bench.printed("WARNING :: 101 COPY ROWS, ONLY THE FIRST 100 ARE APPLIED"));
}

TEST(GridSection, MultipliesPorosityByThePoreVolumeFactor) {
    GridBench bench(2, 2, 2, SoundBlocks + "MULTIPLY\nPORV 2 /\n/\n");
    bench.readGrid();
    expectAll(bench.grid.PORO, 0.4);
    EXPECT_TRUE(bench.printed("MULTIPLY : PORV By 2"));
}

TEST(GridSection, KeepsTransmissibilityRowsForConditioning) {
    GridBench bench(2, 2, 2, SoundBlocks + "EQUALS\nMULTZ 0 2* 2* 1 1 /\n/\nMULTIPLY\nMultx 0.5 /\n/\n");
    bench.readGrid();
    ASSERT_EQ(bench.grid.equalsRows.size(), 1U);
    EXPECT_EQ(bench.grid.equalsRows[0].box.k2, 1);
    ASSERT_EQ(bench.grid.multiplyRows.size(), 1U);
    EXPECT_FALSE(bench.printed("not surpported"));
}

TEST(GridSection, ReportsRowsWithOtherNamesAndSkipsThem) {
    GridBench bench(2, 2, 2,
                    SoundBlocks + "EQUALS\nNTG 0.5 /\n/\nMULTIPLY\nPORO 2 /\n/\nCOPY\nPERMX PORO /\n/\n");
    bench.readGrid();
    EXPECT_TRUE(bench.printed(" NTG      -> not surpported  \n"));
    EXPECT_TRUE(bench.printed(" PORO     -> not surpported  \n"));
    expectAll(bench.grid.NTG, 1.0);
    expectAll(bench.grid.PORO, 0.2);
}

TEST(GridSection, FillsLowerTopsByAddingThickness) {
    GridBench bench(2, 2, 2, SoundBlocks);
    bench.readGrid();
    EXPECT_DOUBLE_EQ(bench.grid.TOPS[cellIndex(bench.grid, 1, 1, 2)], 1010.0);
    EXPECT_DOUBLE_EQ(bench.grid.CellCentre(cellIndex(bench.grid, 1, 1, 2), 3), 1020.0);
    EXPECT_TRUE(bench.printed("READ -> TOPS\n-> Only NX*NY Data Will be Extracted\n"));
    EXPECT_TRUE(bench.printed("-> Calculating Geometry...\n-> Geometry Generated successfully.\n"));
}

TEST(GridSection, TakesTopsOfAllCellsAndUsesTheFirstLayer) {
    GridBench bench(2, 2, 2, Sizes + "TOPS\n4*1000 4*5000 /\n" + Poro + PermX + PermYZ);
    bench.readGrid();
    EXPECT_DOUBLE_EQ(bench.grid.TOPS[5], 1010.0);
}

TEST(GridSection, TakesTopsOfOneLayerWithoutASlash) {
    GridBench bench(2, 2, 2, Sizes + "DEPTHZ\n4*1000\n" + Poro + PermX + PermYZ);
    bench.readGrid();
    EXPECT_DOUBLE_EQ(bench.grid.TOPS[4], 1000.0);
    EXPECT_DOUBLE_EQ(bench.grid.PORO[8], 0.2);
    EXPECT_TRUE(bench.printed("READ -> DEPTHZ as TOPS"));
}

TEST(GridSection, FillsTopsBelowABoxedEqualsRow) {
    GridBench bench(2, 2, 2, Sizes + Poro + PermX + PermYZ + "EQUALS\nTOPS 2000 1 2 1 2 1 1 /\n/\n");
    bench.readGrid();
    EXPECT_DOUBLE_EQ(bench.grid.TOPS[8], 2010.0);
}

TEST(GridSection, SpreadsAxisSizesOverTheirPlanesAndLeavesTheCornerFormulaOn) {
    GridBench bench(2, 2, 2, "DXV\n10 20 /\nDYV\n5 6 /\nDZV\n1 2 /\n" + Tops + Poro + PermX + PermYZ);
    bench.readGrid();
    const double dx[] = {10, 20, 10, 20};
    for (CellId cell = 1; cell <= 8; ++cell) EXPECT_DOUBLE_EQ(bench.grid.DX[cell], dx[(cell - 1) % 4]);
    EXPECT_DOUBLE_EQ(bench.grid.DY[3], 6.0);
    EXPECT_DOUBLE_EQ(bench.grid.DZ[4], 1.0);
    EXPECT_DOUBLE_EQ(bench.grid.DZ[5], 2.0);
    EXPECT_TRUE(bench.options.useNewtran);
}

TEST(GridSection, TurnsTheCornerFormulaOffWithBlockSizes) {
    EXPECT_FALSE(GridBench(2, 2, 2, SoundBlocks).readGrid().options.useNewtran);
    GridBench bench(2, 2, 2,
                    "EQUALS\nDX 10 /\nDY 10 /\nDZ 2 /\nTOPS 500 1 2 1 2 1 1 /\n/\n" + Poro + PermX + PermYZ);
    bench.readGrid();
    EXPECT_FALSE(bench.options.useNewtran);
    EXPECT_TRUE(bench.grid.blockInput);
    EXPECT_DOUBLE_EQ(bench.grid.CellCentre(8, 1), 15.0);
}

TEST(GridSection, ConvertsLengthsUnderMetric) {
    GridBench bench(1, 1, 1,
                    "DX\n100 /\nDY\n100 /\nDZ\n10 /\nTOPS\n1000 /\nPORO\n.2 /\nPERMX\n1 /\nPERMY\n1 /\n"
                    "PERMZ\n1 /\n");
    bench.units = metricUnits();
    bench.readGrid();
    EXPECT_NEAR(bench.grid.DX[1], 328.084, 1e-9);
    EXPECT_NEAR(bench.grid.TOPS[1], 3280.84, 1e-9);
    EXPECT_NEAR(bench.grid.BulkVolume[1], 3531467.011, 1e-3);
}

TEST(GridSection, TreatsCellsWithoutRockAsInactive) {
    GridBench bench(2, 2, 2, Sizes + Tops + "PORO\n0 7*0.2 /\n" + PermX + PermYZ + "NTG\n7*1 0 /\n");
    bench.readGrid();
    EXPECT_EQ(bench.grid.Active[1], 0);
    EXPECT_EQ(bench.grid.Active[8], 0);
    EXPECT_EQ(bench.grid.Active[2], 1);
    EXPECT_TRUE(
        bench.printed("NOTE at GRID :: INACTIVE GRID (PORO or NTG is tiny, treat as INACTIVE) :: 2\n"));
    EXPECT_GT(bench.grid.BulkVolume[8], 0.0);
    EXPECT_EQ(cornerOf(bench.grid, 8, 1)[0], 100.0F);
}

TEST(GridSection, CountsASingleCellWithoutPorosity) {
    GridBench bench(2, 2, 2, Sizes + Tops + "PORO\n0 7*0.2 /\n" + PermX + PermYZ);
    bench.readGrid();
    EXPECT_TRUE(bench.printed("treat as INACTIVE) :: 1\n"));
}

TEST(GridSection, ReadsActivity) {
    GridBench bench(2, 2, 2, SoundBlocks + "ACTNUM\n1 0 6*1 /\n");
    bench.readGrid();
    EXPECT_EQ(bench.grid.Active[2], 0);
    EXPECT_EQ(bench.grid.Active[3], 1);
}

TEST(GridSection, SwitchesOffCellsWithoutVolume) {
    GridBench bench(2, 2, 2, "DX\n8*100 /\nDY\n8*50 /\nDZ\n4*10 3*20 0 /\n" + Tops + Poro + PermX + PermYZ);
    bench.readGrid();
    EXPECT_EQ(bench.grid.Active[8], 0);
    EXPECT_TRUE(bench.printed("INACTIVE GRID (NO VOLUME, treat as INACTIVE) :: 1\n"));
}

TEST(GridSection, SetsNegativePermeabilityToZero) {
    GridBench bench(2, 2, 2, Sizes + Tops + Poro + "PERMX\n-5 7*100 /\n" + PermYZ);
    bench.readGrid();
    EXPECT_EQ(bench.grid.PERMX[1], 0.0);
    EXPECT_TRUE(bench.printed("WARNING :: PERMEABILITY BELOW ZERO, SET TO ZERO :: 1"));
}

TEST(GridSection, TakesTheSurfaceTensionOfTheJFunction) {
    GridBench bench(2, 2, 2, SoundBlocks + "JFUNC\nWATER 30 /\n");
    bench.readGrid();
    EXPECT_TRUE(bench.options.useJFunction);
    EXPECT_DOUBLE_EQ(bench.options.surfaceTension, 30.0);
    EXPECT_TRUE(
        bench.printed("NOTE :: J-FUCNTION GIVEN, USE ONLY 2nd PARAM, USE DEFAULT FOR ELSE\n"
                      ":: SURFACE TENTION = 30\n     :: (Will be multiplied by 4.61678)\n"));
}

TEST(GridSection, NeglectsReportsAndKeepsMapAxes) {
    GridBench bench(2, 2, 2, "RPTGRID\n1 2 /\nMAPAXES\n1 2 3 4 5 6 /\nGRID\n" + SoundBlocks + "EDIT\n");
    bench.readGrid();
    EXPECT_TRUE(bench.printed("READ -> RPTGRID, is neglected"));
    EXPECT_TRUE(bench.printed("Grid keyword found.. read here as grid section"));
    EXPECT_TRUE(bench.printed("-> Finished Reading GRID. Move to Next Section"));
    EXPECT_DOUBLE_EQ(bench.grid.mapAxes[5], 6.0);
    EXPECT_EQ(bench.next(), "EDIT");
}

TEST(GridSection, ReadAgainDoesNotRepeatTheArithmeticOfTheFirst) {
    GridBench bench(2, 2, 2,
                    SoundBlocks + "MULTIPLY\nPERMX 2 /\n/\nPROPS\nNTG\n8*0.5 /\nMULTIPLY\nPERMX 3 /\n/\n");
    bench.readGrid();
    EXPECT_EQ(bench.next(), "PROPS");
    bench.readGrid();
    expectAll(bench.grid.PERMX, 600.0);
    expectAll(bench.grid.NTG, 0.5);
}

// --- corner point ----------------------------------------------------------------------------------

const std::string Pillars =
    "COORD\n0 0 0 0 0 2000\n100 0 0 100 0 2000\n0 50 0 0 50 2000\n100 50 0 100 50 2000 /\n";
const std::string Depths = "ZCORN\n4*1000 4*1010 /\n";
const std::string OneCellRock = "PORO\n.2 /\nPERMX\n1 /\nPERMY\n1 /\nPERMZ\n1 /\n";

TEST(CornerPointInput, IsBuiltWhenDepthsAreRead) {
    GridBench bench(1, 1, 1, Pillars + Depths + OneCellRock);
    bench.readGrid();
    EXPECT_DOUBLE_EQ(bench.grid.DX[1], 100.0);
    EXPECT_DOUBLE_EQ(bench.grid.TOPS[1], 1000.0);
    EXPECT_FALSE(bench.printed("-> Calculating Geometry..."));
}

TEST(CornerPointInput, IsBuiltAtTheEndWhenPillarsCameLater) {
    GridBench bench(1, 1, 1, Depths + OneCellRock + Pillars);
    bench.readGrid();
    EXPECT_DOUBLE_EQ(bench.grid.DY[1], 50.0);
    EXPECT_EQ(cornerOf(bench.grid, 1, 8)[2], 1010.0F);
}

TEST(CornerPointInput, StandsAgainstBlockSizesBeforeAndBehindIt) {
    const std::string blocks = "DX\n7 /\nDY\n7 /\nDZ\n7 /\nTOPS\n500 /\n";
    for (const std::string& deck : {blocks + Pillars + Depths, Pillars + Depths + blocks}) {
        GridBench bench(1, 1, 1, deck + OneCellRock);
        bench.readGrid();
        EXPECT_DOUBLE_EQ(bench.grid.DX[1], 100.0);
        EXPECT_DOUBLE_EQ(bench.grid.TOPS[1], 1000.0);
        EXPECT_TRUE(bench.options.useNewtran);
        EXPECT_FALSE(bench.grid.blockInput);
    }
}

TEST(CornerPointDeckOfBlocks, IsLeftInTheRunFolderAndReadsBack) {
    GridBench blocks(2, 2, 2, SoundBlocks + "ACTNUM\n1 0 6*1 /\n");
    blocks.readGrid();
    std::ostringstream text;
    text << std::ifstream(blocks.cornerPointDeck()).rdbuf();
    GridBench corners(2, 2, 2, text.str() + Poro + PermX + PermYZ);
    corners.readGrid();
    EXPECT_EQ(corners.grid.xyz_3d, blocks.grid.xyz_3d);
    EXPECT_EQ(corners.grid.Active.slots, blocks.grid.Active.slots);
    EXPECT_FALSE(corners.printed("not surpported"));
}

// --- stops -----------------------------------------------------------------------------------------

void expectStop(const std::string& deck, const std::string& message) {
    EXPECT_EXIT(readAndStop(deck), testing::ExitedWithCode(1), message);
}

TEST(GridSectionStops, OnMissingSizesInTheFirstRow) {
    const std::string rest = Tops + Poro + PermX + PermYZ;
    expectStop("DX\n0 7*100 /\nDY\n8*50 /\nDZ\n8*10 /\n" + rest, "ERROR at GRID :: DX NOT ENOUGH");
    expectStop("DX\n8*100 /\nDZ\n8*10 /\n" + rest, "ERROR at GRID :: DY NOT ENOUGH");
    expectStop("DX\n8*100 /\nDY\n8*50 /\n" + rest, "ERROR at GRID :: DZ NOT ENOUGH");
}

TEST(GridSectionStops, OnASurfaceAboveSeaLevel) {
    expectStop(Sizes + "TOPS\n3*1000 -1 /\n" + Poro + PermX + PermYZ,
               "ERROR at GRID :: SURFACE DATA \\(TOPS\\) IS ERRORNEOUS\nFile TEST.DATA");
}

TEST(GridSectionStops, WhenNoCellHasPorosity) {
    expectStop(Sizes + Tops + PermX + PermYZ + "PORO\n8*0 /\n",
               "ERROR at GRID :: INITIAL POROSITY IS ERRORNEOUS");
}

TEST(GridSectionStops, WhenADirectionHasNoPermeability) {
    expectStop(Sizes + Tops + Poro + PermX + "PERMY\n8*1 /\n", "ERROR at GRID :: PERMEABILITY IS ERRORNEOUS");
}

TEST(GridSectionStops, OnABoxOutsideTheGridWithThePlace) {
    expectStop(SoundBlocks + "EQUALS\nPORO 0.3 1 3 1 1 1 1 /\n/\n",
               "BOX OUTSIDE THE GRID: 1 3 1 1 1 1 IN 2 2 2\nFile TEST.DATA, line [0-9]+, keyword EQUALS");
    expectStop(SoundBlocks + "MULTIPLY\nPERMX 0.3 2 1 1 1 1 1 /\n/\n", "BOX OUTSIDE THE GRID");
    expectStop(SoundBlocks + "MULTIPLY\nPERMX 0.3 1 1 1 1 -1 1 /\n/\n", "BOX OUTSIDE THE GRID");
}

TEST(GridSectionStops, OnTooFewValuesAndOnLetters) {
    expectStop("PORO\n7*0.2 /\n" + SoundBlocks, "keyword PORO: 8 values, 7 given");
    expectStop("TOPS\n3*1000 /\n" + SoundBlocks, "keyword TOPS: 4 values, 3 given");
    expectStop("PORO\n0.2 abc 6*0.2 /\n",
               "ERROR: File reading error, code = 64\nReading error, in GRID Section");
}

TEST(GridSectionStops, OnTheRowBeyondTheLimitOfAList) {
    std::string rows = "EQUALS\n";
    for (int row = 0; row < 501; ++row) rows += "PORO 0.2 /\n";
    expectStop(SoundBlocks + rows + "/\n", "more than 500 rows");
}

TEST(GridSectionStops, OnAMissingFile) {
    expectStop("INCLUDE\n'missing' /\n" + SoundBlocks,
               "ERROR: INCLUDE File Open Error at GRID section\nFile I/O Error, in GRID Section");
}

TEST(GridSectionStops, InFrontOfTheDimensions) {
    const auto read = [] {
        GridBench bench(1, 1, 1, SoundBlocks);
        bench.grid = GridModel{};
        bench.speakToStandardError();
        bench.readGrid();
    };
    EXPECT_EXIT(read(), testing::ExitedWithCode(1), "ERROR :: DIMENS NOT SPECIFIED");
}

TEST(GridSectionStops, WhenTheCornerPointDeckCannotBeWritten) {
    const auto read = [] {
        GridBench bench(2, 2, 2, SoundBlocks);
        bench.options.workingFolder = "/nowhere/at/all/";
        bench.speakToStandardError();
        bench.readGrid();
    };
    EXPECT_EXIT(read(), testing::ExitedWithCode(1), "Cannot create file for output. Check Directry path.");
}

}  // namespace
}  // namespace kvr
