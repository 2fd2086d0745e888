#include "matching/history_rows.hpp"

#include "unit/quiet_console.hpp"
#include "unit/scratch_folder.hpp"

#include <gtest/gtest.h>

using namespace kvr;

namespace {

const std::vector<double> StepEnds{10.0, 20.0, 30.0, 40.0};

WellMatch wellOf(const std::vector<double>& observed, const std::vector<double>& calculated) {
    WellMatch well;
    well.name = "P1";
    well.obs.time = well.cal.time = {10.0, 20.0, 35.0, 40.0};
    well.obs.cut = well.obs.pressure = observed;
    well.cal.cut = well.cal.pressure = calculated;
    return well;
}

HistoryParts cuts(std::size_t parts) {
    return {matchedCurve, parts, 0.0, false, 0.02, false};
}

}  // namespace

TEST(HistoryData, AreMeansOfThePartsWithTheStepsAroundTheirPoints) {
    const WellMatch well = wellOf({0.1, 0.3, 0.5, 0.8}, {0.0, 0.2, 0.2, 0.7});
    const std::vector<HistoryDatum> data = historyData({}, cuts(2), StepEnds, {&well, 1});
    ASSERT_EQ(data.size(), 2U);
    EXPECT_NEAR(data[0].misfit, 0.1, 1e-12);
    EXPECT_NEAR(data[1].misfit, 0.2, 1e-12);
    EXPECT_EQ(data[0].weights, (std::vector<double>{0.5, 0.5, 0.0, 0.0}));
    EXPECT_EQ(data[1].weights, (std::vector<double>{0.0, 0.0, 0.25, 0.75})) << "day 35 lies between reports";
    EXPECT_EQ(data[0].error, 0.02);
}

TEST(HistoryData, OfPressuresLeaveOutWhatWasNotMeasuredAndWhatIsTooEarly) {
    const WellMatch well = wellOf({2900.0, 0.0, 2800.0, 2700.0}, {3000.0, 2950.0, 2850.0, 0.0});
    HistoryParts parts{[](const MisfitSettings&, const WellSeries& series) -> const std::vector<double>& {
                           return series.pressure;
                       },
                       1,
                       0.0,
                       true,
                       10.0,
                       false};
    std::vector<HistoryDatum> data = historyData({}, parts, StepEnds, {&well, 1});
    ASSERT_EQ(data.size(), 1U);
    EXPECT_NEAR(data[0].misfit, 0.5 * (-100.0 - 50.0), 1e-12);
    parts.after = 0.5;
    data = historyData({}, parts, StepEnds, {&well, 1});
    ASSERT_EQ(data.size(), 1U);
    EXPECT_NEAR(data[0].misfit, -50.0, 1e-12);
}

TEST(HistoryData, WithRelativeErrorsGoByTheObservedMeanOfThePart) {
    const WellMatch well = wellOf({1.0, 1.0, 6.0, 10.0}, {1.0, 2.0, 3.0, 4.0});
    HistoryParts parts = cuts(2);
    parts.error = 0.05;
    parts.relative = true;
    const std::vector<HistoryDatum> data = historyData({}, parts, StepEnds, {&well, 1});
    ASSERT_EQ(data.size(), 2U);
    EXPECT_NEAR(data[0].error, 0.05, 1e-12);
    EXPECT_NEAR(data[1].error, 0.4, 1e-12);
}

TEST(HistoryData, OfAWellWithOnePointAreNone) {
    WellMatch well;
    well.obs.time = well.cal.time = {10.0};
    well.obs.cut = well.cal.cut = {0.5};
    EXPECT_TRUE(historyData({}, cuts(3), StepEnds, {&well, 1}).empty());
}

TEST(HistoryRows, AddTheStepsByTheirWeightsAndLeaveOutWhatNoCellChanges) {
    const QuietConsole quiet;
    const ScratchFolder folder;
    for (int step = 1; step <= 2; ++step)
        writeSensitivityStep(quiet.console,
                             {folder.path + sensitivityFileName(SensitivityKind::Pressure, step),
                              folder.path + sensitivityFileName(SensitivityKind::Pressure, WholeRun)},
                             step == 1, 2, 3, [step](std::size_t well, CellArray<double>& values) {
                                 if (well == 1) values.slots = {0.0, 1.0 * step, 0.0, 10.0 * step};
                             });
    WellMatch first, second;
    first.name = "P1";
    second.name = "P2";
    const std::vector<WellMatch> wells{first, second};
    const std::vector<HistoryDatum> data{{0, {1.0, 0.0}, 5.0, 1.0}, {1, {0.25, 0.75}, 7.0, 2.0}};
    CellArray<std::uint8_t> active;
    active.assign(3, 1);
    ErrorData rows;
    addHistoryRows(quiet.console, SensitivityKind::Pressure, {folder.path, {"P1", "P2"}, {10.0, 20.0}},
                   active, wells, data, 6, rows);
    ASSERT_EQ(rows.rows.count(), 1U) << "no cell changes the first well";
    EXPECT_EQ(rows.misfit, std::vector<double>{7.0});
    EXPECT_EQ(rows.error, std::vector<double>{2.0});
    EXPECT_EQ(rows.datum, std::vector<std::size_t>{7}) << "the second of these, behind six others";
    EXPECT_EQ(rows.rows.cell, (std::vector<CellId>{1, 3}));
    EXPECT_NEAR(rows.rows.value[0], 0.25 + 2.0 * 0.75, 1e-12);
    EXPECT_NEAR(rows.rows.value[1], 10.0 * 1.75, 1e-12);
}
