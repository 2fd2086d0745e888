#include "report/region_balance.hpp"

#include "pressure/properties.hpp"
#include "report/material_balance.hpp"
#include "unit/report/report_run.hpp"

#include <gtest/gtest.h>
#include <sstream>

namespace kvr {
namespace {

/// Four cells of 100, 200, 300 and 400 volumes in regions 1, 2, 1, 3; the last one takes no part.
struct FourCells {
    GridModel grid;
    CellState state;
    CellAmounts carried;

    FourCells() {
        grid.NCELLS = 4;
        grid.Active.assign(4, 1);
        grid.Active[4] = 0;
        grid.FIPNUM.assign(4, 1);
        grid.FIPNUM[2] = 2;
        grid.FIPNUM[4] = 3;
        allocateCellState(4, 0, state);
        for (CellId cell = 1; cell <= 4; ++cell) {
            state.PoreVolume[cell] = 100.0 * cell;
            state.Pressure[cell] = 1000.0 * cell;
            state.Sw[cell] = 0.2;
            state.So[cell] = 0.5;
            state.Sg[cell] = 0.3;
            state.Bw[cell] = 1.0;
            state.Bo[cell] = 1.25;
            state.Bg[cell] = 0.01;
            state.Rs[cell] = 100.0;
        }
    }
};

TEST(RegionBalance, SumsWhatStandsInTheCellsOfARegion) {
    const FourCells four;
    const std::vector<RegionInPlace> regions = sumRegions(four.grid, four.state, four.carried, true);
    ASSERT_EQ(regions.size(), 3U);
    // Region 1: 100 and 300 volumes; oil 400 * 0.5 / 1.25, gas free 400 * 0.3 / 0.01 and in the oil 160 *
    // 100.
    const InPlaceSums& first = regions[0].sums;
    EXPECT_DOUBLE_EQ(first.poreVolume, 400.0);
    EXPECT_DOUBLE_EQ(first.oil, 160.0);
    EXPECT_DOUBLE_EQ(first.water, 80.0);
    EXPECT_DOUBLE_EQ(first.freeGas, 12000.0);
    EXPECT_DOUBLE_EQ(first.dissolvedGas, 16000.0);
    EXPECT_DOUBLE_EQ(first.oilPore, 200.0);
    EXPECT_DOUBLE_EQ(meanOf(regions[0].pressure), (100.0 * 1000.0 + 300.0 * 3000.0) / 400.0);
    EXPECT_DOUBLE_EQ(regions[1].sums.oil, 80.0);
    EXPECT_DOUBLE_EQ(meanOf(regions[1].pressure), 2000.0);
    EXPECT_EQ(regions[2].sums.poreVolume, 0.0) << "its only cell takes no part";
    EXPECT_EQ(meanOf(regions[2].pressure), 0.0);
}

TEST(RegionBalance, CountsWhatCellsHoldBeyondTheirSaturations) {
    FourCells four;
    sizeAmounts(4, four.carried);
    four.carried.oil[3] = 5.0;
    four.carried.water[2] = -2.0;
    four.carried.gas[1] = 7.0;
    const std::vector<RegionInPlace> regions = sumRegions(four.grid, four.state, four.carried, true);
    EXPECT_DOUBLE_EQ(regions[0].sums.oil, 165.0);
    EXPECT_DOUBLE_EQ(regions[0].sums.freeGas, 12007.0);
    EXPECT_DOUBLE_EQ(regions[1].sums.water, 38.0);
}

TEST(RegionBalance, CountsFromTheCellsOfARestartAndKeepsItsRows) {
    const FourCells four;
    Simulation run;
    run.console = Console{nullptr, nullptr, nullptr};
    run.grid = four.grid;
    run.state = four.state;
    run.balance.firstOfRegion = regionAmounts(run);
    for (CellId cell = 1; cell <= 4; ++cell) run.state.So[cell] = 0.25;
    RESET_INITIAL_INPLACE(run);
    ASSERT_EQ(run.balance.firstOfRegion.size(), 3U);  // the rows of the table go on behind those of time zero
    EXPECT_DOUBLE_EQ(run.balance.firstOfRegion[0].oil, 80.0);
    EXPECT_TRUE(run.balance.started);
}

TEST(RegionBalance, HasNoGasWithoutAGasPhaseAndNothingWithoutRegions) {
    FourCells four;
    EXPECT_EQ(sumRegions(four.grid, four.state, four.carried, false)[0].sums.freeGas, 0.0);
    four.grid.FIPNUM = {};
    EXPECT_TRUE(sumRegions(four.grid, four.state, four.carried, true).empty());
}

TEST(RegionBalance, WritesARowPerRegionAndTheShareRecoveredSinceTheFirst) {
    ReportRun bench;
    Simulation& run = bench.run;
    run.units = fieldUnits();
    run.grid.FIPNUM.assign(run.grid.NCELLS, 1);
    run.grid.FIPNUM[1] = 2;
    for (double& value : run.state.PoreVolume.slots) value = 10.0;
    for (double& value : run.state.Bo.slots) value = 1.0;
    for (double& value : run.state.Bw.slots) value = 1.0;
    reportRegions(run);
    run.clock.time = 5.0;
    run.state.So[1] = 0.35;  // half of the oil of region 2 has gone
    reportRegions(run);
    std::istringstream table(bench.folder.read("KVR_Run_Regions.out"));
    std::string head;
    std::getline(table, head);
    std::vector<std::vector<double>> rows;
    for (std::string line; std::getline(table, line);) {
        std::istringstream words(line);
        rows.emplace_back(std::istream_iterator<double>(words), std::istream_iterator<double>());
    }
    // TIME REGION FPR PVT FOIP FWIP FGIP FOE
    ASSERT_EQ(rows.size(), 4U);
    EXPECT_EQ(rows[0][1], 1.0);
    EXPECT_NEAR(rows[0][4], 23 * 7.0, 1e-6);
    EXPECT_NEAR(rows[1][4], 7.0, 1e-6);
    EXPECT_EQ(rows[2][0], 5.0);
    EXPECT_EQ(rows[2][7], 0.0);
    EXPECT_NEAR(rows[3][4], 3.5, 1e-6);
    EXPECT_NEAR(rows[3][7], 0.5, 1e-6);
}

}  // namespace
}  // namespace kvr
