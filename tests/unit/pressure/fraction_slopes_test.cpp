#include "pressure/fraction_slopes.hpp"

#include "unit/fluid/table_samples.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

/// Of two cells of which one flows.
FractionSlopes slopesOf(const FluidTables& tables, double muW, double muO) {
    GridModel grid;
    grid.NCELLS = 2;
    grid.Active.assign(2, 1);
    grid.Active[2] = 0;
    grid.SATNUM.assign(2, 1);
    grid.SATNUM[2] = 2;
    CellState state;
    state.MuW.assign(2, muW);
    state.MuO.assign(2, muO);
    state.MuG.assign(2, 1.0);
    return fractionSlopes(grid, tables, state);
}

TEST(FractionSlopes, AreThoseOfALinearFraction) {
    // fw = Sw at equal viscosities; lw lo / (lw + lo) = Sw (1 - Sw), which rises by 1 - 2 Sw: steepest at the
    // outer end of each half's bins, by differences over 1/512.
    const FractionSlopes slopes = slopesOf(samples::sharesFlow(), 1.0, 1.0);
    EXPECT_NEAR(slopes.steepest, 1.0, 1e-9);
    ASSERT_EQ(slopes.regions.size(), 1U);
    const RegionSlopes& region = slopes.regions.front();
    EXPECT_NEAR(steepestBetween(region, 0.3, 0.6).flow, 1.0, 1e-9);
    EXPECT_NEAR(steepestBetween(region, 0.0, 1.0).exchange, 1.0, 1.0 / 512 + 1e-9);
    EXPECT_NEAR(steepestBetween(region, 0.25, 0.375).exchange, 0.5, 1.0 / 512 + 1e-9);
    EXPECT_NEAR(steepestBetween(region, 0.6, 0.4).exchange, 1.0 - 50.0 / 64, 1.0 / 512 + 1e-9)
        << "either way, whole bins";
}

TEST(FractionSlopes, AreSteepOnlyWhereTheCurvesAre) {
    // Rows at Sw 0.2, 0.4, 0.6, 0.8 at 0.5 and 2 cp; a script finds d fw/d Sw of 3.673 at most, at 0.4.
    FluidTables tables = samples::constantFluids();
    tables.regions.push_back(samples::fourRowRegion());
    finishTables(tables);
    const FractionSlopes slopes = slopesOf(tables, 0.5, 2.0);
    const RegionSlopes& region = slopes.regions.front();
    EXPECT_NEAR(steepestBetween(region, 0.2, 0.8).flow, 3.673, 0.05);
    EXPECT_EQ(steepestBetween(region, 0.39, 0.42).flow, steepestBetween(region, 0.2, 0.8).flow);
    EXPECT_LT(steepestBetween(region, 0.71, 1.0).flow, 1.0);
    EXPECT_GT(steepestBetween(region, 0.71, 1.0).flow, 0.0);
}

TEST(FractionSlopes, AreWorkedOutForRegionsOfCellsAlone) {
    FluidTables tables = samples::sharesFlow();
    tables.regions.push_back(samples::fourRowRegion());
    finishTables(tables);
    const FractionSlopes slopes = slopesOf(tables, 1.0, 1.0);
    EXPECT_NEAR(slopes.steepest, 1.0, 1e-9)
        << "the second region is steeper, and no cell that flows is in it";
    ASSERT_EQ(slopes.regions.size(), 2U);
    EXPECT_EQ(steepestBetween(slopes.regions[1], 0.0, 1.0).flow, 0.0);
}

TEST(FractionSlopes, LeaveTheSteepestBesideGas) {
    EXPECT_TRUE(slopesOf(samples::lightOil(), 0.5, 2.0).regions.empty());
}

}  // namespace
}  // namespace kvr
