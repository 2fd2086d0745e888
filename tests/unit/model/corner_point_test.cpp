#include "model/corner_point.hpp"

#include "base/constants.hpp"
#include "unit/model/small_grids.hpp"

#include <array>
#include <gtest/gtest.h>

namespace kvr {
namespace {

TEST(ZcornIndex, FollowsTheRowsOfCornersOfTheWholeGrid) {
    GridModel grid = rockOnly(2, 2, 1);
    const std::array<std::size_t, 8> first = {1, 2, 5, 6, 17, 18, 21, 22};
    const std::array<std::size_t, 8> last = {11, 12, 15, 16, 27, 28, 31, 32};
    for (int n = 1; n <= 8; ++n) {
        EXPECT_EQ(zcornIndex(grid, 1, 1, 1, n) + 1, first[static_cast<std::size_t>(n - 1)]);
        EXPECT_EQ(zcornIndex(grid, 2, 2, 1, n) + 1, last[static_cast<std::size_t>(n - 1)]);
    }
}

TEST(PointOnPillar, InterpolatesATiltedPillar) {
    const float pillar[] = {0, 0, 0, 10, 0, 100};
    double x = -1.0;
    double y = -1.0;
    pointOnPillar(pillar, 50.0, x, y);
    EXPECT_DOUBLE_EQ(x, 5.0);
    EXPECT_DOUBLE_EQ(y, 0.0);
}

TEST(PointOnPillar, OfAPillarWithoutHeightIsItsFirstEnd) {
    const float pillar[] = {3, 4, 100, 10, 20, 100};
    double x = 0.0;
    double y = 0.0;
    pointOnPillar(pillar, 150.0, x, y);
    EXPECT_EQ(x, 3.0);
    EXPECT_EQ(y, 4.0);
}

TEST(CornerPointGrid, OfASingleLayerHasCentresBetweenItsTwoDepthLayers) {
    GridModel grid = rockOnly(2, 1, 1);
    verticalPillars(grid, {0, 100, 300}, {0, 50}, 0, 2000);
    setDepths(grid, 1, 1, 1, 1000, 1010);
    setDepths(grid, 2, 1, 1, 1020, 1060);
    CALC_RESERVOIR_COORDINATE_FRMCOORD(grid, CubicFeetPerBarrel);
    EXPECT_DOUBLE_EQ(grid.CellCentre(1, 3), 1005.0);
    EXPECT_DOUBLE_EQ(grid.CellCentre(2, 1), 200.0);
    EXPECT_DOUBLE_EQ(grid.CellCentre(2, 2), 25.0);
    EXPECT_DOUBLE_EQ(grid.CellCentre(2, 3), 1040.0);
    EXPECT_DOUBLE_EQ(grid.DX[2], 200.0);
    EXPECT_DOUBLE_EQ(grid.DY[2], 50.0);
    EXPECT_DOUBLE_EQ(grid.DZ[2], 40.0);
    EXPECT_DOUBLE_EQ(grid.TOPS[2], 1020.0);
    EXPECT_NEAR(grid.BulkVolume[2], 200.0 * 50.0 * 40.0 / 5.614583, 1e-6);
}

TEST(CornerPointGrid, KeepsBothSidesOfAFaultInTheCornersAndTheLaterOneInTheNodes) {
    GridModel grid = rockOnly(2, 1, 1);
    verticalPillars(grid, {0, 100, 200}, {0, 50}, 0, 2000);
    setDepths(grid, 1, 1, 1, 1000, 1010);
    setDepths(grid, 2, 1, 1, 1300, 1310);
    CALC_RESERVOIR_COORDINATE_FRMCOORD(grid, CubicFeetPerBarrel);
    EXPECT_EQ(cornerOf(grid, 1, 2)[2], 1000.0F);
    EXPECT_EQ(cornerOf(grid, 2, 1)[2], 1300.0F);
    EXPECT_EQ(grid.NodeZ[nodeIndex(grid, 2, 1, 1)], 1300.0);
    EXPECT_EQ(grid.NodeZ[nodeIndex(grid, 1, 1, 2)], 1010.0);
}

TEST(CornerPointGrid, PlacesAllCornersOfAFlatPillarAtItsFirstEnd) {
    GridModel grid = rockOnly(1, 1, 1);
    verticalPillars(grid, {0, 100}, {0, 50}, 900, 900);
    for (std::size_t pillar = 0; pillar < 4; ++pillar) grid.COORD[6 * pillar + 3] += 77.0F;
    setDepths(grid, 1, 1, 1, 1000, 1010);
    CALC_RESERVOIR_COORDINATE_FRMCOORD(grid, CubicFeetPerBarrel);
    EXPECT_EQ(cornerOf(grid, 1, 8)[0], 100.0F);
    EXPECT_EQ(cornerOf(grid, 1, 8)[1], 50.0F);
    EXPECT_EQ(cornerOf(grid, 1, 8)[2], 1010.0F);
}

TEST(CornerPointGrid, FollowsATiltedPillarInEveryLayer) {
    GridModel grid = rockOnly(1, 1, 2);
    verticalPillars(grid, {0, 10}, {0, 10}, 0, 100);
    for (std::size_t pillar = 0; pillar < 4; ++pillar) grid.COORD[6 * pillar + 3] += 10.0F;
    setDepths(grid, 1, 1, 1, 0, 50);
    setDepths(grid, 1, 1, 2, 50, 100);
    CALC_RESERVOIR_COORDINATE_FRMCOORD(grid, CubicFeetPerBarrel);
    EXPECT_EQ(cornerOf(grid, 1, 1)[0], 0.0F);
    EXPECT_EQ(cornerOf(grid, 1, 5)[0], 5.0F);
    EXPECT_EQ(cornerOf(grid, 2, 5)[0], 10.0F);
    EXPECT_EQ(grid.NodeX[nodeIndex(grid, 2, 2, 2)], 15.0);
}

}  // namespace
}  // namespace kvr
