#include "pressure/wells/well_index.hpp"

#include "base/constants.hpp"
#include "pressure/wells/well_controls.hpp"
#include "unit/pressure/well_samples.hpp"

#include <cmath>
#include <gtest/gtest.h>

namespace kvr {
namespace {

constexpr double Relative = 1e-8;

void expectNear(double value, double expected) {
    EXPECT_NEAR(value, expected, std::abs(expected) * Relative);
}

TEST(WellIndexConstant, IsTwoPiTimesTheDarcyConstantToTheLastBit) {
    EXPECT_EQ(2.0 * 3.14159265358979323846 * DarcyConstant, WellIndexConstant);
}

TEST(WellIndex, OfASquareIsotropicBlock) {
    const CompletionGeometry cell{500.0, 500.0, 1000.0, 1000.0, 20.0};
    EXPECT_NEAR(equivalentRadius(cell), 197.989899, 1e-6);
    expectNear(wellIndex(cell, 0.25, 0.0), 10.61592612);
}

TEST(WellIndex, OfAnAnisotropicBlockWithSkin) {
    const CompletionGeometry cell{100.0, 400.0, 200.0, 100.0, 30.0};
    expectNear(equivalentRadius(cell), 38.48231917);
    expectNear(equivalentPermeability(cell), 200.0);
    expectNear(wellIndex(cell, 0.25, 2.0), 6.041882494);
}

TEST(EquivalentRadius, IsTheDiagonalTimesAConstantWhereBothPermeabilitiesAreAlike) {
    const CompletionGeometry cell{70.0, 70.0, 300.0, 400.0, 10.0};
    expectNear(equivalentRadius(cell), 0.14 * 500.0);
}

TEST(WellIndex, IsZeroWithoutPermeability) {
    const CompletionGeometry cell{0.0, 100.0, 200.0, 100.0, 30.0};
    EXPECT_EQ(equivalentRadius(cell), 1.0);
    EXPECT_EQ(wellIndex(cell, 0.25, 0.0), 0.0);
    EXPECT_EQ(wellIndex(cell, 1.0, 0.0), 0.0) << "a bore of the fall-back radius divides 0 by 0 otherwise";
}

TEST(WellIndex, IsZeroWhereTheBoreIsWiderThanTheBlock) {
    const CompletionGeometry cell{100.0, 100.0, 1.0, 1.0, 30.0};
    EXPECT_EQ(wellIndex(cell, 1.0, 0.0), 0.0);
    EXPECT_GT(wellIndex(cell, 1.0, 5.0), 0.0) << "skin gives the resistance back";
}

/// Permeabilities 1, 2, 3 md, 10 by 20 by 30 ft.
GridModel unevenCell() {
    GridModel grid = sample::column(1);
    grid.PERMX[1] = 1.0;
    grid.PERMY[1] = 2.0;
    grid.PERMZ[1] = 3.0;
    grid.DX[1] = 10.0;
    grid.DY[1] = 20.0;
    grid.DZ[1] = 30.0;
    return grid;
}

TEST(CompletionGeometry, TurnsTheBlockAlongTheBore) {
    const GridModel grid = unevenCell();
    const CompletionGeometry x = completionGeometry(grid, 1, 'X');
    EXPECT_EQ(x.kx, 2.0);
    EXPECT_EQ(x.ky, 3.0);
    EXPECT_EQ(x.Dx, 20.0);
    EXPECT_EQ(x.Dy, 30.0);
    EXPECT_EQ(x.h, 10.0);
    const CompletionGeometry y = completionGeometry(grid, 1, 'Y');
    EXPECT_EQ(y.kx, 1.0);
    EXPECT_EQ(y.ky, 3.0);
    EXPECT_EQ(y.h, 20.0);
    EXPECT_EQ(completionGeometry(grid, 1, 'Z').h, 30.0);
}

TEST(CompletionGeometry, CountsNetThickness) {
    GridModel grid = unevenCell();
    grid.NTG.assign(1, 0.4);
    EXPECT_DOUBLE_EQ(completionGeometry(grid, 1, 'Z').h, 12.0) << "along a vertical bore";
    EXPECT_DOUBLE_EQ(completionGeometry(grid, 1, 'X').Dy, 12.0) << "across a level one";
    EXPECT_DOUBLE_EQ(completionGeometry(grid, 1, 'X').h, 10.0);
}

TEST(WellIndex, TakesAGivenPermeabilityThicknessInPlaceOfTheCells) {
    const CompletionGeometry cell = completionGeometry(unevenCell(), 1, 'Z');
    const double own = equivalentPermeability(cell) * cell.h;
    EXPECT_NEAR(wellIndex(cell, 0.25, 0.0, 3.0 * own), 3.0 * wellIndex(cell, 0.25, 0.0), 1e-9);
    EXPECT_EQ(wellIndex(cell, 0.25, 0.0, 0.0), wellIndex(cell, 0.25, 0.0)) << "0 is not given";
}

TEST(WellIndex, FollowsThePermeabilityWhereNeitherItNorKhIsGiven) {
    WellConnection connection;
    EXPECT_TRUE(followsPermeability(connection));
    connection.givenKh = 100.0;
    EXPECT_FALSE(followsPermeability(connection));
    connection.givenKh = 0.0;
    connection.ConnFactor = 0.0;
    EXPECT_FALSE(followsPermeability(connection));
}

TEST(ConnectionIndex, TakesAGivenFactorAsItStands) {
    const GridModel grid = sample::column(1);
    WellConnection connection;
    connection.ConnCell = 1;
    connection.WellRadius = 0.25;
    connection.ConnFactor = 7.5;
    ConnectionIndex(grid, connection);
    EXPECT_EQ(connection.ConnWI, 7.5);
    connection.ConnFactor = 0.0;
    ConnectionIndex(grid, connection);
    EXPECT_EQ(connection.ConnWI, 0.0);
}

TEST(ConnectionIndex, IsMultipliedWhetherGivenOrComputed) {
    const GridModel grid = sample::column(1);
    WellConnection connection;
    connection.ConnCell = 1;
    connection.WellRadius = 0.25;
    ConnectionIndex(grid, connection);
    const double computed = connection.ConnWI;
    connection.multiplier = 0.1;
    ConnectionIndex(grid, connection);
    expectNear(connection.ConnWI, 0.1 * computed);
    connection.ConnFactor = 7.5;
    ConnectionIndex(grid, connection);
    expectNear(connection.ConnWI, 0.75);
}

TEST(ConnectionIndex, IsZeroInAnInactiveCell) {
    GridModel grid = sample::column(1);
    grid.Active[1] = 0;
    WellConnection connection;
    connection.ConnCell = 1;
    connection.WellRadius = 0.25;
    ConnectionIndex(grid, connection);
    EXPECT_EQ(connection.ConnWI, 0.0);
}

TEST(ComputeWellIndices, FollowsAChangeOfPermeability) {
    GridModel grid = sample::column(1);
    WellRecord wells;
    wells.wells.push_back(sample::well("prd", "bhp", 1));
    wells.wells[0].connections[0].WellRadius = 0.25;
    computeWellIndices(grid, wells);
    const double before = wells.wells[0].connections[0].ConnWI;
    grid.PERMX[1] = grid.PERMY[1] = 1000.0;
    computeWellIndices(grid, wells);
    expectNear(wells.wells[0].connections[0].ConnWI, 2.0 * before);
}

}  // namespace
}  // namespace kvr
