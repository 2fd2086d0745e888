#include "model/grid_memory.hpp"

#include <gtest/gtest.h>
#include <limits>

namespace kvr {
namespace {

TEST(CheckGridSize, RefusesDimensionsOfZeroOrLess) {
    EXPECT_EQ(checkGridSize(0, 1, 1), GridSize::NotPositive);
    EXPECT_EQ(checkGridSize(3, -2, 1), GridSize::NotPositive);
    EXPECT_EQ(checkGridSize(3, 2, 0), GridSize::NotPositive);
}

TEST(CheckGridSize, RefusesACellCountBeyond32Bits) {
    EXPECT_EQ(checkGridSize(100000, 100000, 1), GridSize::TooManyCells);
    EXPECT_EQ(checkGridSize(std::numeric_limits<int>::max(), 1, 1), GridSize::TooManyCells);
    EXPECT_EQ(checkGridSize(1 << 30, 1 << 30, 1 << 30), GridSize::TooManyCells);
}

TEST(CheckGridSize, AcceptsASmallBox) {
    EXPECT_EQ(checkGridSize(10, 10, 3), GridSize::Usable);
}

TEST(AllocateGrid, NumbersCellsWithIFastest) {
    GridModel grid;
    grid.NX = 3;
    grid.NY = 2;
    grid.NZ = 2;
    ASSERT_TRUE(allocateGrid(grid));
    EXPECT_EQ(grid.NCELLS, 12);
    EXPECT_EQ(grid.CellI[11], 2);
    EXPECT_EQ(grid.CellJ[11], 2);
    EXPECT_EQ(grid.CellK[11], 2);
    EXPECT_EQ(cellIndex(grid, 2, 2, 2), 11);
}

TEST(AllocateGrid, PresetsRockAndActivity) {
    GridModel grid;
    grid.NX = grid.NY = grid.NZ = 2;
    ASSERT_TRUE(allocateGrid(grid));
    EXPECT_EQ(grid.PORO[8], 0.0);
    EXPECT_EQ(grid.NTG[8], 1.0);
    EXPECT_EQ(grid.JFactor[8], 1.0);
    EXPECT_EQ(grid.Active[8], 1);
    EXPECT_EQ(grid.SATNUM[8], 1);
    EXPECT_EQ(grid.NodeX.size(), 27U);
    EXPECT_TRUE(grid.COORD.empty());
}

}  // namespace
}  // namespace kvr
