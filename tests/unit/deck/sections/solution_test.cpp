#include "deck/sections/solution.hpp"

#include "unit/deck/deck_bench.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

struct SolutionBench : DeckBench {
    RunOptions options;
    FluidTables tables;
    GridModel grid;
    InitialConditions initial;

    GivenAquifers aquifers;

    explicit SolutionBench(std::string_view text, int cells = 3) : DeckBench(text, "SOLUTION") {
        units = fieldUnits();
        grid.NX = cells;
        grid.NY = grid.NZ = 1;
        grid.NCELLS = cells;
        grid.SATNUM.assign(cells, 1);
        grid.Active.assign(cells, 1);
    }
    void read() {
        sizeInitialArrays(grid, initial);
        SolutionRecords records{options, tables, grid, initial, aquifers};
        readSolution(reader, records);
    }
};

TEST(Solution, TakesDatumAndContactsFromEquil) {
    SolutionBench bench("EQUIL\n-- d p w pc g\n 8400 4800 8450 0 8300 0 1 0 0 /\n");
    bench.read();
    EXPECT_TRUE(bench.initial.equilibrationMode);
    EXPECT_EQ(bench.initial.regions[0].datumDepth, 8400.0);
    EXPECT_EQ(bench.initial.regions[0].datumPressure, 4800.0);
    EXPECT_EQ(bench.initial.regions[0].wocDepth, 8450.0);
    EXPECT_EQ(bench.initial.regions[0].gocDepth, 8300.0);
    EXPECT_EQ(bench.screen(),
              "READ -> EQUIL\n-> Initial Condition Assigned by WOC/GOC-Pc-Density\n"
              "-> Finished Reading SOLUTION. Move to Next Section\n"
              "No RS-Depth(RSVD) Table - Table is assumed inside the code while not used\n");
}

TEST(Solution, ConvertsMetricDepthsAndPressures) {
    SolutionBench bench("EQUIL\n 100 10 200 0 50 /\n");
    bench.units = metricUnits();
    bench.read();
    EXPECT_DOUBLE_EQ(bench.initial.regions[0].datumDepth, 328.084);
    EXPECT_DOUBLE_EQ(bench.initial.regions[0].datumPressure, 145.0377);
}

TEST(Solution, KeepsAnalyticAquifersAndTheirFaces) {
    SolutionBench bench(
        "AQUFETP\n 1 2000 1* 1E6 1E-4 5 /\n 2 2000 200 2E6 2E-4 6 /\n/\nAQUANCON\n"
        " 1 3 3 1 1 1 1 'I+' /\n 2 1 9 1 1 1 1 'J-' /\n 2 1 3 1 1 1 1 J- 4 0.5 YES /\n/\n");
    bench.units = metricUnits();
    bench.read();
    ASSERT_EQ(bench.aquifers.aquifers.size(), 2U);
    const GivenAquifer& first = bench.aquifers.aquifers[0];
    EXPECT_EQ(first.pressure, GivenAquifer::AtRest);
    EXPECT_DOUBLE_EQ(first.datumDepth, 2000.0 * bench.units.length);
    EXPECT_DOUBLE_EQ(first.compressibility, 1e-4 / bench.units.pressure);
    EXPECT_DOUBLE_EQ(first.volume, 1e6 * bench.units.liquidRate);
    EXPECT_DOUBLE_EQ(first.productivity, 5.0 * bench.units.liquidRate / bench.units.pressure);
    EXPECT_DOUBLE_EQ(bench.aquifers.aquifers[1].pressure, 200.0 * bench.units.pressure);
    ASSERT_EQ(bench.aquifers.faces.size(), 2U) << "the box that leaves the grid is skipped";
    EXPECT_EQ(bench.aquifers.faces[0].face, 2);
    EXPECT_FALSE(bench.aquifers.faces[0].inside);
    EXPECT_EQ(bench.aquifers.faces[1].face, 3);
    EXPECT_EQ(bench.aquifers.faces[1].coefficient, 4.0);
    EXPECT_EQ(bench.aquifers.faces[1].multiplier, 0.5);
    EXPECT_TRUE(bench.aquifers.faces[1].inside);
}

