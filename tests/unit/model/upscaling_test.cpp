#include "model/upscaling.hpp"

#include "model/window_flow.hpp"
#include "unit/model/conditioned.hpp"
#include "unit/quiet_console.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

ConditioningRow windowRow(const std::string& name, int x, int y, int z) {
    return {name, {x, y, z}, 0};
}

void upscaleQuietly(const std::vector<ConditioningRow>& rows, GridModel& grid) {
    upscaleRock(Console{nullptr, nullptr, nullptr}, rows, grid);
}

TEST(Upscaling, AveragesPorosityByVolume) {
    GridModel grid = uniformBlocks(2, 1, 1, 100, 50, 10);
    setCells(grid.PORO, {1, 3});
    upscaleQuietly({windowRow("PORO", 2, 1, 1)}, grid);
    EXPECT_TRUE(close(grid.upscaled.PORO[1], 2.0));
    EXPECT_TRUE(close(grid.upscaled.PORO[2], 2.0));
    EXPECT_EQ(grid.PORO[1], 1.0);

    grid.DX[2] = 300.0;  // the second cell weighs three times as much
    upscaleQuietly({windowRow("PORO", 2, 1, 1)}, grid);
    EXPECT_TRUE(close(grid.upscaled.PORO[1], 2.5));
}

TEST(Upscaling, TakesTheHarmonicMeanAlongAndTheArithmeticAcrossTheFlow) {
    GridModel grid = uniformBlocks(2, 1, 1, 100, 100, 100);
    setCells(grid.PERMX, {100, 50});
    setCells(grid.PERMY, {100, 50});
    upscaleQuietly({windowRow("PERMX", 2, 1, 1), windowRow("PERMY", 2, 1, 1)}, grid);
    EXPECT_TRUE(close(grid.upscaled.PERMX[1], 66.6666667));
    EXPECT_TRUE(close(grid.upscaled.PERMY[2], 75.0));
    EXPECT_EQ(grid.upscaled.PERMZ[1], 100.0);  // without a row: as it was
}

TEST(Upscaling, IsExactForLayersOfUnequalThickness) {
    GridModel grid = uniformBlocks(3, 2, 4, 100, 50, 10);
    const double permeability[] = {1.0, 1000.0, 30.0, 0.5};
    const double thickness[] = {5.0, 20.0, 10.0, 40.0};
    double along = 0.0;
    double across = 0.0;
    for (int k = 1; k <= 4; ++k) {
        along += thickness[k - 1] * permeability[k - 1];
        across += thickness[k - 1] / permeability[k - 1];
        for (int cell = 1; cell <= 6; ++cell) {
            const CellId id = (k - 1) * 6 + cell;
            grid.PERMX[id] = grid.PERMY[id] = grid.PERMZ[id] = permeability[k - 1];
            grid.DZ[id] = thickness[k - 1];
        }
    }
    upscaleQuietly({windowRow("PERMX", 3, 2, 4), windowRow("PERMY", 3, 2, 4), windowRow("PERMZ", 3, 2, 4)},
                   grid);
    EXPECT_TRUE(close(grid.upscaled.PERMX[1], along / 75.0));
    EXPECT_TRUE(close(grid.upscaled.PERMY[7], along / 75.0));
    EXPECT_TRUE(close(grid.upscaled.PERMZ[24], 75.0 / across));
}

TEST(Upscaling, GivesAUniformFieldBackWhateverItsNetToGross) {
    GridModel grid = uniformBlocks(4, 3, 2, 100, 50, 10);
    for (double& value : grid.NTG.cells()) value = 0.5;
    upscaleQuietly({windowRow("PERMX", 4, 3, 2), windowRow("PERMZ", 4, 3, 2)}, grid);
    EXPECT_TRUE(close(grid.upscaled.PERMX[5], 100.0));
    EXPECT_TRUE(close(grid.upscaled.PERMZ[5], 100.0));
}

