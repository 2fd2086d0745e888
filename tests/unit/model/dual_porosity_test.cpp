#include "model/dual_porosity.hpp"

#include "model/conditioning.hpp"
#include "unit/model/small_grids.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

/// Blocks of 100 x 50 x 20 ft in so many layers of matrix and as many of fractures.
GridModel pairs(int nx, int ny, int layers) {
    GridModel grid = uniformBlocks(nx, ny, 2 * layers, 100.0, 50.0, 20.0);
    grid.dual.isSet = true;
    shareGeometry(grid);
    return grid;
}

ConnectionTable connected(GridModel& grid) {
    ConnectionTable connections;
    RunOptions options;
    options.useNewtran = false;
    CALCTRANS_STATICGEOPART(Console{nullptr, nullptr, nullptr}, options, UnitSystem{}, grid, connections);
    return connections;
}

}  // namespace

TEST(DualPorosity, PairsTheCellsOfTheUpperHalfWithThoseOfTheLowerOne) {
    const GridModel grid = pairs(3, 2, 2);
    EXPECT_EQ(matrixCells(grid), 12);
    EXPECT_TRUE(isMatrixCell(grid, 12));
    EXPECT_FALSE(isMatrixCell(grid, 13));
    for (CellId cell = 1; cell <= 12; ++cell) {
        EXPECT_EQ(partnerOf(grid, cell), cell + 12);
        EXPECT_EQ(partnerOf(grid, cell + 12), cell);
    }
}

TEST(DualPorosity, HasNoMatrixCellsInAGridOfOneContinuum) {
    const GridModel grid = uniformBlocks(2, 1, 2, 10.0, 10.0, 10.0);
    EXPECT_EQ(matrixCells(grid), 0);
    EXPECT_FALSE(isMatrixCell(grid, 1));
}

TEST(DualPorosity, PutsFracturesWhereTheirMatrixIs) {
    const GridModel grid = pairs(2, 2, 2);
    for (CellId cell = 1; cell <= 8; ++cell) {
        for (int axis = 1; axis <= 3; ++axis)
            EXPECT_DOUBLE_EQ(grid.CellCentre(cell + 8, axis), grid.CellCentre(cell, axis));
        EXPECT_DOUBLE_EQ(grid.BulkVolume[cell + 8], grid.BulkVolume[cell]);
        for (int corner = 1; corner <= 8; ++corner)
            EXPECT_FLOAT_EQ(cornerOf(grid, cell + 8, corner)[2], cornerOf(grid, cell, corner)[2]);
    }
    EXPECT_DOUBLE_EQ(grid.CellCentre(5, 3), 1030.0);
}

TEST(DualPorosity, LeavesAMatrixCellItsFractureAlone) {
    GridModel grid = pairs(3, 1, 2);
    grid.dual.SIGMA.assign(grid.NCELLS, 0.1);
    const ConnectionTable connections = connected(grid);
    ASSERT_EQ(connections.NDIR, TransferDirection);
    for (CellId cell = 1; cell <= 6; ++cell) {
        for (int face = 1; face <= FaceCount; ++face) EXPECT_EQ(connections.Neighbour(cell, face), 0);
        EXPECT_EQ(connections.Neighbour(cell, TransferDirection), cell + 6);
        EXPECT_EQ(connections.Neighbour(cell + 6, TransferDirection), cell);
    }
}

TEST(DualPorosity, ConnectsFracturesAmongThemselvesOnly) {
    GridModel grid = pairs(3, 1, 2);
    const ConnectionTable connections = connected(grid);
    EXPECT_EQ(connections.Neighbour(8, 1), 7);
    EXPECT_EQ(connections.Neighbour(8, 2), 9);
    EXPECT_EQ(connections.Neighbour(8, 5), 0);  // the cell of that number above is matrix
    EXPECT_EQ(connections.Neighbour(8, 6), 11);
    EXPECT_EQ(connections.Neighbour(11, 5), 8);
}

TEST(DualPorosity, TransfersBySigmaPermeabilityAndVolume) {
    GridModel grid = pairs(2, 1, 1);
    grid.dual.SIGMA.assign(grid.NCELLS, 0.08);
    grid.PERMX[1] = 2.0;
    grid.PERMX[2] = 5.0;
    const ConnectionTable connections = connected(grid);
    // sigma 0.00112771 k V with V = 100 * 50 * 20 ft3
    EXPECT_NEAR(connections.Trans(1, TransferDirection), 0.08 * 0.00112771 * 2.0 * 1e5, 1e-10);
    EXPECT_NEAR(connections.Trans(2, TransferDirection), 0.08 * 0.00112771 * 5.0 * 1e5, 1e-10);
    for (CellId cell = 1; cell <= 2; ++cell)
        EXPECT_DOUBLE_EQ(connections.Trans(cell + 2, TransferDirection),
                         connections.Trans(cell, TransferDirection));
}

TEST(DualPorosity, DoesNotConnectAnInactiveHalf) {
    GridModel grid = pairs(2, 1, 1);
    grid.dual.SIGMA.assign(grid.NCELLS, 0.08);
    grid.Active[1] = 0;
    grid.Active[4] = 0;
    const ConnectionTable connections = connected(grid);
    for (CellId cell = 1; cell <= 4; ++cell) {
        EXPECT_EQ(connections.Neighbour(cell, TransferDirection), 0);
        EXPECT_EQ(connections.Trans(cell, TransferDirection), 0.0);
    }
}

TEST(DualPorosity, FillsOnlyWhatTheFracturesLack) {
    GridModel grid = pairs(2, 1, 1);
    setCells(grid.PORO, {0.2, 0.3, 0.0, 0.0});
    setCells(grid.PERMX, {1.0, 2.0, 0.0, 500.0});
    setCells(grid.NTG, {0.5, 0.6, 1.0, 1.0});
    fillFracturesFromMatrix(grid);
    EXPECT_DOUBLE_EQ(grid.PORO[3], 0.2);
    EXPECT_DOUBLE_EQ(grid.PORO[4], 0.3);
    EXPECT_DOUBLE_EQ(grid.PERMX[3], 0.0);
    EXPECT_DOUBLE_EQ(grid.PERMX[4], 500.0);
    EXPECT_DOUBLE_EQ(grid.NTG[4], 0.6);
}

TEST(DualPorosity, MakesThePermeabilityOfFracturesThatOfTheBulk) {
    GridModel grid = pairs(1, 1, 1);
    setCells(grid.PORO, {0.2, 0.01});
    setCells(grid.PERMX, {1.0, 5000.0});
    makeFracturePermeabilityEffective(grid);
    EXPECT_DOUBLE_EQ(grid.PERMX[1], 1.0);
    EXPECT_DOUBLE_EQ(grid.PERMX[2], 50.0);
}

TEST(DualPorosity, GivesTheGeometryOfOneHalfAsAWholeGrid) {
    const GridModel grid = pairs(2, 1, 2);
    const GridModel half = geometryOf(grid);
    const GridModel alone = uniformBlocks(2, 1, 2, 100.0, 50.0, 20.0);
    EXPECT_EQ(half.NZ, 2);
    EXPECT_EQ(half.NCELLS, 4);
    EXPECT_EQ(half.NodeX, alone.NodeX);
    EXPECT_EQ(half.NodeY, alone.NodeY);
    EXPECT_EQ(half.NodeZ, alone.NodeZ);
    EXPECT_EQ(half.xyz_3d, alone.xyz_3d);
}

}  // namespace kvr