TEST(Solution, KeepsACarterTracyAquiferInPlaceOfAnEarlierOneOfItsNumber) {
    SolutionBench bench(
        "AQUFETP\n 1 2000 1* 1E6 1E-4 5 /\n/\nAQUCT\n 1 7000 3000 200 0.2 8E-6 2000 45 90 1 2 /\n/\n");
    bench.read();
    ASSERT_EQ(bench.aquifers.aquifers.size(), 1U);
    const GivenAquifer& only = bench.aquifers.aquifers[0];
    EXPECT_EQ(only.law, AquiferLaw::CarterTracy);
    EXPECT_EQ(only.permeability, 200.0);
    EXPECT_EQ(only.porosity, 0.2);
    EXPECT_EQ(only.radius, 2000.0);
    EXPECT_EQ(only.thickness, 45.0);
    EXPECT_EQ(only.angle, 90.0);
    EXPECT_EQ(only.influenceTable, 2);
}

TEST(Solution, ConvertsTheDepthTableOfSolutionGas) {
    SolutionBench bench("EQUIL\n 8400 4800 8450 0 8300 /\nRSVD\n8300 1.27\n8450 1.27 /\n");
    bench.read();
    ASSERT_EQ(bench.initial.regions[0].rsTableDepth.size(), 2U);
    EXPECT_EQ(bench.initial.regions[0].rsTableDepth[1], 8450.0);
    EXPECT_NEAR(bench.initial.regions[0].rsTableRs[0], 226.196674, 1e-6);
    EXPECT_FALSE(bench.printed("No RS-Depth(RSVD) Table"));
}

TEST(Solution, GoesOnWithAZeroPressureAndNamesTheCell) {
    SolutionBench bench("PRESSURE\n 4000 0 4000 /\nSWAT\n 3*0.2 /\n");
    bench.read();
    EXPECT_FALSE(bench.initial.equilibrationMode);
    EXPECT_TRUE(bench.initial.pressureGiven && bench.initial.swatGiven);
    EXPECT_FALSE(bench.initial.sgasGiven);
    EXPECT_TRUE(bench.printed("READ -> FIELD PRESSURE by MANUAL\n"));
    EXPECT_TRUE(bench.printed("WARNING ::   INITIAL PRESSURE INPUT IS ZERO, 2\n"));
    EXPECT_FALSE(bench.printed("IS ZERO, 1\n"));
}

TEST(Solution, WarnsOfSaturationsBelowTheResidualOnes) {
    SolutionBench bench("PRESSURE\n3*4000 /\nSWAT\n 0.1 0.3 0.9 /\n");
    bench.tables.regions.resize(1);
    bench.tables.regions[0].ConnateSw = 0.2;
    bench.tables.regions[0].ResidualSo = 0.15;
    bench.read();
    EXPECT_TRUE(bench.printed(" WARNING ::  INITIAL SATURATION INPUT BELOW RESIDUAL,  1\n"));
    EXPECT_FALSE(bench.printed("RESIDUAL,  2\n"));
    EXPECT_TRUE(bench.printed(" WARNING ::  INITIAL SATURATION INPUT BELOW RESIDUAL,  3\n"));
}

TEST(Solution, LetsTheLaterOfEquilAndArraysDecide) {
    SolutionBench arraysLast("EQUIL\n1 2 3 0 4 /\nPRESSURE\n3*4000 /\n");
    arraysLast.read();
    EXPECT_FALSE(arraysLast.initial.equilibrationMode);
    SolutionBench equilLast("PRESSURE\n3*4000 /\nEQUIL\n1 2 3 0 4 /\n");
    equilLast.read();
    EXPECT_TRUE(equilLast.initial.equilibrationMode);
}

TEST(Solution, TakesOnlyTheStepFromRestart) {
    SolutionBench bench("RESTART\n 'X' 5 /\nRPTRST\n BASIC=2 /\nRPTSOL\n 'FIP' /\n");
    bench.read();
    EXPECT_EQ(bench.options.restartStep, 5);
    EXPECT_TRUE(
        bench.printed("READ -> RPTRST, is neglected\nREAD -> RPTRST, output is saved in Tecplot or "
                      "Text file by KVR, only primary variable\n"));
    EXPECT_TRUE(bench.printed("READ -> RPTSOL, is neglected\n"));
}

