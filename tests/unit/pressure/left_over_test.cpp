#include "pressure/left_over.hpp"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace kvr {
namespace {

/// Two cells of 100 and 50 pore volumes whose equations ask for 3 and -1 a day.
struct TwoRows {
    GridModel grid;
    CellState state;
    WellRecord wells;
    PressureMatrix matrix;

    TwoRows() {
        grid.NCELLS = 2;
        grid.Active.assign(2, 1);
        state.PoreVolume.assign(2, 100.0);
        state.PoreVolume[2] = 50.0;
        matrix.MatRhs.assign(2, 3.0);
        matrix.MatRhs[2] = -1.0;
        matrix.storage = 4.0;
    }
    [[nodiscard]] LeftOver over(double days) const {
        return measureLeftOver(days, grid, state, wells, matrix);
    }
};

TEST(MeasureLeftOver, TakesVolumesByCellAndInAllAndTheirSignedSumAsAPressure) {
    const LeftOver left = TwoRows().over(2.0);
    EXPECT_NEAR(left.field, 8.0 / 150.0, 1e-15) << "one side does not pay for the other";
    EXPECT_NEAR(left.cell, 0.06, 1e-15);
    EXPECT_NEAR(left.pressure, 0.5, 1e-15) << "2 a day over 4 a day per psi";
    EXPECT_EQ(left.rate, 0.0);
}

TEST(MeasureLeftOver, JudgesACellOfNextToNoPoresByAMillionthOfTheMean) {
    TwoRows rows;
    rows.state.PoreVolume[2] = 1e-12;
    EXPECT_NEAR(rows.over(1e-6).cell, 1e-6 / 50e-6, 1e-9) << "1e-6 of its own, where the mean is 50";
}

TEST(MeasureLeftOver, LeavesInactiveCellsOut) {
    TwoRows rows;
    rows.grid.Active[1] = 0;
    const LeftOver left = rows.over(2.0);
    EXPECT_NEAR(left.field, 0.04, 1e-15);
    EXPECT_NEAR(left.pressure, 0.25, 1e-15);
}

TEST(MeasureLeftOver, TakesWhatARateWellStillAsksOfWhatItsConnectionsLetBy) {
    TwoRows rows;
    rows.wells.wells.resize(1);
    rows.wells.wells[0].reservoirRate = -20.0;
    WellRow row;
    row.row = 2;
    rows.matrix.wellRows.push_back(row);
    rows.matrix.system.rhs = {0.0, 0.0, 0.5};
    EXPECT_NEAR(rows.over(1.0).rate, 0.025, 1e-15);
}

TEST(SettleRateWells, MovesBottomHolePressuresByWhatTheirRowsAskFor) {
    TwoRows rows;
    rows.wells.wells.resize(1);
    rows.wells.wells[0].Bhp = 2000.0;
    WellRow row;
    row.row = 2;
    rows.matrix.wellRows.push_back(row);
    rows.matrix.system.rowStart = {0, 1, 2, 3};
    rows.matrix.system.value = {1.0, 1.0, 4.0};
    rows.matrix.system.rhs = {0.0, 0.0, -6.0};
    settleRateWells(rows.matrix, rows.wells);
    EXPECT_EQ(rows.wells.wells[0].Bhp, 1998.5);
}

TEST(ShareOfHandedOn, AllowsATenthOfTheLimitsOfAStepAndAFiftiethInRunsWithGas) {
    RunOptions options;
    options.PressureTolerance = 0.01;
    options.stepVolumeError = options.stepCellVolumeError = options.stepTargetError = 0.1;
    struct Row {
        double LeftOver::*figure;
        double most, mostWithGas;
    };
    const Row rows[] = {{&LeftOver::field, 0.01, 0.002},
                        {&LeftOver::cell, 0.01, 0.002},
                        {&LeftOver::rate, 0.01, 0.002},
                        {&LeftOver::pressure, 0.1, 0.1}};
    for (const Row& row : rows)
        for (const bool gas : {false, true}) {
            options.hasGas = gas;
            const double most = gas ? row.mostWithGas : row.most;
            LeftOver left;
            left.*row.figure = 0.99 * most;
            EXPECT_LE(shareOfHandedOn(options, left), 1.0);
            left.*row.figure = 1.01 * most;
            EXPECT_GT(shareOfHandedOn(options, left), 1.0);
        }
}

TEST(ShareOfHandedOn, IsWithoutBoundWhereAnythingIsNoNumber) {
    RunOptions options;
    options.PressureTolerance = 0.01;
    for (double LeftOver::*figure : {&LeftOver::field, &LeftOver::cell, &LeftOver::pressure, &LeftOver::rate})
        for (const double bad : {std::numeric_limits<double>::quiet_NaN(), HUGE_VAL}) {
            LeftOver left;
            left.*figure = bad;
            EXPECT_EQ(shareOfHandedOn(options, left), HUGE_VAL);
        }
    EXPECT_EQ(shareOfHandedOn(options, {}), 0.0);
}

}  // namespace
}  // namespace kvr
