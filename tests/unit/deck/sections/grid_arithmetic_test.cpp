#include "deck/sections/grid_arithmetic.hpp"

#include "unit/deck/sections/grid_bench.hpp"

namespace kvr {
namespace {

// Cells 1 to 4 in region 1, 5 to 8 in region 2; by the other numbering the odd ones in 1.
const std::string Regions = "MULTNUM\n4*1 4*2 /\nFLUXNUM\n1 2 1 2 1 2 1 2 /\n";

TEST(GridArithmetic, AddsOverABox) {
    GridBench bench(2, 2, 2,
                    SoundBlocks + "ADD\nPERMX 50 1 2 1 1 1 1 /\nPoro 0.05 /\nNTG -0.25 1 1 1 1 1 1 /\n/\n");
    bench.readGrid();
    EXPECT_EQ(bench.grid.PERMX[1], 150.0);
    EXPECT_EQ(bench.grid.PERMX[3], 100.0);
    EXPECT_DOUBLE_EQ(bench.grid.PORO[8], 0.25);
    EXPECT_EQ(bench.grid.NTG[1], 0.75);
}

TEST(GridArithmetic, ActsOnTheCellsOfARegionByItsNumbering) {
    GridBench bench(2, 2, 2,
                    SoundBlocks + Regions +
                        "EQUALREG\nPORO 0.3 2 M /\n/\nMULTIREG\nPERMX 3 1 M /\nPERMX 2 1 F /\n/\n"
                        "ADDREG\nPERMZ 7 2 'F' /\n/\n");
    bench.readGrid();
    EXPECT_EQ(bench.grid.PORO[4], 0.2);
    EXPECT_EQ(bench.grid.PORO[5], 0.3);
    EXPECT_EQ(bench.grid.PERMX[1], 600.0);
    EXPECT_EQ(bench.grid.PERMX[2], 300.0);
    EXPECT_EQ(bench.grid.PERMX[5], 200.0);
    EXPECT_EQ(bench.grid.PERMX[6], 100.0);
    EXPECT_EQ(bench.grid.PERMZ[1], 100.0);
    EXPECT_EQ(bench.grid.PERMZ[2], 107.0);
}

TEST(GridArithmetic, TakesMultnumWhereNoNumberingIsNamedAndElseFluxnum) {
    GridBench both(2, 2, 2, SoundBlocks + Regions + "MULTIREG\nPERMX 3 2 /\n/\n");
    both.readGrid();
    EXPECT_EQ(both.grid.PERMX[2], 100.0);
    EXPECT_EQ(both.grid.PERMX[5], 300.0);
    GridBench flux(2, 2, 2, SoundBlocks + "FLUXNUM\n1 2 1 2 1 2 1 2 /\nMULTIREG\nPERMX 3 2 /\n/\n");
    flux.readGrid();
    EXPECT_EQ(flux.grid.PERMX[2], 300.0);
    EXPECT_EQ(flux.grid.PERMX[5], 100.0);
}

TEST(GridArithmetic, KeepsTheOrderOfTheDeckAmongMultiplyAndAdd) {
    GridBench bench(2, 2, 2,
                    SoundBlocks + "MULTIPLY\nPERMX 2 /\n/\nADD\nPERMX 50 /\n/\nMULTIPLY\nPERMX 3 /\n/\n");
    bench.readGrid();
    EXPECT_EQ(bench.grid.PERMX[1], 750.0);  // (100 * 2 + 50) * 3
}

TEST(GridArithmetic, StopsOnARegionWhoseNumberingIsNotGiven) {
    EXPECT_EXIT(readAndStop(SoundBlocks + "MULTIREG\nPERMX 3 1 O /\n/\n"), testing::ExitedWithCode(1),
                "ERROR :: REGION 1 OF PERMX, BUT THE DECK DOES NOT GIVE OPERNUM");
    EXPECT_EXIT(readAndStop(SoundBlocks + Regions + "ADDREG\nPERMX 3 1 X /\n/\n"), testing::ExitedWithCode(1),
                "NUMBERING X IS NONE OF M");
}

TEST(GridArithmetic, TellsOfRowsThatActBeforeOnesInFrontOfThem) {
    GridBench bench(
        2, 2, 2,
        SoundBlocks + "MULTIPLY\nPERMX 2 /\n/\nCOPY\nPERMX PERMY /\n/\nEQUALS\nPERMY 9 1 1 1 1 1 1 /\n/\n");
    bench.readGrid();
    EXPECT_TRUE(
        bench.printed("WARNING :: COPY OF PERMX ACTS BEFORE MULTIPLY AND ADD, THOUGH IT STANDS BEHIND"));
    EXPECT_TRUE(bench.printed("WARNING :: EQUALS OF PERMY ACTS BEFORE COPY, THOUGH IT STANDS BEHIND"));
    GridBench plain(2, 2, 2,
                    SoundBlocks + "EQUALS\nPERMX 9 /\n/\nCOPY\nPERMX PERMY /\n/\nMULTIPLY\nPERMY 2 /\n/\n");
    plain.readGrid();
    EXPECT_FALSE(plain.printed("ACTS BEFORE"));
    EXPECT_EQ(plain.grid.PERMY[1], 18.0);
}

TEST(GridArithmetic, TellsThatRowsOfMultxActOnBothSides) {
    GridBench bench(2, 2, 2, SoundBlocks + "EQUALS\nMULTX 0.5 1 1 1 2 1 2 /\n/\n");
    bench.readGrid();
    EXPECT_TRUE(
        bench.printed("WARNING :: MULTX OF EQUALS MULTIPLIES THE CONNECTIONS OF ITS CELLS TO BOTH SIDES"));
}

TEST(GridArithmetic, SkipsRowsOfNoRegionAndUnknownArrays) {
    GridBench bench(2, 2, 2,
                    SoundBlocks + Regions + "MULTIREG\nPERMX 3 0 M /\nSWL 3 1 M /\nPERMX -1 1 M /\n/\n");
    bench.readGrid();
    EXPECT_EQ(bench.grid.PERMX[1], 100.0);
    EXPECT_TRUE(bench.printed("WARNING :: MULTIREG: REGION 0 IS NO NUMBER ABOVE 0, ROW SKIPPED"));
    EXPECT_TRUE(bench.printed(" SWL      -> not surpported  "));
    EXPECT_TRUE(bench.printed("WARNING :: MULTIPLY PERMX BY -1"));
}

}  // namespace
}  // namespace kvr