TEST(Solution, ConvertsTheSolutionGasOfEachCell) {
    SolutionBench bench("RS\n 3*1.27 /\nPRESSURE\n3*1 /\n");
    bench.read();
    EXPECT_NEAR(bench.initial.initialRs[3], 226.196674, 1e-6);
}

TEST(Solution, AnnouncesEveryArrayInItsOwnWords) {
    SolutionBench bench(
        "PRESSURE\n3*4000 /\nSWAT\n3*0.3 /\nSGAS\n3*0.1 /\nSOIL\n3*0.6 /\nRS\n3*0.5 /\n"
        "RSVD\n8300 1.27\n8450 1.3 /\nNEI\n0.4 0.6 /\nZMF\n0.1 0.9 0.2 0.8 0.3 0.7 /\nRESTART\n'X' 5 /\n");
    bench.options.componentCount = 2;
    bench.read();
    EXPECT_EQ(bench.screen(),
              "READ -> FIELD PRESSURE by MANUAL\nREAD -> FIELD WATER SATURATION by MANUAL\n"
              "READ -> FIELD GAS SATURATION by MANUAL\nREAD -> FIELD OIL SATURATION by MANUAL\n"
              "READ -> FIELD Solution GOR by MANUAL\nREAD -> FIELD Solution GOR by Depth Table\n"
              "READ -> FIELD Composition\nREAD -> FIELD Composition, each grid block\nREAD -> RESTART\n"
              "-> Finished Reading SOLUTION. Move to Next Section\n");
    EXPECT_EQ(bench.logged(), bench.screen());
    EXPECT_EQ(bench.initial.initialSoil[2], 0.6);
    EXPECT_EQ(bench.initial.initialSgas[3], 0.1);
    EXPECT_EQ(bench.initial.initialZ(2, 1), 0.2);
    EXPECT_EQ(bench.initial.initialZ(3, 2), 0.7);
}

TEST(Solution, GivesEveryCellTheOneComposition) {
    SolutionBench bench("NEI\n0.4 0.6 /\n");
    bench.options.componentCount = 2;
    bench.read();
    EXPECT_EQ(bench.initial.initialZ(1, 1), 0.4);
    EXPECT_EQ(bench.initial.initialZ(3, 2), 0.6);
}

TEST(Solution, DividesCompositionsByTheirSumAndTellsTheFirstCell) {
    SolutionBench bench("ZMF\n0.1 0.9 0.4 0.4 0.3 0.7 /\n");
    bench.options.componentCount = 2;
    bench.read();
    EXPECT_EQ(bench.initial.initialZ(2, 1), 0.5);
    EXPECT_NE(bench.screen().find(
                  "WARNING :: MOLE FRACTIONS OF 1 CELLS DO NOT SUM TO 1, EACH IS DIVIDED BY ITS SUM; "
                  "FIRST: CELL 2"),
              std::string::npos);
}

TEST(Solution, ConvertsLengthsAndPressuresForTheUnitCopies) {
    SolutionBench bench("EQUIL\n1000 100 2000 10 500 /\nPRESSURE\n3*100 /\n");
    bench.reader.outputMetric = true;
    bench.read();
    EXPECT_EQ(contentsOf(bench.sinks.metricCopy),
              "EQUIL\n304.8 6.894757 609.6 0.6894757 152.4 /\n"
              "PRESSURE\n6.894757 6.894757 6.894757 /\n");
    EXPECT_EQ(contentsOf(bench.sinks.fieldCopy), "EQUIL\n1000 100 2000 10 500 /\nPRESSURE\n100 100 100 /\n");
}

void readLetters() {
    SolutionBench bench("EQUIL\n8400 deep /\n");
    bench.speakToStandardError();
    bench.read();
}

TEST(SolutionDeathTest, StopsOnLettersWhereNumbersBelong) {
    EXPECT_EXIT(readLetters(), testing::ExitedWithCode(1),
                "ERROR: File reading error, code = 64\nReading error, in SOLUTION Section\n"
                "File TEST.DATA, line 2, keyword EQUIL: \"deep\"");
}

