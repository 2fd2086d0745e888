#include "model/nine_point.hpp"

#include "unit/model/conditioned.hpp"

#include <gtest/gtest.h>
#include <limits>

namespace kvr {
namespace {

RunOptions ninePoint() {
    RunOptions options;
    options.ninePoint = true;
    options.maxConnectionsPerCell = 26;
    return options;
}

constexpr double TransBefore = 7.0;

/// A 3x3 table whose halves are tx on faces 1, 2 and ty on faces 3, 4.
ConnectionTable evenHalves(const GridModel& grid, double tx, double ty) {
    Conditioned c = condition(grid, false, ninePoint());
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell)
        for (int d = 1; d <= 4; ++d) c.table.HalfTrans(cell, d) = d <= 2 ? tx : ty;
    c.table.Trans.assign(grid.NCELLS, c.table.NDIR, 0.0);
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell)
        for (int d = 1; d <= 4; ++d) c.table.Trans(cell, d) = TransBefore;
    rebalanceNinePoint(grid, c.table);
    return c.table;
}

TEST(NinePoint, MovesOneThirdOfEqualHalvesToTheDiagonal) {
    const GridModel grid = uniformBlocks(3, 3, 1, 100, 100, 10);
    const ConnectionTable t = evenHalves(grid, 1.0, 1.0);
    EXPECT_TRUE(close(t.Trans(5, 15), 1.0 / 3.0));
    for (int d = 1; d <= 4; ++d) EXPECT_TRUE(close(t.Trans(5, d), 0.8333333333));
    for (int d = 15; d <= 18; ++d) EXPECT_TRUE(close(t.Trans(5, d), 1.0 / 3.0));
}

TEST(NinePoint, WeighsUnequalHalves) {
    const GridModel grid = uniformBlocks(3, 3, 1, 100, 100, 10);
    const ConnectionTable t = evenHalves(grid, 2.0, 1.0);
    EXPECT_TRUE(close(t.Trans(5, 18), 0.4444444444));
    EXPECT_TRUE(close(t.Trans(5, 2), 1.7777777778));
    EXPECT_TRUE(close(t.Trans(5, 4), 0.7777777778));
}

TEST(NinePoint, LeavesOutADiagonalWithoutFlow) {
    EXPECT_EQ(diagonalTrans(0.0, 2.0), 0.0);
    EXPECT_EQ(diagonalTrans(2.0, 0.0), 0.0);
    const GridModel grid = uniformBlocks(3, 3, 1, 100, 100, 10);
    const ConnectionTable t = evenHalves(grid, 0.0, 1.0);
    EXPECT_EQ(t.Trans(5, 18), 0.0);
    for (int d = 1; d <= 4; ++d) EXPECT_EQ(t.Trans(5, d), TransBefore);
}

TEST(NinePoint, ServesTheFullyImplicitMethodOnly) {
    const GridModel grid = uniformBlocks(3, 3, 1, 100, 100, 10);
    RunOptions options = ninePoint();
    const ConnectionTable others = condition(grid, false, options).table;
    const double face = condition(grid, false).table.Trans(5, 2);
    EXPECT_EQ(others.Trans(5, 2), face);
    EXPECT_EQ(others.Trans(5, 18), 0.0);
    EXPECT_EQ(others.Neighbour(5, 18), 9);
    options.method = "FIM";
    const ConnectionTable implicit = condition(grid, false, options).table;
    EXPECT_GT(implicit.Trans(5, 18), 0.0);
    EXPECT_NE(implicit.Trans(5, 2), face);
}

TEST(NinePoint, KnowsTheDepthsAlongItsDiagonals) {
    GridModel grid = rockOnly(2, 2, 1);
    setCells(grid.DX, {100, 100, 100, 100});
    setCells(grid.DY, {100, 100, 100, 100});
    setCells(grid.DZ, {10, 10, 10, 10});
    setCells(grid.TOPS, {1000, 1004, 1003, 1009});
    buildBlockGrid(grid, CubicFeetPerBarrel);
    const ConnectionTable t = condition(std::move(grid), false, ninePoint()).table;
    EXPECT_DOUBLE_EQ(t.DepthDiff(1, 18), 9.0);
    EXPECT_DOUBLE_EQ(t.DepthDiff(3, 16), 1.0);
    EXPECT_DOUBLE_EQ(t.DepthDiff(4, 15), -9.0);
}

TEST(NinePoint, GoesOnPastAHalfThatIsNotANumber) {
    const GridModel grid = uniformBlocks(3, 3, 1, 100, 100, 10);
    Conditioned c = condition(grid, false, ninePoint());
    c.table.HalfTrans(5, 2) = std::numeric_limits<double>::quiet_NaN();
    // Cell 5 has face 2 in diagonals 16 and 18; cells 3 and 9 meet it as the neighbour's half.
    EXPECT_EQ(rebalanceNinePoint(grid, c.table), 4);
    EXPECT_GT(c.table.Trans(5, 15), 0.0);
}

}  // namespace
}  // namespace kvr
