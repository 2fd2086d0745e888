#include "matching/well_match.hpp"

#include "matching/travel_time_shift.hpp"
#include "unit/quiet_console.hpp"

#include <gtest/gtest.h>

using namespace kvr;

namespace {

WellSeries seriesOf(const std::vector<double>& time, const std::vector<double>& cut,
                    const std::vector<double>& pressure) {
    WellSeries series;
    series.name = "P1";
    series.time = time;
    series.cut = cut;
    series.pressure = pressure;
    series.oil = series.water = series.gas = series.gasOilRatio = std::vector<double>(time.size(), 0.0);
    return series;
}

const std::vector<double> Observed{3000.0, 2900.0, 2800.0}, Calculated{3050.0, 2920.0, 2830.0};
const std::vector<double> Times{100.0, 200.0, 400.0};

bool says(const std::string& text, const std::string& line) {
    return text.find(line + "\n") != std::string::npos;
}

}  // namespace

TEST(PressureMisfit, IsTheMeanOfObservedMinusCalculated) {
    EXPECT_NEAR(meanPressureDifference(Observed, Calculated), -33.33333333333333, 1e-12);
    EXPECT_EQ(meanPressureDifference({}, {}), 0.0);
}

TEST(PressureMisfit, LeavesOutPressuresThatWereNotMeasured) {
    const std::vector<double> gaps{3000.0, 0.0, 2800.0};
    EXPECT_NEAR(meanPressureDifference(gaps, Calculated), -40.0, 1e-12);
    EXPECT_EQ(meanPressureDifference(std::vector<double>(3, 0.0), Calculated), 0.0);
}

TEST(PressureMisfit, UnderAWeightCountsLateTimesOnly) {
    EXPECT_NEAR(latePressureDifference(Times, Observed, Calculated, 0.0), -33.33333333333333, 1e-12);
    EXPECT_NEAR(latePressureDifference(Times, Observed, Calculated, 0.25), -25.0, 1e-12)
        << "25 % is not above";
    EXPECT_NEAR(latePressureDifference(Times, Observed, Calculated, 0.5), -30.0, 1e-12);
    EXPECT_EQ(latePressureDifference(Times, Observed, Calculated, 1.0), 0.0);
    EXPECT_EQ(latePressureDifference({}, {}, {}, 0.5), 0.0);
    const std::vector<double> unsorted{400.0, 100.0, 200.0};
    EXPECT_NEAR(latePressureDifference(unsorted, Observed, Calculated, 0.4), -40.0, 1e-12);
}

TEST(BeyondCriterion, SmallMisfitsCountAsMatched) {
    EXPECT_EQ(beyondCriterion(9.9, 10.0), 0.0);
    EXPECT_EQ(beyondCriterion(-9.9, 10.0), 0.0);
    EXPECT_EQ(beyondCriterion(-10.0, 10.0), -10.0);
}

TEST(MeasureMisfit, TellsSumShiftAndPressuresOfAWell) {
    const QuietConsole quiet;
    MisfitSettings settings;
    settings.weightBhp = 0.5;
    settings.criterionWct = 1.0;
    const std::vector<double> times{0, 1, 2, 3, 4};
    WellMatch well;
    well.name = "P1";
    well.obs = seriesOf(times, {0, 0, 0, 0.5, 1}, {3000, 3000, 3000, 2900, 2800});
    well.cal = seriesOf(times, {0, 0.5, 1, 1, 1}, {3000, 3000, 3030, 2920, 2830});
    measureMisfit(quiet.console, settings, false, well);
    EXPECT_NEAR(well.shift, 2.0, 1e-12);
    EXPECT_NEAR(well.misfit_bhp, -25.0, 1e-12);
    const std::string text = quiet.screenText();
    EXPECT_TRUE(says(text, " Sum(Abs( Obs - cal )) : 2 Wel: P1")) << text;
    EXPECT_TRUE(says(text, " GTTI misfit : 2 Wel: P1")) << text;
    EXPECT_TRUE(says(text, " WBHP misfit : -16 Wel: P1")) << text;
    EXPECT_TRUE(says(text, " Adjusted WBHP misfit after Weight: -25")) << text;
}

TEST(MeasureMisfit, AWellUnderPressureControlHasNoPressureMisfit) {
    const QuietConsole quiet;
    MisfitSettings settings;
    settings.weightBhp = 0.0;
    WellMatch well;
    well.obs = seriesOf(Times, {0.0, 0.0, 1.0}, Observed);
    well.cal = seriesOf(Times, {0.0, 0.0, 1.0}, Calculated);
    measureMisfit(quiet.console, settings, true, well);
    EXPECT_EQ(well.misfit_bhp, 0.0);
    measureMisfit(quiet.console, settings, false, well);
    EXPECT_NEAR(well.misfit_bhp, -33.33333333333333, 1e-12);
}

