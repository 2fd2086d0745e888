#include "report/report_output.hpp"

#include "unit/report/report_run.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

TEST(ReportOutput, AddsAZoneOfThreeFieldsPerReport) {
    ReportRun test;
    for (const double time : {10.0, 20.0}) {
        test.run.clock.time = time;
        reportOutput(test.run, 1, 100.0);
    }
    for (const auto& [name, title, value] : {std::tuple{"KVR_TPlot_poil.plt", "p<sub>o</sub>PLOT", 3000.0},
                                             std::tuple{"KVR_TPlot_swat.plt", "S<sub>w</sub>PLOT", 0.3},
                                             std::tuple{"KVR_TPlot_soil.plt", "S<sub>o</sub>PLOT", 0.7}}) {
        const std::vector<PlotZone> zones = test.zones(name);
        ASSERT_EQ(zones.size(), 2U) << name;
        EXPECT_EQ(zones[1].title, title);
        EXPECT_EQ(zones[1].time, 20.0);
        EXPECT_EQ(zones[1].columns[3], std::vector<double>(24, value));
    }
    EXPECT_NE(test.folder.read("KVR_dbg.out").find("Information Added for poil,ssat.plt"), std::string::npos);
}

TEST(ReportOutput, LeavesTheGasFilesEmptyWithoutGas) {
    ReportRun test;
    reportOutput(test.run, 1, 100.0);
    EXPECT_TRUE(test.zones("KVR_TPlot_sgas.plt").empty());
    EXPECT_TRUE(test.zones("KVR_TPlot_Rs.plt").empty());
    EXPECT_EQ(test.folder.read("KVR_Excl_Grid_Sat.xls").find("SGAS_Frac"), std::string::npos);
}

TEST(ReportOutput, ReportsTheSolutionRatioInDeckUnits) {
    ReportRun test;
    test.run.options.hasGas = true;
    for (double& value : test.run.state.Rs.slots) value = 226.19667;  // 1.27 Mscf/stb
    reportOutput(test.run, 1, 100.0);
    const std::vector<PlotZone> zones = test.zones("KVR_TPlot_Rs.plt");
    ASSERT_EQ(zones.size(), 1U);
    EXPECT_NEAR(zones[0].columns[3][0], 1.27, 1e-7);
    EXPECT_EQ(zones[0].title, "R<sub>s</sub>PLOT");
    EXPECT_EQ(test.zones("KVR_TPlot_sgas.plt").at(0).title, "S<sub>g</sub>PLOT");
    const std::string sheet = test.folder.read("KVR_Excl_Grid_Sat.xls");
    const std::size_t oil = sheet.find("Grid\tSOIL_Frac");
    const std::size_t water = sheet.find("Grid\tSWAT_Frac");
    const std::size_t gas = sheet.find("Grid\tSGAS_Frac");
    EXPECT_TRUE(oil < water && water < gas && gas != std::string::npos);
    EXPECT_NE(test.folder.read("KVR_Excl_Grid_Prs.xls").find("Grid\tPres_Frac"), std::string::npos);
    EXPECT_NE(test.folder.read("KVR_dbg.out").find("Information Added for XXX.xls\n"), std::string::npos);
}

TEST(ReportOutput, WritesOneColumnPerTracer) {
    ReportRun test;
    test.run.options.tracerActive = true;
    test.run.options.tracerCount = 2;
    reportOutput(test.run, 1, 100.0);
    ASSERT_EQ(test.zones("KVR_Tplot_Tracer.plt").size(), 1U);
    EXPECT_EQ(test.zones("KVR_Tplot_Tracer.plt")[0].columns.size(), 5U);
}

TEST(ReportOutput, WritesTheEndFilesOnlyWhenLessThanADayIsLeft) {
    ReportRun test;
    reportOutput(test.run, 1, 1.0);
    EXPECT_FALSE(test.exists("KVR_Run_EndSwat.out"));
    reportOutput(test.run, 1, 0.999);
    EXPECT_TRUE(test.exists("KVR_Run_EndSwat.out"));
    EXPECT_NE(test.folder.read("KVR_Run_Pressure.out").find("VARIABLES= X,Y,Z,pressure          \n"),
              std::string::npos);
    EXPECT_NE(test.folder.read("KVR_dbg.out")
                  .find("File Replaced : KVR_Run_EndSwat.out\nFile Replaced : KVR_Run_Pressure.out\n"),
              std::string::npos);
}

TEST(ReportOutput, WritesNothingWithEverySwitchOff) {
    ReportRun test;
    test.run.options.outputPlt = test.run.options.outputXls = test.run.options.outputKvrView = "No";
    reportOutput(test.run, 1, 0.0);
    EXPECT_TRUE(test.zones("KVR_TPlot_poil.plt").empty());
    EXPECT_EQ(test.folder.read("KVR_Excl_Grid_Prs.xls"), "");
    EXPECT_FALSE(test.exists("KVR_Run_EndSwat.out"));
}

}  // namespace
}  // namespace kvr
