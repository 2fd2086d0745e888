#include "deck/sections/grid_continua.hpp"

#include "unit/deck/sections/grid_bench.hpp"

namespace kvr {
namespace {

/// A section read for 2 x 1 cells in one layer of matrix and one of fractures.
struct DualBench : GridBench {
    explicit DualBench(std::string_view text) : GridBench(2, 1, 2, text) {
        grid.dual.isSet = true;
        reader.gridSize = {2, 1, 2};
    }
};

const std::string Whole =
    "DX\n4*100 /\nDY\n4*50 /\nDZ\n4*10 /\nTOPS\n2*1000 /\nPORO\n2*0.2 2*0.01 /\nPERMX\n2*1 2*5000 /\n"
    "PERMY\n2*1 2*5000 /\nPERMZ\n2*1 2*5000 /\n";
const std::string Upper =
    "DX\n2*100 /\nDY\n2*50 /\nDZ\n2*10 /\nTOPS\n2*1000 /\nPORO\n2*0.2 /\nPERMX\n3 4 /\nPERMY\n2*1 /\nPERMZ\n"
    "2*1 /\n";

TEST(GridContinua, ReadsOneShapeFactorForAllBlocks) {
    DualBench bench(Whole + "SIGMA\n0.08 /\n");
    bench.readGrid();
    EXPECT_DOUBLE_EQ(bench.grid.dual.SIGMA[1], 0.08);
    EXPECT_DOUBLE_EQ(bench.grid.dual.SIGMA[2], 0.08);
}

TEST(GridContinua, ReadsShapeFactorsOfTheMatrixAlone) {
    for (const char* list : {"0.1 0.2 /\n", "0.1 0.2 2*0 /\n"}) {
        DualBench bench(Whole + "SIGMAV\n" + list);
        bench.readGrid();
        EXPECT_DOUBLE_EQ(bench.grid.dual.SIGMA[1], 0.1) << list;
        EXPECT_DOUBLE_EQ(bench.grid.dual.SIGMA[2], 0.2) << list;
    }
}

TEST(GridContinua, ReadsPorosityOfTheMatrixAndShapeFactorByTheirOwnWords) {
    DualBench bench(Whole + "*phim\n0.3 0.4 /\n*shape factor\n0.08 /\n");
    bench.readGrid();
    EXPECT_DOUBLE_EQ(bench.grid.PORO[1], 0.3);
    EXPECT_DOUBLE_EQ(bench.grid.PORO[2], 0.4);
    EXPECT_DOUBLE_EQ(bench.grid.PORO[3], 0.01);
    EXPECT_DOUBLE_EQ(bench.grid.PORO[4], 0.01);
    EXPECT_DOUBLE_EQ(bench.grid.dual.SIGMA[1], 0.08);
}

TEST(GridContinua, TurnsMetricShapeFactorsAndHeightsIntoFeet) {
    DualBench bench(Whole + "SIGMA\n1 /\nDZMTRX\n3 /\n");
    bench.units = metricUnits();
    bench.readGrid();
    EXPECT_NEAR(bench.grid.dual.SIGMA[1], 0.3048 * 0.3048, 1e-6);
    EXPECT_NEAR(bench.grid.dual.DZMTRX[2], 3.0 / 0.3048, 1e-4);
}

TEST(GridContinua, TakesTheUpperHalfOfArraysForBothHalvesAfterDpgrid) {
    DualBench bench("DPGRID\nNODPPM\n" + Upper + "SIGMA\n0.08 /\n");
    bench.readGrid();
    EXPECT_DOUBLE_EQ(bench.grid.PERMX[3], 3.0);
    EXPECT_DOUBLE_EQ(bench.grid.PERMX[4], 4.0);
    EXPECT_DOUBLE_EQ(bench.grid.PORO[4], 0.2);
    EXPECT_DOUBLE_EQ(bench.grid.BulkVolume[4], bench.grid.BulkVolume[2]);
}

TEST(GridContinua, FillsFracturesThatRowsHaveLeftOutAfterDpgrid) {
    DualBench bench(
        "DPGRID\nNODPPM\nEQUALS\nDX 100 1 2 1 1 1 1 /\nDY 50 1 2 1 1 1 1 /\nDZ 10 1 2 1 1 1 1 /\nTOPS 1000 1 "
        "2 "
        "1 1 1 1 /\nPORO 0.2 1 2 1 1 1 1 /\nPORO 0.01 1 2 1 1 2 2 /\nPERMX 1 1 2 1 1 1 1 /\nPERMX 90 1 2 1 1 "
        "2 2 /\nPERMY 1 1 2 1 1 1 1 /\nPERMZ 1 1 2 1 1 1 1 /\n/\nSIGMA\n1 /\n");
    bench.readGrid();
    EXPECT_DOUBLE_EQ(bench.grid.PORO[3], 0.01);
    EXPECT_DOUBLE_EQ(bench.grid.PERMX[3], 90.0);
    EXPECT_DOUBLE_EQ(bench.grid.PERMY[3], 1.0);
    EXPECT_EQ(bench.grid.Active[3], 1);
}

TEST(GridContinua, PutsTheFracturesOfBlocksWhereTheMatrixIs) {
    DualBench bench(Whole + "SIGMA\n1 /\n");
    bench.readGrid();
    EXPECT_DOUBLE_EQ(bench.grid.CellCentre(3, 3), 1005.0);
    EXPECT_DOUBLE_EQ(bench.grid.CellCentre(1, 3), 1005.0);
}

TEST(GridContinua, MultipliesThePermeabilityOfFracturesByTheirPorosityUnlessNodppm) {
    EXPECT_DOUBLE_EQ(DualBench(Whole + "SIGMA\n1 /\n").readGrid().grid.PERMX[3], 50.0);
    EXPECT_DOUBLE_EQ(DualBench(Whole + "NODPPM\nSIGMA\n1 /\n").readGrid().grid.PERMX[3], 5000.0);
    EXPECT_DOUBLE_EQ(DualBench(Whole + "SIGMA\n1 /\n").readGrid().grid.PERMX[1], 1.0);
}

TEST(GridContinua, WarnsWhereMatrixAndFracturesExchangeNothing) {
    DualBench bench(Whole);
    bench.readGrid();
    EXPECT_TRUE(bench.printed("NEITHER SIGMA NOR SIGMAV ABOVE 0"));
}

TEST(GridContinua, NeglectsItsKeywordsWithoutDualPorosity) {
    GridBench bench(2, 2, 2, SoundBlocks + "SIGMA\n0.1 /\n");
    bench.readGrid();
    EXPECT_TRUE(bench.grid.dual.SIGMA.empty());
    EXPECT_TRUE(bench.printed("SIGMA HAS NO EFFECT WITHOUT DUALPORO"));
}

TEST(GridContinuaDeathTest, StopsAtAShapeFactorBelowZero) {
    EXPECT_DEATH(
        {
            DualBench bench(Whole + "SIGMA\n-1 /\n");
            bench.speakToStandardError();
            bench.readGrid();
        },
        "SIGMA BELOW 0");
}

TEST(GridContinua, StillAsksForWholeArraysWithoutDpgrid) {
    EXPECT_DEATH(
        {
            DualBench bench("SIGMA\n1 /\n" + Upper);
            bench.speakToStandardError();
            bench.readGrid();
        },
        "4 values, 2 given");
}

}  // namespace
}  // namespace kvr