TEST(MeasureMisfit, TakesTheQuantityThatTheRunHas) {
    RunOptions options;
    EXPECT_EQ(misfitSettings(options).quantity, MatchedQuantity::GasOilRatio);
    options.hasWater = true;
    EXPECT_EQ(misfitSettings(options).quantity, MatchedQuantity::Cut);
    options.componentCount = 3;
    EXPECT_EQ(misfitSettings(options).quantity, MatchedQuantity::Fraction);
    options.sensitivityTimeWeightBhp = 7.0;
    EXPECT_EQ(misfitSettings(options).weightBhp, 1.0);

    const QuietConsole quiet;
    MisfitSettings settings;
    settings.quantity = MatchedQuantity::Fraction;
    settings.component = 2;
    settings.criterionWct = 0.0;
    const std::vector<double> times{0, 1, 2, 3, 4};
    WellMatch well;
    well.obs = seriesOf(times, std::vector<double>(5, 0.0), std::vector<double>(5, 0.0));
    well.cal = well.obs;
    well.obs.fractions = {{0, 0, 0, 0, 0}, {0, 0, 0, 0.5, 1}};
    well.cal.fractions = {{0, 0, 0, 0, 0}, {0, 0.5, 1, 1, 1}};
    measureMisfit(quiet.console, settings, false, well);
    EXPECT_NEAR(well.shift, 2.0, 1e-12);
}

TEST(AlignSeries, BringsTheCalculatedCurveToTheObservedTimes) {
    const QuietConsole quiet;
    const WellSeries observed = seriesOf({10, 40, 80}, {0.1, 0.2, 0.3}, {1, 2, 3});
    const WellSeries calculated = seriesOf({0, 20, 60, 100}, {0.0, 0.2, 0.6, 0.6}, {100, 200, 400, 500});
    const WellMatch well = alignSeries(quiet.console, observed, calculated);
    EXPECT_EQ(well.obs.time, (std::vector<double>{10, 40, 80}));
    EXPECT_EQ(well.cal.time, well.obs.time);
    ASSERT_EQ(well.cal.count(), 3u);
    EXPECT_DOUBLE_EQ(well.cal.cut[0], 0.1);
    EXPECT_DOUBLE_EQ(well.cal.cut[1], 0.4);
    EXPECT_DOUBLE_EQ(well.cal.cut[2], 0.6);
    EXPECT_DOUBLE_EQ(well.cal.pressure[2], 450.0);
    EXPECT_EQ(quiet.screenText(), "");
}

TEST(AlignSeries, LeavesOutWhatTheRunDoesNotReachAndSaysSo) {
    const QuietConsole quiet;
    const WellSeries observed = seriesOf({10, 40, 80}, {0.1, 0.2, 0.3}, {1, 2, 3});
    const WellMatch well = alignSeries(quiet.console, observed, seriesOf({20, 50}, {0.5, 0.6}, {200, 300}));
    EXPECT_EQ(well.obs.time, (std::vector<double>{40}));
    EXPECT_EQ(well.obs.cut, (std::vector<double>{0.2}));
    EXPECT_TRUE(says(quiet.screenText(),
                     "WARNING :: Well P1: 2 of 3 observed points are at times that the run does not reach"));
}

TEST(AlignSeries, WellsWithoutDataOrWithOnePointAreToldAndNotMatched) {
    const QuietConsole quiet;
    const WellSeries run = seriesOf({20, 50}, {0.5, 0.6}, {200, 300});
    MisfitSettings settings;
    settings.criterionWct = settings.criterionBhp = settings.weightBhp = 0.0;
    for (const WellSeries& observed : {seriesOf({}, {}, {}), seriesOf({30}, {0.9}, {900})}) {
        WellMatch well = alignSeries(quiet.console, observed, run);
        measureMisfit(quiet.console, settings, false, well);
        EXPECT_EQ(well.shift, 0.0);
        EXPECT_EQ(well.misfit_bhp, 0.0);
        EXPECT_TRUE(says(
            quiet.screenText(),
            fmt::format("WARNING :: Well P1 has {} observed points and is not matched", observed.count())));
    }
    const WellMatch none = alignSeries(quiet.console, run, seriesOf({}, {}, {}));
    EXPECT_EQ(none.obs.count(), 0u) << "a well that the run does not have";
}
