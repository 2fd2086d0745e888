#include "model/further_connections.hpp"

#include "unit/model/conditioned.hpp"

namespace kvr {
namespace {

using Means = ConnectionRow::Means;

GridModel rowOfFour(const std::vector<ConnectionRow>& rows) {
    GridModel grid = uniformBlocks(4, 1, 1, 100.0, 50.0, 10.0);
    grid.connectionRows = rows;
    return grid;
}

TEST(FurtherConnections, JoinTheCellsOfARowFromBothSides) {
    const auto [grid, t] = condition(rowOfFour({{3, 1, 2.0, Means::Add}, {1, 4, 7.0, Means::Add}}), false);
    EXPECT_EQ(t.NDIR, 8);
    EXPECT_EQ(t.Neighbour(1, 7), 3);
    EXPECT_EQ(t.Neighbour(1, 8), 4);
    EXPECT_EQ(t.Neighbour(3, 7), 1);
    EXPECT_EQ(t.Neighbour(4, 7), 1);
    EXPECT_EQ(t.Trans(1, 7), 2.0);
    EXPECT_EQ(t.Trans(3, 7), 2.0);
    EXPECT_EQ(t.Trans(1, 8), 7.0);
    EXPECT_EQ(directionBack(t, 1, 4, 8), 7);
    EXPECT_EQ(directionBack(t, 4, 1, 7), 8);
    EXPECT_EQ(flowAxes(t), 5);
    EXPECT_EQ(directionOfAxis(5), 8);
    EXPECT_EQ(axisOf(8), 5);
    EXPECT_TRUE(isLowSide(t, 1, 8));
    EXPECT_FALSE(isLowSide(t, 4, 7));
}

TEST(FurtherConnections, AddWhereThereIsOne) {
    const double plain = condition(rowOfFour({}), false).table.Trans(1, 2);
    const auto [grid, t] = condition(
        rowOfFour({{1, 3, 2.0, Means::Add}, {3, 1, 0.5, Means::Add}, {2, 1, 4.0, Means::Add}}), false);
    EXPECT_EQ(t.further.size(), 1U);
    EXPECT_EQ(t.Trans(1, 7), 2.5);
    EXPECT_TRUE(close(t.Trans(1, 2), plain + 4.0));
    EXPECT_TRUE(close(t.Trans(2, 1), plain + 4.0));
}

TEST(FurtherConnections, AreEditedInOrder) {
    const auto [grid, t] = condition(
        rowOfFour({{1, 3, 2.0, Means::Add}, {3, 1, 0.25, Means::Multiply}, {1, 3, 2.0, Means::Multiply}}),
        false);
    EXPECT_EQ(t.Trans(1, 7), 1.0);
    const auto replaced =
        condition(rowOfFour({{1, 3, 2.0, Means::Add}, {3, 1, 0.25, Means::Replace}}), false);
    EXPECT_EQ(replaced.table.Trans(3, 7), 0.25);
}

TEST(FurtherConnections, AreNoneOfInactiveCells) {
    GridModel grid = rowOfFour({{1, 3, 2.0, Means::Add}});
    grid.Active[3] = 0;
    EXPECT_EQ(condition(grid, false).table.Neighbour(1, 7), 0);
    grid.Active[3] = 1;
    grid.PORO[3] = 0.01;
    grid.leastPoreVolume = 0.05 * 50000.0 / CubicFeetPerBarrel;
    const auto [out, t] = condition(grid, false);
    EXPECT_EQ(out.Active[3], 0);
    EXPECT_EQ(t.Trans(1, 7), 0.0);
}

TEST(FurtherConnections, AreLeftOutWhereTransportKnowsNothingOfThem) {
    RunOptions options;
    options.ninePoint = true;
    EXPECT_TRUE(condition(rowOfFour({{1, 3, 2.0, Means::Add}}), false, options).table.further.empty());
    options = {};
    options.componentCount = 2;
    EXPECT_TRUE(condition(rowOfFour({{1, 3, 2.0, Means::Add}}), false, options).table.further.empty());
}

}  // namespace
}  // namespace kvr
