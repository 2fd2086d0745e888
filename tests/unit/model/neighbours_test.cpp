#include "model/neighbours.hpp"

#include "unit/model/small_grids.hpp"

#include <gtest/gtest.h>
#include <map>

namespace kvr {
namespace {

ConnectionTable tableFor(const GridModel& grid, int width) {
    ConnectionTable connections;
    connections.NDIR = width;
    connections.Neighbour.assign(grid.NCELLS, width, -1);
    buildNeighbours(grid, connections);
    return connections;
}

TEST(Neighbours, OfTheFirstCellOfABoxOf27LieOnTheHighSidesOnly) {
    const GridModel grid = rockOnly(3, 3, 3);
    const ConnectionTable table = tableFor(grid, 26);
    const std::map<int, CellId> kept = {{2, 2}, {4, 4}, {6, 10}, {18, 5}, {23, 11}, {25, 13}, {26, 14}};
    for (int d = 1; d <= 26; ++d) {
        const auto it = kept.find(d);
        EXPECT_EQ(table.Neighbour(1, d), it == kept.end() ? 0 : it->second) << d;
    }
}

TEST(Neighbours, OfTheMiddleCellRepeatWhereTheDirectionTableDoes) {
    const GridModel grid = rockOnly(3, 3, 3);
    const ConnectionTable table = tableFor(grid, 26);
    EXPECT_EQ(table.Neighbour(14, 8), 2);
    EXPECT_EQ(table.Neighbour(14, 9), 2);
    EXPECT_EQ(table.Neighbour(14, 10), 4);
    EXPECT_EQ(table.Neighbour(14, 12), 4);
    EXPECT_EQ(table.Neighbour(14, 5), 5);
    EXPECT_EQ(table.Neighbour(14, 11), 5);
    EXPECT_EQ(table.Neighbour(14, 13), 5);
}

TEST(Neighbours, OfTheLastCellLoseEveryDirectionTowardsHigherIndices) {
    const GridModel grid = rockOnly(3, 3, 3);
    const ConnectionTable table = tableFor(grid, 26);
    for (const int d : {2, 4, 6, 14}) EXPECT_EQ(table.Neighbour(27, d), 0) << d;
    for (int d = 16; d <= 26; ++d) EXPECT_EQ(table.Neighbour(27, d), 0) << d;
    for (const int d : {1, 3, 5, 7, 8, 9, 10, 11, 12, 13, 15}) EXPECT_GT(table.Neighbour(27, d), 0) << d;
}

TEST(Neighbours, AreZeroForAnInactiveCellAndStayTowardsIt) {
    GridModel grid = rockOnly(3, 1, 1);
    grid.Active[2] = 0;
    const ConnectionTable table = tableFor(grid, 6);
    EXPECT_EQ(table.Neighbour(2, 1), 0);
    EXPECT_EQ(table.Neighbour(2, 2), 0);
    EXPECT_EQ(table.Neighbour(1, 2), 2);
    EXPECT_EQ(table.Neighbour(3, 1), 2);
}

}  // namespace
}  // namespace kvr