void readMissingInclude() {
    SolutionBench bench("INCLUDE\n'missing' /\n");
    bench.speakToStandardError();
    bench.read();
}

TEST(SolutionDeathTest, NamesAnotherSectionForAMissingInclude) {
    EXPECT_EXIT(readMissingInclude(), testing::ExitedWithCode(1),
                "ERROR: File handling error, code = 2\nInclude file missing, RUNSPEC section\n");
}

void readRegionText(DeckBench& bench, GridModel& grid) {
    RunOptions options;
    options.maxRockTables = 2;
    bench.reader.errorName = "SUMMARY";
    readRegions(bench.reader, options, grid);
}

TEST(Regions, SetsNumbersOutOfRangeToOneWithAWarning) {
    DeckBench bench("SATNUM\n 0 2 9 1 /\n", "REGIONS");
    GridModel grid;
    grid.NCELLS = 4;
    grid.SATNUM.assign(4, 1);
    readRegionText(bench, grid);
    EXPECT_EQ(grid.SATNUM.slots, (std::vector<int>{1, 1, 2, 1, 1}));
    EXPECT_EQ(bench.screen(),
              "READ -> SATNUM\nWARNING :: SATNUM, GRID 1 IS OUT OF RANGE. SET AS 1 \n"
              "WARNING :: SATNUM, GRID 3 IS OUT OF RANGE. SET AS 1 \n");
}

TEST(Regions, TakeNumbersOverBoxes) {
    DeckBench bench(
        "FIPNUM\n2*1 2*2 /\nEQUALS\nSATNUM 2 2 3 1 1 1 1 /\nFIPNUM 7 4 4 1 1 1 1 /\nMISCNUM 1 /\n/\n",
        "REGIONS");
    GridModel grid;
    grid.NX = grid.NCELLS = 4;
    grid.NY = grid.NZ = 1;
    grid.SATNUM.assign(4, 1);
    readRegionText(bench, grid);
    EXPECT_EQ(grid.SATNUM.slots, (std::vector<int>{1, 1, 2, 2, 1}));
    EXPECT_EQ(grid.FIPNUM[3], 2);
    EXPECT_EQ(grid.FIPNUM[4], 7);
    EXPECT_TRUE(bench.printed(" MISCNUM  -> not surpported  "));
}

void readBadRegions(std::string_view text) {
    DeckBench bench(text, "REGIONS");
    bench.speakToStandardError();
    GridModel grid;
    grid.NCELLS = 4;
    grid.SATNUM.assign(4, 1);
    readRegionText(bench, grid);
}

TEST(RegionsDeathTest, SpeaksOfTheSummarySectionAndOfTheGridSection) {
    EXPECT_EXIT(readBadRegions("SATNUM\n1 x\n"), testing::ExitedWithCode(1),
                "Reading error, in SUMMARY Section");
    EXPECT_EXIT(readBadRegions("INCLUDE\n'missing' /\n"), testing::ExitedWithCode(1),
                "ERROR: INCLUDE File Open Error at GRID section\nFile I/O Error, in GRID Section 2");
}

TEST(Solution, TellsOfItemsOfEquilThatAreNotUsed) {
    SolutionBench bench("EQUIL\n 8400 4800 8450 2 8300 3 0 1 25 /\n");
    bench.read();
    EXPECT_TRUE(bench.printed("WARNING :: CAPILLARY PRESSURE 2 AT THE WATER-OIL CONTACT"));
    EXPECT_TRUE(bench.printed("WARNING :: CAPILLARY PRESSURE 3 AT THE GAS-OIL CONTACT"));
    EXPECT_TRUE(bench.printed("WARNING :: EQUIL ITEM 8"));
    EXPECT_TRUE(bench.printed("WARNING :: EQUIL ITEM 9: PARTS OF CELLS ARE LEVEL, NOT TILTED WITH THE CELL"));
    EXPECT_TRUE(bench.printed("WARNING :: EQUIL ITEM 9: 25 PARTS OF HALF A CELL ARE TAKEN AS 20"));
    SolutionBench quiet("EQUIL\n 8400 4800 8450 0 8300 0 1 0 0 /\n");
    quiet.read();
    EXPECT_FALSE(quiet.printed("WARNING"));
}

