#include "model/given_by_cell.hpp"

#include "unit/model/conditioned.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

/// 100 x 100 x 10 ft at porosity 0.2: bulk 1e5 ft3 = 17810.7607 rb, pores 3562.15213 rb.
GridModel threeEqualBlocks() {
    return uniformBlocks(3, 1, 1, 100, 100, 10);
}

constexpr double Bulk = 1e5 / CubicFeetPerBarrel;

double poreVolume(const GridModel& grid, CellId cell) {
    return grid.PORO[cell] * grid.NTG[cell] * grid.BulkVolume[cell];
}

TEST(GivenPoreVolume, TakesThePlaceOfTheComputedOneInItsCellAlone) {
    GridModel grid = threeEqualBlocks();
    givePoreVolume(2, 5000.0, grid);
    const auto [out, t] = condition(std::move(grid), false);
    EXPECT_TRUE(close(poreVolume(out, 1), 0.2 * Bulk));
    EXPECT_TRUE(close(poreVolume(out, 2), 5000.0));
    EXPECT_EQ(out.Active[2], 1);
}

TEST(GivenPoreVolume, IsMultipliedOnlyByWhatComesBehindIt) {
    GridModel grid = threeEqualBlocks();
    grid.MULTPV.assign(3, 4.0);
    givePoreVolume(2, 5000.0, grid);
    grid.MULTPV[2] *= 3.0;
    const auto [out, t] = condition(std::move(grid), false);
    EXPECT_TRUE(close(poreVolume(out, 1), 0.8 * Bulk));
    EXPECT_TRUE(close(poreVolume(out, 2), 15000.0));
}

TEST(GivenPoreVolume, OfZeroTakesTheCellOut) {
    GridModel grid = threeEqualBlocks();
    givePoreVolume(2, 0.0, grid);
    const auto [out, t] = condition(std::move(grid), false);
    EXPECT_EQ(out.Active[2], 0);
    EXPECT_EQ(t.Trans(1, 2), 0.0);
    EXPECT_EQ(t.Trans(3, 1), 0.0);
}

TEST(GivenPoreVolume, StaysWhenTheGeometryIsConditionedAgain) {
    GridModel grid = threeEqualBlocks();
    givePoreVolume(2, 5000.0, grid);
    grid.MULTPV.assign(3, 3.0);
    auto first = condition(std::move(grid), false);
    const auto [out, t] = condition(std::move(first.grid), false);
    EXPECT_TRUE(close(poreVolume(out, 2), 15000.0));
}

TEST(LeastPoreVolume, TakesOutTheCellsBelowIt) {
    GridModel grid = threeEqualBlocks();
    grid.PORO[3] = 0.1;
    grid.leastPoreVolume = 0.15 * Bulk;
    const auto [out, t] = condition(std::move(grid), false);
    EXPECT_EQ(out.Active[2], 1);
    EXPECT_EQ(out.Active[3], 0);
    EXPECT_GT(t.Trans(1, 2), 0.0);
    EXPECT_EQ(t.Trans(2, 2), 0.0);
    EXPECT_EQ(t.Trans(3, 1), 0.0);
}

TEST(GivenTrans, HoldsFromBothSidesOfItsFaceAlone) {
    const auto normal = condition(threeEqualBlocks(), false);
    GridModel grid = threeEqualBlocks();
    giveTrans(2, 0, 7.0, grid);
    const auto [out, t] = condition(std::move(grid), false);
    EXPECT_EQ(t.Trans(2, 2), 7.0);
    EXPECT_EQ(t.Trans(3, 1), 7.0);
    EXPECT_EQ(t.Trans(1, 2), normal.table.Trans(1, 2));
}

TEST(GivenTrans, IsMultipliedOnlyByWhatComesBehindIt) {
    GridModel grid = threeEqualBlocks();
    grid.faceMultiplier[1].assign(3, 0.5);  // MULTX
    grid.faceMultiplier[0].assign(3, 0.5);  // MULTX-
    giveTrans(2, 0, 8.0, grid);
    grid.faceMultiplier[1][2] *= 0.25;
    const auto [out, t] = condition(std::move(grid), false);
    EXPECT_TRUE(close(t.Trans(2, 2), 2.0));
    EXPECT_TRUE(close(t.Trans(3, 1), 2.0));
    EXPECT_TRUE(close(t.Trans(1, 2), 0.25 * C * 100 * 1000 / 100));
}

TEST(GivenTrans, OpensNoWayToACellThatIsOut) {
    GridModel grid = threeEqualBlocks();
    grid.Active[3] = 0;
    giveTrans(2, 0, 7.0, grid);
    const auto [out, t] = condition(std::move(grid), false);
    EXPECT_EQ(t.Trans(2, 2), 0.0);
}

}  // namespace
}  // namespace kvr
