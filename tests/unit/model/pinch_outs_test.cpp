#include "unit/model/conditioned.hpp"

namespace kvr {
namespace {

/// A column of four blocks of 100 by 100 by 10 ft, the second below MINPV.
GridModel column() {
    constexpr double Bulk = 100.0 * 100.0 * 10.0 / CubicFeetPerBarrel;
    GridModel grid = uniformBlocks(1, 1, 4, 100.0, 100.0, 10.0);
    grid.PERMZ[1] = 50.0;
    grid.PORO[2] = 0.01;
    grid.leastPoreVolume = 0.05 * Bulk;
    grid.pinch.isSet = true;
    return grid;
}

TEST(PinchOuts, LetTheCellsAboveAndBelowTouchByBothFormulas) {
    for (const bool corners : {false, true}) {
        const auto [out, t] = condition(column(), corners);
        EXPECT_EQ(out.Active[2], 0);
        EXPECT_EQ(t.Neighbour(1, 6), 3);
        EXPECT_EQ(t.Neighbour(3, 5), 1);
        // halves 2 k A / D of 1e5 and 2e5, one behind the other
        EXPECT_TRUE(close(t.Trans(1, 6), 2e5 / 3.0 * C, 1e-6));
        EXPECT_TRUE(close(t.Trans(3, 5), 2e5 / 3.0 * C, 1e-6));
        EXPECT_NEAR(t.DepthDiff(1, 6), 20.0, 1e-9);
        EXPECT_TRUE(close(t.Trans(3, 6), 1e5 * C, 1e-6));
    }
}

TEST(PinchOuts, LeaveWhatIsClosedBesideThemClosed) {
    for (const bool corners : {false, true}) {
        constexpr double Bulk = 100.0 * 100.0 * 10.0 / CubicFeetPerBarrel;
        GridModel grid = uniformBlocks(2, 1, 3, 100.0, 100.0, 10.0);
        grid.PORO[2] = grid.PORO[3] = 0.01;  // beside the cell above the gap, and the gap
        grid.leastPoreVolume = 0.05 * Bulk;
        grid.pinch.isSet = true;
        const auto [out, t] = condition(std::move(grid), corners);
        EXPECT_EQ(t.Neighbour(1, 6), 5);
        EXPECT_GT(t.Trans(1, 6), 0.0);
        EXPECT_EQ(t.Trans(1, 2), 0.0);
        EXPECT_EQ(t.Trans(4, 5), 0.0);
    }
}

TEST(PinchOuts, AreFoundAgainByAFurtherConditioning) {
    const auto [out, t] = condition(condition(column(), false).grid, false);
    EXPECT_EQ(t.Neighbour(1, 6), 3);
    EXPECT_TRUE(close(t.Trans(3, 5), 2e5 / 3.0 * C, 1e-6));
}

TEST(PinchOuts, AreNoneWithoutTheKeyword) {
    GridModel grid = column();
    grid.pinch.isSet = false;
    const auto [out, t] = condition(std::move(grid), false);
    EXPECT_EQ(t.Neighbour(1, 6), 2);
    EXPECT_EQ(t.Trans(1, 6), 0.0);
}

TEST(PinchOuts, AreThinCellsAloneWhereNoGapIsAskedFor) {
    GridModel grid = column();
    grid.pinch.acrossSmall = false;
    EXPECT_EQ(condition(grid, false).table.Neighbour(1, 6), 2);
    grid.pinch.thickness = 10.0;
    EXPECT_EQ(condition(grid, false).table.Neighbour(1, 6), 3);
}

TEST(PinchOuts, AreNotThickCellsThatTheDeckHasTakenOut) {
    GridModel grid = column();
    grid.PORO[2] = 0.2;
    grid.Active[2] = 0;
    EXPECT_EQ(condition(grid, false).table.Neighbour(1, 6), 2);
}

TEST(PinchOuts, MayBeSeveralCellsHighAndLieAtAnEnd) {
    GridModel grid = column();
    grid.PORO[3] = 0.01;
    auto [out, t] = condition(grid, false);
    EXPECT_EQ(t.Neighbour(1, 6), 4);
    EXPECT_EQ(t.Neighbour(4, 5), 1);
    grid.PORO[4] = 0.01;
    EXPECT_EQ(condition(grid, false).table.Trans(1, 6), 0.0);
}

}  // namespace
}  // namespace kvr