TEST(Solution, ReadsThePartsOfACellWhoseSaturationsAreAveraged) {
    const auto slices = [](const std::string& items) {
        SolutionBench bench("EQUIL\n 8400 4800 8450 0 8300" + items + " /\n");
        bench.read();
        EXPECT_FALSE(bench.printed("WARNING :: EQUIL ITEM 9: PARTS") &&
                     items.find(" -") != std::string::npos);
        return bench.initial.regions[0].slices;
    };
    for (const char* open : {"", " 0 1 0 1*"}) {
        EXPECT_EQ(slices(open).count, 10) << "five parts of half a cell where nothing is said";
        EXPECT_FALSE(slices(open).always);
    }
    EXPECT_EQ(slices(" 0 1 0 0").count, 0) << "the centre";
    EXPECT_EQ(slices(" 0 1 0 -3").count, 6);
    EXPECT_TRUE(slices(" 0 1 0 -3").always);
    EXPECT_EQ(slices(" 0 1 0 3").count, 6);
    EXPECT_EQ(slices(" 0 1 0 1e30").count, 40);
}

TEST(Solution, TellsWhereTheTableOfSolutionGasIsNotWhatEquilAsksFor) {
    const std::string table = "RSVD\n8300 1.27\n8450 1.27 /\n";
    const auto says = [](const std::string& text, const char* line) {
        SolutionBench bench(text);
        bench.tables.MaxRs = 1.0;
        bench.read();
        return bench.printed(line);
    };
    EXPECT_TRUE(says("EQUIL\n 8400 4800 8450 0 8300 /\n" + table, "WARNING :: EQUIL ITEM 7: RSVD IS USED"));
    EXPECT_TRUE(says("EQUIL\n 8400 4800 8450 0 8300 0 1 /\n", "WARNING :: EQUIL ITEM 7: NO RSVD IS GIVEN"));
    EXPECT_FALSE(says("EQUIL\n 8400 4800 8450 0 8300 0 1 /\n" + table, "ITEM 7"));
    EXPECT_FALSE(says("EQUIL\n 8400 4800 8450 0 8300 /\n", "ITEM 7"));
}

TEST(Solution, CopiesTheItemsOfEquilThatAreGiven) {
    SolutionBench bench("EQUIL\n 8400 4800 8450 0 8300 0 1 /\n");
    bench.reader.outputMetric = true;
    bench.read();
    EXPECT_EQ(contentsOf(bench.sinks.fieldCopy), "EQUIL\n8400 4800 8450 0 8300 0 1 /\n");
}

TEST(Solution, TakesArraysOverBoxes) {
    SolutionBench bench(
        "EQUIL\n 8400 4800 8450 0 8300 /\nEQUALS\nPRESSURE 3000 /\nSWAT 0.2 /\nswat 0.5 2 3 1 1 1 1 /\nTEMPI "
        "9 /\nSGAS 1.5 /\n/\n");
    bench.read();
    EXPECT_FALSE(bench.initial.equilibrationMode);
    EXPECT_EQ(bench.initial.initialPressure[3], 3000.0);
    EXPECT_EQ(bench.initial.initialSwat[1], 0.2);
    EXPECT_EQ(bench.initial.initialSwat[3], 0.5);
    EXPECT_TRUE(bench.initial.swatGiven && !bench.initial.soilGiven);
    EXPECT_EQ(bench.initial.initialSgas[1], 1.0);
    EXPECT_TRUE(bench.printed("WARNING :: SGAS 1.5 IS OUT OF RANGE, SET TO 1"));
    EXPECT_TRUE(bench.printed(" TEMPI    -> not surpported  "));
}

TEST(Solution, TellsOfRecordsBeyondTheRegionsOfEquilibrium) {
    SolutionBench bench("EQUIL\n 8400 4800 8450 0 8300 /\n 8400 4900 8450 0 8300 /\n");
    bench.read();
    EXPECT_EQ(bench.initial.regions.size(), 1U);
    EXPECT_TRUE(bench.printed("WARNING :: MORE RECORDS OF EQUIL THAN THE 1 OF EQLDIMS"));
}

}  // namespace
}  // namespace kvr
