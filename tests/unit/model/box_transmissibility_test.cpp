#include "unit/model/conditioned.hpp"

#include <gtest/gtest.h>
#include <tuple>

namespace kvr {
namespace {

TEST(BoxFormula, GivesAreaLengthAndDipOfEachLateralConnection) {
    const auto [grid, t] = condition(threeBlocks(), false);
    for (const auto& [cell, d, sign] : {std::tuple{1, 2, 1.0}, std::tuple{2, 1, -1.0}}) {
        EXPECT_TRUE(close(t.DepthDiff(cell, d), sign * 5.0));
        EXPECT_TRUE(close(t.ConnArea(cell, d), 500.0));
        EXPECT_TRUE(close(t.ConnLength(cell, d), 150.0));
        EXPECT_TRUE(close(t.HarmonicPerm(cell, d) / C, 60.0));
        EXPECT_TRUE(close(t.Trans(cell, d) * 150.0 / (500.0 * 60.0 * C), 0.9988901221, 1e-9));
        EXPECT_TRUE(close(t.Trans(cell, d), 0.2252916759, 1e-9));
    }
    EXPECT_EQ(t.DepthDiff(2, 2), 0.0);
    EXPECT_TRUE(close(t.ConnArea(2, 2), 500.0));
    EXPECT_TRUE(close(t.ConnLength(2, 2), 150.0));
    EXPECT_TRUE(close(t.HarmonicPerm(2, 2) / C, 66.6666666667));
    EXPECT_TRUE(close(t.Trans(2, 2), 0.2506022222));
}

TEST(BoxFormula, TakesHalfTransWithoutNetToGross) {
    const auto [grid, t] = condition(threeBlocks(), false);
    EXPECT_TRUE(close(t.HalfTrans(1, 2), 1.12771));
    EXPECT_TRUE(close(t.HalfTrans(2, 1), 0.563855));
    EXPECT_TRUE(close(t.HalfTrans(3, 1), 2.25542));
}

TEST(BoxFormula, HasNoNetToGrossAndNoDipInVerticalConnections) {
    GridModel grid = rockOnly(1, 1, 2);
    setCells(grid.DX, {100, 100});
    setCells(grid.DY, {50, 50});
    setCells(grid.DZ, {10, 30});
    setCells(grid.NTG, {0.5, 0.1});
    setCells(grid.PERMZ, {5, 20});
    setCells(grid.TOPS, {1000, 1010});
    buildBlockGrid(grid, CubicFeetPerBarrel);
    const auto [out, t] = condition(std::move(grid), false);
    EXPECT_TRUE(close(t.ConnArea(1, 6), 5000.0));
    EXPECT_TRUE(close(t.HarmonicPerm(1, 6) / C, 11.4285714286));
    EXPECT_TRUE(close(t.Trans(1, 6), 3.22202857));
    EXPECT_EQ(t.Trans(1, 6), t.Trans(2, 5));
    EXPECT_DOUBLE_EQ(t.DepthDiff(1, 6), 20.0);
}

TEST(BoxFormula, LeavesFacesOfTheBoxWithoutConnection) {
    const auto [grid, t] = condition(uniformBlocks(2, 2, 2, 100, 50, 10), false);
    for (const int d : {1, 3, 5}) {
        EXPECT_EQ(t.Neighbour(1, d), 0);
        EXPECT_EQ(t.Trans(1, d), 0.0);
    }
}

}  // namespace
}  // namespace kvr
