#include "model/corner_transmissibility.hpp"

#include "unit/model/conditioned.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

TEST(CornerFormula, AgreesWithTheBoxFormulaOnAUniformGrid) {
    const auto corner = condition(uniformBlocks(2, 2, 2, 100, 50, 10), true);
    const auto box = condition(uniformBlocks(2, 2, 2, 100, 50, 10), false);
    EXPECT_TRUE(close(corner.table.HalfTrans(1, 2), 1.12771));
    EXPECT_TRUE(close(corner.table.Trans(1, 2), 0.563855));
    for (CellId cell = 1; cell <= 8; ++cell) {
        EXPECT_TRUE(close(corner.grid.BulkVolume[cell], box.grid.BulkVolume[cell]));
        for (int d = 1; d <= 6; ++d) {
            EXPECT_TRUE(close(corner.table.Trans(cell, d), box.table.Trans(cell, d)));
            EXPECT_TRUE(close(corner.table.ConnArea(cell, d), box.table.ConnArea(cell, d)));
            EXPECT_TRUE(close(corner.table.ConnLength(cell, d), box.table.ConnLength(cell, d)));
        }
    }
}

/// Two boxes in corner-point form: 100 ft long with 100 md, 200 ft long with 50 md and net-to-gross 0.5; the
/// second lies `thrown` ft deeper.
GridModel cornerPair(float thrown) {
    GridModel grid = rockOnly(2, 1, 1);
    setCells(grid.NTG, {1, 0.5});
    setCells(grid.PERMX, {100, 50});
    verticalPillars(grid, {0, 100, 300}, {0, 50}, 0, 2000);
    setDepths(grid, 1, 1, 1, 1000, 1010);
    setDepths(grid, 2, 1, 1, 1000 + thrown, 1010 + thrown);
    CALC_RESERVOIR_COORDINATE_FRMCOORD(grid, CubicFeetPerBarrel);
    return grid;
}

TEST(CornerFormula, JoinsHalvesWithTheirOwnNetToGross) {
    const auto [grid, t] = condition(cornerPair(0), true);
    EXPECT_TRUE(close(t.HalfTrans(1, 2), 1.12771));
    EXPECT_TRUE(close(t.HalfTrans(2, 1), 0.14096375));
    EXPECT_TRUE(close(t.Trans(1, 2), 0.1253011111));
    EXPECT_TRUE(close(t.Trans(2, 1), 0.1253011111));
}

TEST(CornerFormula, GivesTheNeighbourTheCellsOwnNetToGrossInTheHarmonicMean) {
    const auto [grid, t] = condition(cornerPair(0), true);
    EXPECT_TRUE(close(t.HarmonicPerm(1, 2) / C, 60.0));
    EXPECT_TRUE(close(t.HarmonicPerm(2, 1) / C, 30.0));
}

TEST(CornerFormula, ShutsAConnectionThrownFurtherThanTheMeanFaceExtent) {
    // The face is 50 wide and 10 high: mean extent 30.
    const auto open = condition(cornerPair(29), true);
    const auto shut = condition(cornerPair(31), true);
    EXPECT_GT(open.table.Trans(1, 2), 0.0);
    EXPECT_EQ(shut.table.Trans(1, 2), 0.0);
    EXPECT_EQ(shut.table.Trans(2, 1), 0.0);
    EXPECT_EQ(shut.table.Neighbour(1, 2), 2);
    EXPECT_DOUBLE_EQ(shut.table.DepthDiff(1, 2), 31.0);
}

/// One cell: unit square on top, square of side 2 one foot below.
GridModel frustumCell() {
    GridModel grid = rockOnly(1, 1, 1);
    grid.COORD = {0, 0, 0, 0, 0, 1, 1, 0, 0, 2, 0, 1, 0, 1, 0, 0, 2, 1, 1, 1, 0, 2, 2, 1};
    grid.ZCORN = {0, 0, 0, 0, 1, 1, 1, 1};
    CALC_RESERVOIR_COORDINATE_FRMCOORD(grid, CubicFeetPerBarrel);
    return grid;
}

TEST(CornerFormula, ReplacesTheVolumeOfAnActiveCellByTheIntegral) {
    const GridModel grid = frustumCell();
    EXPECT_TRUE(close(grid.BulkVolume[1], 2.25 / 5.614583));
    EXPECT_TRUE(close(condition(grid, true).grid.BulkVolume[1], 0.42745828, 1e-7));
}

TEST(CornerFormula, LeavesTheFirstEstimateOfTheVolumeToInactiveCells) {
    GridModel grid = frustumCell();
    grid.Active[1] = 0;
    EXPECT_TRUE(close(condition(std::move(grid), true).grid.BulkVolume[1], 2.25 / 5.614583));
}

TEST(CornerFormula, GivesZeroHalvesToACellWithoutThickness) {
    GridModel grid = rockOnly(1, 1, 3);
    verticalPillars(grid, {0, 100}, {0, 50}, 0, 2000);
    setDepths(grid, 1, 1, 1, 1000, 1010);
    setDepths(grid, 1, 1, 2, 1010, 1010);
    setDepths(grid, 1, 1, 3, 1010, 1020);
    CALC_RESERVOIR_COORDINATE_FRMCOORD(grid, CubicFeetPerBarrel);
    const auto [out, t] = condition(std::move(grid), true);
    EXPECT_EQ(t.HalfTrans(2, 5), 0.0);
    EXPECT_EQ(t.Trans(1, 6), 0.0);
    EXPECT_EQ(t.Trans(3, 5), 0.0);
}

}  // namespace
}  // namespace kvr
