#include "matching/curve_rows.hpp"

#include "eclipse/sensitivity_files.hpp"
#include "unit/quiet_console.hpp"

#include <filesystem>
#include <gtest/gtest.h>

using namespace kvr;

namespace {

/// Reports at 10, 20, 30, 40 days; at report n cell c changes the curve by n * c.
CurveFiles filesOfFourSteps(const QuietConsole& quiet) {
    const std::string folder = (std::filesystem::temp_directory_path() / "kvr_curve_rows_test_").string();
    for (int step = 1; step <= 4; ++step)
        writeSensitivityStep(quiet.console,
                             {folder + sensitivityFileName(SensitivityKind::TravelTime, step),
                              folder + sensitivityFileName(SensitivityKind::TravelTime, WholeRun)},
                             step == 1, 1, 2, [step](std::size_t, CellArray<double>& values) {
                                 values.slots = {0.0, 1.0 * step, 2.0 * step};
                             });
    return {folder, {"P1"}, {10.0, 20.0, 30.0, 40.0}};
}

WellMatch wellOf(const std::vector<double>& observed, const std::vector<double>& calculated) {
    WellMatch well;
    well.name = "P1";
    well.slope = 0.05;
    well.obs.time = well.cal.time = {10.0, 20.0, 30.0, 40.0};
    well.obs.cut = observed;
    well.cal.cut = calculated;
    return well;
}

}  // namespace

TEST(PartOfACurve, SplitsTheObservedTimesEvenly) {
    const std::vector<double> times{0.0, 40.0, 50.0, 100.0};
    EXPECT_EQ(partOf(times, 0, 2), 0U);
    EXPECT_EQ(partOf(times, 1, 2), 0U);
    EXPECT_EQ(partOf(times, 2, 2), 1U);
    EXPECT_EQ(partOf(times, 3, 2), 1U) << "the last point is in the last part";
    EXPECT_EQ(partOf(std::vector<double>{5.0, 5.0}, 1, 3), 0U);
}

TEST(CurveRows, HoldTheMeanChangeOfEachPartOverTheSlope) {
    const QuietConsole quiet;
    const CurveFiles files = filesOfFourSteps(quiet);
    CellArray<std::uint8_t> active;
    active.assign(2, 1);
    const WellMatch well = wellOf({0.1, 0.3, 0.5, 0.7}, {0.0, 0.2, 0.5004, 0.7});
    const CurveData data = curveRows(quiet.console, {}, files, 2, active, {&well, 1});
    ASSERT_EQ(data.rows.count(), 2U);
    EXPECT_EQ(data.well, (std::vector<std::size_t>{0, 0}));
    EXPECT_NEAR(data.misfit[0], 0.1 / 0.05, 1e-12) << "mean of 0.1 and 0.1";
    EXPECT_EQ(data.misfit[1], 0.0) << "a mean of 0.0002 is matched";
    ASSERT_EQ(data.rows.start[1], 2U);
    EXPECT_NEAR(data.rows.value[0], 1.5 / 0.05, 1e-12) << "mean of reports 1 and 2";
    EXPECT_NEAR(data.rows.value[1], 3.0 / 0.05, 1e-12);
    for (int step = 0; step <= 4; ++step)
        std::filesystem::remove(files.folder + sensitivityFileName(SensitivityKind::TravelTime, step));
}

TEST(CurveRows, OfACurveThatDoesNotRiseAreEmpty) {
    const QuietConsole quiet;
    const CurveFiles files = filesOfFourSteps(quiet);
    CellArray<std::uint8_t> active;
    active.assign(2, 1);
    WellMatch well = wellOf({0.1, 0.3, 0.5, 0.7}, {0.0, 0.0, 0.0, 0.0});
    well.slope = 0.0;
    const CurveData data = curveRows(quiet.console, {}, files, 3, active, {&well, 1});
    EXPECT_EQ(data.rows.count(), 3U);
    EXPECT_TRUE(data.rows.value.empty());
    EXPECT_EQ(data.misfit, std::vector<double>(3, 0.0));
    for (int step = 0; step <= 4; ++step)
        std::filesystem::remove(files.folder + sensitivityFileName(SensitivityKind::TravelTime, step));
}
