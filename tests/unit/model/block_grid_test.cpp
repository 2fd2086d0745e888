#include "model/block_grid.hpp"

#include "base/units.hpp"
#include "unit/model/small_grids.hpp"

#include <cstdio>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <unistd.h>

namespace kvr {
namespace {

TEST(BlockGrid, AddsUpSizesAlongX) {
    GridModel grid = rockOnly(2, 1, 1);
    setCells(grid.DX, {100, 200});
    setCells(grid.DY, {50, 50});
    setCells(grid.DZ, {10, 10});
    setCells(grid.TOPS, {1000, 1000});
    buildBlockGrid(grid, CubicFeetPerBarrel);
    for (int n = 1; n <= 8; ++n) {
        EXPECT_EQ(cornerOf(grid, 2, n)[0], CornerOffset[n - 1][0] == 0 ? 100.0F : 300.0F);
        EXPECT_EQ(cornerOf(grid, 2, n)[1], CornerOffset[n - 1][1] == 0 ? 0.0F : 50.0F);
        EXPECT_EQ(cornerOf(grid, 2, n)[2], CornerOffset[n - 1][2] == 0 ? 1000.0F : 1010.0F);
    }
    EXPECT_DOUBLE_EQ(grid.CellCentre(2, 1), 200.0);
    EXPECT_DOUBLE_EQ(grid.CellCentre(2, 2), 25.0);
    EXPECT_DOUBLE_EQ(grid.CellCentre(2, 3), 1005.0);
    EXPECT_NEAR(grid.BulkVolume[2], 17810.7617, 1e-8 * 17810.7617);
}

TEST(BlockGrid, FillsTheTopsOfLowerLayersFromTheLayerAbove) {
    GridModel grid = rockOnly(2, 2, 2);
    for (CellId cell = 1; cell <= 8; ++cell) {
        grid.DX[cell] = grid.DY[cell] = 100.0;
        grid.DZ[cell] = cell <= 4 ? 10.0 : 20.0;
        grid.TOPS[cell] = cell <= 4 ? 1000.0 : 0.0;
    }
    fillTopsBelow(grid);
    buildBlockGrid(grid, CubicFeetPerBarrel);
    EXPECT_DOUBLE_EQ(grid.TOPS[5], 1010.0);
    EXPECT_DOUBLE_EQ(grid.CellCentre(cellIndex(grid, 1, 1, 2), 3), 1020.0);
}

TEST(BlockGrid, KeepsTheDepthOfEachCellWhereNeighboursDiffer) {
    GridModel grid = rockOnly(2, 1, 1);
    setCells(grid.DX, {100, 100});
    setCells(grid.DY, {50, 50});
    setCells(grid.DZ, {10, 30});
    setCells(grid.TOPS, {1000, 1040});
    buildBlockGrid(grid, CubicFeetPerBarrel);
    EXPECT_EQ(cornerOf(grid, 1, 6)[2], 1010.0F);
    EXPECT_EQ(cornerOf(grid, 2, 5)[2], 1070.0F);
    EXPECT_EQ(grid.NodeZ[nodeIndex(grid, 2, 1, 1)], 1040.0);
}

TEST(BlockGrid, CountsCubicFeetUnderMetric) {
    const UnitSystem units = metricUnits();
    GridModel grid = rockOnly(1, 1, 1);
    grid.DX[1] = grid.DY[1] = 100.0 * units.length;
    grid.DZ[1] = 10.0 * units.length;
    grid.TOPS[1] = 1000.0;
    buildBlockGrid(grid, units.VolumeFactor);
    EXPECT_NEAR(grid.BulkVolume[1], 3531467.011, 1e-3);
}

std::string scratchFile() {
    return testing::TempDir() + "block_grid_test_" + std::to_string(getpid());
}

/// The numbers of the keyword up to its slash.
std::vector<float> valuesOf(const std::string& text, const std::string& keyword) {
    std::istringstream in(text.substr(text.find(keyword) + keyword.size()));
    std::vector<float> values;
    std::string word;
    while (in >> word && word != "/") values.push_back(std::stof(word));
    return values;
}

TEST(CornerPointDeck, ReadBackGivesTheSameCorners) {
    GridModel grid = rockOnly(3, 2, 2);
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        const int i = grid.CellI[cell];
        grid.DX[cell] = 100.1 + i;
        grid.DY[cell] = 33.3;
        grid.DZ[cell] = 7.7 + cell;
        grid.TOPS[cell] = 1000.3 + 11.7 * i;
    }
    grid.Active[5] = 0;
    fillTopsBelow(grid);
    buildBlockGrid(grid, CubicFeetPerBarrel);
    const std::string path = scratchFile();
    ASSERT_EQ(writeCornerPointDeck(grid, 1.0, path), 0);

    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    GridModel copy = rockOnly(3, 2, 2);
    copy.COORD = valuesOf(text.str(), "COORD");
    copy.ZCORN = valuesOf(text.str(), "ZCORN");
    ASSERT_EQ(copy.COORD.size(), 72U);
    ASSERT_EQ(copy.ZCORN.size(), 96U);
    CALC_RESERVOIR_COORDINATE_FRMCOORD(copy, CubicFeetPerBarrel);
    for (std::size_t n = 24; n < grid.xyz_3d.size(); ++n) EXPECT_EQ(copy.xyz_3d[n], grid.xyz_3d[n]) << n;
    const std::vector<float> activity = valuesOf(text.str(), "ACTNUM");
    ASSERT_EQ(activity.size(), 12U);
    EXPECT_EQ(activity[4], 0.0F);
    EXPECT_EQ(activity[5], 1.0F);
    std::remove(path.c_str());
}

TEST(CornerPointDeck, HoldsThisGridWhereColumnsJoin) {
    EXPECT_EQ(unjoinedPillars(uniformBlocks(3, 2, 2, 100.1, 33.3, 7.7)), 0);
}

TEST(CornerPointDeck, HoldsAnotherGridWhereColumnsOfBlocksDoNotJoin) {
    // The second row of cells is wider along x: its columns leave the pillars of the first row behind i = 1.
    GridModel grid = rockOnly(2, 2, 1);
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        grid.DX[cell] = grid.CellJ[cell] == 1 ? 100.0 : 120.0;
        grid.DY[cell] = 50.0;
        grid.DZ[cell] = 10.0;
        grid.TOPS[cell] = 1000.0;
    }
    buildBlockGrid(grid, CubicFeetPerBarrel);
    EXPECT_EQ(unjoinedPillars(grid), 2);
}

TEST(CornerPointDeck, HasNoMoreThanSixValuesALine) {
    const GridModel grid = uniformBlocks(3, 2, 1, 100, 50, 10);
    const std::string path = scratchFile();
    ASSERT_EQ(writeCornerPointDeck(grid, 1.0, path), 0);
    std::ifstream in(path);
    for (std::string line; std::getline(in, line);) {
        std::istringstream words(line);
        int count = 0;
        for (std::string word; words >> word;) ++count;
        EXPECT_LE(count, 6);
    }
    std::remove(path.c_str());
}

TEST(CornerPointDeck, ThatCannotBeOpenedReportsTheSystemsError) {
    const GridModel grid = uniformBlocks(1, 1, 1, 1, 1, 1);
    EXPECT_NE(writeCornerPointDeck(grid, 1.0, "/nowhere/at/all"), 0);
}

}  // namespace
}  // namespace kvr
