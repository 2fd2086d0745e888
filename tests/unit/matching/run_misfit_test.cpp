#include "matching/run_misfit.hpp"

#include <gtest/gtest.h>

using namespace kvr;

namespace {

RunMisfit runOf(double matched, double pressure) {
    RunMisfit run;
    run.wells.resize(2);
    run.wells[0].matched = matched;
    run.wells[1].pressure = -pressure;
    run.wells[0].shift = 30.0;
    run.wells[1].shift = -40.0;
    return run;
}

}  // namespace

TEST(SumOfMisfits, HoldsEachQuantityWithAndWithoutItsSign) {
    WellMatch well;
    well.obs.time = well.cal.time = {1.0, 2.0};
    for (WellSeries* series : {&well.obs, &well.cal})
        series->oil = series->water = series->gas = series->cut = series->gasOilRatio = {0.0, 0.0};
    well.obs.cut = {0.5, 0.25};
    well.cal.cut = {0.25, 0.75};
    well.obs.pressure = {3000.0, 0.0};
    well.cal.pressure = {3100.0, 2000.0};
    WellMisfit misfit;
    sumMisfits(well, 1, misfit);
    EXPECT_EQ(misfit.sum[quantity::Cut], -0.25);
    EXPECT_EQ(misfit.sumAbs[quantity::Cut], 0.75);
    EXPECT_EQ(misfit.sum[quantity::Pressure], -100.0) << "a pressure of 0 was not measured";
    EXPECT_EQ(misfit.sumAbs[quantity::Oil], 0.0);
}

TEST(JudgedMisfit, IsTheWeightedShareOfTheFirstRun) {
    RunMisfit first = runOf(10.0, 200.0);
    totalMisfits({0.5, 0.5}, {}, first);
    EXPECT_EQ(first.judged, 1.0);
    EXPECT_NEAR(first.shiftRms, 35.35533905932738, 1e-12);
    RunMisfit second = runOf(5.0, 20.0);
    totalMisfits({0.5, 0.5}, {&first, 1}, second);
    second.wells[0].shift = 14.0;
    second.wells[1].shift = 0.0;
    totalMisfits({0.5, 0.5}, {&first, 1}, second);
    EXPECT_NEAR(second.judged, (0.5 * (0.5 + 0.2) / 2 + 0.5 * 0.1) / 1.0, 1e-15)
        << "5 of 10, 14 of 70, 20 of 200";
    totalMisfits({1.0, 0.25}, {&first, 1}, second);
    EXPECT_NEAR(second.judged, (0.35 + 0.025) / 1.25, 1e-15);
}

TEST(JudgedMisfit, LeavesOutShiftsWhereAllOfTheFirstRunAreWithinWhatCountsAsMatched) {
    RunMisfit first = runOf(10.0, 200.0), second = runOf(5.0, 20.0);
    totalMisfits({0.5, 0.5}, {}, first);
    second.wells[1].shift = 400.0;
    totalMisfits({0.5, 0.5, 41.0}, {&first, 1}, second);
    EXPECT_NEAR(second.judged, (0.25 * 0.5 + 0.5 * 0.1) / 0.75, 1e-15) << "30 and 40 days are less than 41";
    totalMisfits({0.5, 0.5, 40.0}, {&first, 1}, second);
    EXPECT_GT(second.judged, 1.0) << "40 days are not";
}

TEST(JudgedMisfit, LeavesOutAKindThatTheFirstRunMatches) {
    RunMisfit first = runOf(10.0, 0.0);
    totalMisfits({0.5, 0.5}, {}, first);
    RunMisfit second = runOf(4.0, 3.0);
    totalMisfits({0.5, 0.5}, {&first, 1}, second);
    EXPECT_NEAR(second.judged, (0.4 + 1.0) / 2, 1e-15) << "the shifts are those of the first run";
    RunMisfit perfect = runOf(0.0, 0.0);
    perfect.wells[0].shift = perfect.wells[1].shift = 0.0;
    totalMisfits({0.5, 0.5}, {}, perfect);
    EXPECT_EQ(perfect.judged, 0.0);
}