TEST(Upscaling, OfACheckerboardIsTheGeometricMean) {
    // A quarter turn maps the board onto its inverse, so the product of the two permeabilities is 1 * 100.
    for (const int side : {2, 4, 12}) {
        GridModel grid = uniformBlocks(side, side, 1, 100, 100, 10);
        for (CellId cell = 1; cell <= grid.NCELLS; ++cell)
            grid.PERMX[cell] = grid.PERMY[cell] =
                (grid.CellI[cell] + grid.CellJ[cell]) % 2 == 0 ? 1.0 : 100.0;
        upscaleQuietly({windowRow("PERMX", side, side, 1), windowRow("PERMY", side, side, 1)}, grid);
        EXPECT_TRUE(close(grid.upscaled.PERMX[1], 10.0, 1e-6)) << side;
        EXPECT_TRUE(close(grid.upscaled.PERMY[1], 10.0, 1e-6)) << side;
    }
}

TEST(Upscaling, IsNothingAcrossAClosedWallAndLeavesIslandsOut) {
    GridModel grid = uniformBlocks(3, 3, 1, 100, 100, 10);
    for (const CellId cell : {2, 5, 8}) grid.PERMX[cell] = grid.PERMY[cell] = 0.0;
    upscaleQuietly({windowRow("PERMX", 3, 3, 1), windowRow("PERMY", 3, 3, 1)}, grid);
    EXPECT_LT(grid.upscaled.PERMX[1], 1e-8);
    EXPECT_TRUE(close(grid.upscaled.PERMY[1], 200.0 / 3.0, 1e-6));

    // A cell inside a ring of inactive ones is joined to nothing.
    GridModel ring = uniformBlocks(5, 5, 1, 100, 100, 10);
    for (const CellId cell : {7, 8, 9, 12, 14, 17, 18, 19}) ring.Active[cell] = 0;
    upscaleQuietly({windowRow("PERMX", 5, 5, 1)}, ring);
    EXPECT_GT(ring.upscaled.PERMX[1], 0.0);
    EXPECT_LT(ring.upscaled.PERMX[1], 100.0);
}

TEST(Upscaling, CutsWindowsAtTheEndOfTheGrid) {
    GridModel grid = uniformBlocks(5, 1, 1, 100, 50, 10);
    setCells(grid.PORO, {0.1, 0.3, 0.2, 0.4, 0.25});
    upscaleQuietly({windowRow("PORO", 2, 0, 99)}, grid);
    const double expected[] = {0.2, 0.2, 0.3, 0.3, 0.25};
    for (CellId cell = 1; cell <= 5; ++cell) EXPECT_TRUE(close(grid.upscaled.PORO[cell], expected[cell - 1]));
}

TEST(Upscaling, TellsOfEachWindowAndDirection) {
    const QuietConsole quiet;
    GridModel grid = uniformBlocks(4, 1, 1, 100, 50, 10);
    upscaleRock(quiet.console, {windowRow("PERMY", 2, 1, 1), windowRow("DEPTH", 2, 1, 1)}, grid);
    EXPECT_EQ(quiet.screenText(),
              "Upscaled Grid dir: 2 GridID: 1\nUpscaled Grid dir: 2 GridID: 2\n DEPTH   -> not surpported\n");
}

TEST(Upscaling, RefusesAWindowBeyondTheDenseSolver) {
    GridModel grid = rockOnly(128, 128, 1);
    EXPECT_EXIT(upscaleRock(consoleOnStandardError(), {windowRow("PERMX", 128, 128, 1)}, grid),
                ::testing::ExitedWithCode(1), "ERROR :: UPSCALE window of 16384 cells is too large");
}

TEST(FlowThrough, AddsConductancesInSeriesAndInParallel) {
    FlowNetwork network;
    network.nodes = 4;
    network.edges = {{0, 2, 2.0}, {2, 1, 2.0}, {0, 1, 3.0}, {3, 3, 1.0}};
    EXPECT_TRUE(close(flowThrough(network), 4.0));
}

}  // namespace
}  // namespace kvr
