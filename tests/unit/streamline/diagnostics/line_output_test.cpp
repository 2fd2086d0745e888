#include "unit/scratch_folder.hpp"
#include "unit/streamline/flood_run.hpp"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

namespace kvr {
namespace {

std::vector<std::string> linesOf(const std::filesystem::path& file) {
    std::vector<std::string> lines;
    std::ifstream text(file);
    for (std::string line; std::getline(text, line);) lines.push_back(line);
    return lines;
}

std::vector<double> numbersOf(const std::string& line) {
    std::istringstream text(line);
    std::vector<double> numbers;
    for (double number = 0.0; text >> number;) numbers.push_back(number);
    return numbers;
}

using samples::FloodRun;

/// A run that writes into a folder of its own.
struct PlottedRun {
    ScratchFolder folder;
    FloodRun run;

    explicit PlottedRun(const samples::Flow& flow, int lines = 10) : run(flow, lines, 30.0) {
        run.s.options.outputStreamline = true;
        openOutputs(folder.path, run.s.outputs, run.s.console);
        run.s.console.log = stream(run.s.outputs, OutputFile::DebugLog);
    }
    ~PlottedRun() {
        closeOutputs(run.s.outputs);
        closeLog(run.s.outputs, run.s.console);
    }
    PlottedRun(const PlottedRun&) = delete;
    PlottedRun& operator=(const PlottedRun&) = delete;

    /// One step of 30 days that ends at a report time.
    void report(int iterationsLeft = 0) {
        StreamlineStep(run.s, iterationsLeft, 0, 970.0, 0.0);
        flushOutputs(run.s.outputs);
    }
    [[nodiscard]] std::filesystem::path file(const std::string& name) const {
        return std::filesystem::path(folder.path) / name;
    }
};

/// Zones of points: each a list of rows of ten values.
std::vector<std::vector<std::vector<double>>> lineZones(const std::vector<std::string>& lines) {
    std::vector<std::vector<std::vector<double>>> zones;
    for (std::size_t n = 0; n < lines.size(); ++n) {
        if (lines[n].rfind(" ZONE I = ", 0) != 0) continue;
        EXPECT_NE(lines[n].find(" F=POINT"), std::string::npos);
        const auto count = static_cast<std::size_t>(std::stoi(lines[n].substr(10)));
        zones.emplace_back();
        for (std::size_t row = 1; row <= count; ++row) zones.back().push_back(numbersOf(lines.at(n + row)));
    }
    return zones;
}

TEST(LineOutput, PlotsTheLinesOfAReportTimeBehindAFrame) {
    PlottedRun plotted(samples::quarterFiveSpot(8, 300.0));
    plotted.report();
    const std::vector<std::string> lines = linesOf(plotted.file("Streamline_Time_30.plt"));
    ASSERT_GT(lines.size(), 20U);
    EXPECT_EQ(lines[0], "TITLE=SL_FRAME_PLOT");
    EXPECT_EQ(lines[1], "VARIABLES= X,Y,DEPTH,TOF,DFSV_TOF,S<sub>w</sub>,SNS,INDX_INJ,INDX_PRD,INDX_PERF");
    EXPECT_EQ(lines[2], "Zone i = 9, j= 9, k= 2,  DATAPACKING=BLOCK");
    EXPECT_EQ(lines[3],
              "VARLOCATION=(4=CELLCENTERED,5=CELLCENTERED,6=CELLCENTERED,7=CELLCENTERED,"
              "8=CELLCENTERED,9=CELLCENTERED,10=CELLCENTERED)");
    std::vector<double> frame;
    std::size_t n = 4;
    for (; n < lines.size() && lines[n] != "TITLE = STREAMLINE"; ++n)
        for (const double number : numbersOf(lines[n])) frame.push_back(number);
    ASSERT_EQ(frame.size(), 3U * 9 * 9 * 2 + 7U * 64);
    EXPECT_EQ(frame[3 * 162 + 2 * 64], 0.2);  // water saturation as the step begins
    EXPECT_EQ(lines.at(n + 1), "VARIABLES =X,Y,Z,TOF,TOF_DFIIUSIVE,SWAT,SNS,INJ,PRD,PERF");
    const auto zones = lineZones(lines);
    ASSERT_EQ(zones.size(), 10U);
    for (const auto& zone : zones) {
        for (std::size_t row = 0; row < zone.size(); ++row) {
            ASSERT_EQ(zone[row].size(), 10U);
            EXPECT_GT(zone[row][3], row == 0 ? 0.0 : zone[row - 1][3]);
            EXPECT_EQ(zone[row][4], 0.0);  // not asked for
            EXPECT_EQ(zone[row][7], 1.0);
            EXPECT_EQ(zone[row][8], 1.0);
            EXPECT_EQ(zone[row][9], 1.0);
        }
        EXPECT_NEAR(zone.back()[0], 937.5, 1e-6);  // the producer's cell centre
        EXPECT_NEAR(zone.back()[1], 937.5, 1e-6);
        EXPECT_GT(zone.front()[5], 0.2);  // behind the front
    }
    const std::vector<std::string> told = linesOf(plotted.file("KVR_dbg.out"));
    EXPECT_NE(std::find(told.begin(), told.end(), " File generated : Streamline_Time_30.plt"), told.end());
    EXPECT_NE(std::find(told.begin(), told.end(), " File Replaced -> KVR_Run_Streamline.out"), told.end());
}

TEST(LineOutput, ShowsLinesFromProducersAlikeFromTheirInjector) {
    PlottedRun plotted(samples::column(4, 500.0, 50.0), 1);
    plotted.run.s.launch.LaunchMode = "prd";
    plotted.report();
    const auto zones = lineZones(linesOf(plotted.file("Streamline_Time_30.plt")));
    ASSERT_EQ(zones.size(), 1U);
    ASSERT_EQ(zones[0].size(), 3U);
    const double x[] = {20.0, 30.0, 35.0};
    for (std::size_t row = 0; row < 3; ++row) {
        EXPECT_NEAR(zones[0][row][0], x[row], 1e-5);
        EXPECT_NEAR(zones[0][row][3], 10.0 * static_cast<double>(row + 2), 1e-7);
        EXPECT_NEAR(zones[0][row][5], plotted.run.s.state.Sw[static_cast<CellId>(row) + 2], 1e-7);
    }
}

TEST(LineOutput, WritesNoZoneForALineOfOneNode) {
    PlottedRun plotted(samples::column(4, 500.0, 50.0), 1);
    StreamlineRecord record;
    sizeRecord(4, record);
    record.nodeCount = 1;
    std::FILE* file = std::tmpfile();
    LinePlot plot;
    plot.writer.file = file;
    const Simulation& s = plotted.run.s;
    writePlotLine(s.options, s.grid, s.fluids, s.state, {record, false, {}}, plot);
    flush(plot.writer);
    EXPECT_EQ(std::ftell(file), 0);
    closeLinePlot(Console{nullptr, nullptr, nullptr}, plot);
}

TEST(LineOutput, WaitsForTheLastPassAndForAReportTime) {
    PlottedRun plotted(samples::column(4, 500.0, 50.0), 1);
    StreamlineStep(plotted.run.s, 0, 0, 970.0, 10.0);
    EXPECT_FALSE(std::filesystem::exists(plotted.file("Streamline_Time_30.plt")));
    plotted.report(1);
    EXPECT_TRUE(lineZones(linesOf(plotted.file("Streamline_Time_30.plt"))).empty());
}

TEST(LineOutput, AddsDiffusiveTimesOnlyWhereAskedFor) {
    PlottedRun plotted(samples::column(4, 500.0, 50.0), 1);
    plotted.run.s.options.outputDiffusiveTof = true;
    plotted.run.s.fluids.rockCompressibility = 4e-6;
    plotted.report();
    const auto zones = lineZones(linesOf(plotted.file("Streamline_Time_30.plt")));
    for (std::size_t row = 0; row < 3; ++row)
        EXPECT_GT(zones.at(0).at(row)[4], row == 0 ? 0.0 : zones[0][row - 1][4]);
}

TEST(LineOutput, PlotsTheLinesOfMissedCellsToo) {
    samples::Flow flow = samples::quarterFiveSpot(12, 300.0);
    flow.options.traceMissed = "Yes";
    PlottedRun plotted(flow, 2);
    plotted.report();
    EXPECT_GT(lineZones(linesOf(plotted.file("Streamline_Time_30.plt"))).size(), 8U);
    // The view is off: the run's file of geometry gets them as well.
    const std::vector<std::string> geometry = linesOf(plotted.file("KVR_Run_Streamline.out"));
    ASSERT_GT(geometry.size(), 8U);
    EXPECT_EQ(geometry[0], "Variables = X, Y");
    EXPECT_EQ(geometry[1], "ZONE I=4");
    EXPECT_EQ(geometry[6], "GEOMETRY X=0, Y=0, T=LINE, C=WHITE, M=GRID");
    const auto points = static_cast<std::size_t>(std::stoi(geometry[7]));
    for (std::size_t n = 1; n <= points; ++n) EXPECT_EQ(numbersOf(geometry.at(7 + n)).size(), 2U);
    EXPECT_EQ(geometry.at(8 + points), geometry[6]);
}

std::size_t geometryRecords(const PlottedRun& plotted) {
    const std::vector<std::string> lines = linesOf(plotted.file("KVR_Run_Streamline.out"));
    return static_cast<std::size_t>(
        std::count(lines.begin(), lines.end(), "GEOMETRY X=0, Y=0, T=LINE, C=WHITE, M=GRID"));
}

TEST(LineOutput, GivesTheGeometryOfMissedCellsOnlyWhereNoViewShowsThem) {
    samples::Flow flow = samples::quarterFiveSpot(12, 300.0);
    flow.options.traceMissed = "Yes";
    PlottedRun plotted(flow, 2);
    plotted.run.s.options.outputKvrView = "Yes";
    plotted.report();
    EXPECT_EQ(geometryRecords(plotted), 0U);
}

TEST(LineOutput, DrawsLinesThroughCellsWhereThereAreNoProducers) {
    samples::Flow flow = samples::quarterFiveSpot(12, 300.0);
    flow.options.traceMissed = "Yes";
    flow.wells.wells.pop_back();
    flow.tags.CellTag.assign(144, CellTagKind::Pop);
    flow.tags.CellTag[1] = CellTagKind::Injector;
    PlottedRun plotted(flow, 2);
    plotted.report();
    EXPECT_GT(geometryRecords(plotted), 0U);
}

TEST(LineOutput, DumpsTheMatricesOfImplicitLinesInDebugModeOnly) {
    for (const bool debug : {false, true}) {
        const samples::Flow flow = samples::column(4, 500.0, 50.0);
        PlottedRun plotted(flow, 1);
        Simulation& s = plotted.run.s;
        s.options.solverPhaseName = {"imp"};
        s.options.SaturationTolerance = 1e-4;
        s.options.maxSaturationIterations = 30;
        s.options.maxDt = 1e10;
        s.options.outputSaturationMatrix = true;
        s.options.debugOutput = debug;
        plotted.report();
        // The first step is a tenth of thirty days.
        EXPECT_EQ(std::filesystem::exists(plotted.file("SMatrix_T_0_dt_3_ite_1.xls")), debug);
    }
}

TEST(LineOutput, ListsTheRatesOfPairsEachStepAndTheMapsAtTheEnd) {
    PlottedRun plotted(samples::column(10, 500.0, 50.0), 1);
    plotted.run.s.options.outputKvrView = "Yes";
    plotted.run.s.options.outputPlt = "Yes";
    StreamlineStep(plotted.run.s, 0, 0, 970.0, 10.0);
    EXPECT_EQ(numbersOf(linesOf(plotted.file("KVR_Run_RateAllocation.out")).at(0)),
              (std::vector<double>{1.0, 1.0, 50.0}));
    EXPECT_FALSE(std::filesystem::exists(plotted.file("KVR_Run_TauINJ.out")));
    plotted.run.s.clock.endTime = 30.0;
    StreamlineStep(plotted.run.s, 0, 0, 0.0, 0.0);
    const auto list = [&](const char* name) {
        std::vector<double> values;
        for (const std::string& line : linesOf(plotted.file(name))) values.push_back(numbersOf(line).at(0));
        return values;
    };
    const std::vector<double> inj = list("KVR_Run_TauINJ.out");
    ASSERT_EQ(inj.size(), 10U);
    for (std::size_t n = 0; n < 10; ++n) EXPECT_NEAR(inj[n], 10.0 * (static_cast<double>(n) + 0.5), 1e-6);
    for (const double sum : list("KVR_Run_TauSUM.out")) EXPECT_NEAR(sum, 100.0, 1e-6);
    EXPECT_EQ(list("KVR_Run_TauPRD.out").size(), 10U);
    for (const char* name : {"KVR_Run_prdCxn.out", "KVR_Run_InjCxn.out"})
        EXPECT_EQ(list(name), std::vector<double>(10, 1.0));
    for (const char* name : {"KVR_Run_TauINJ.plt", "KVR_Run_TauPRD.plt", "KVR_Run_TauSUM.plt",
                             "KVR_Run_PrdCxn.plt", "KVR_Run_InjCxn.plt", "KVR_Run_CxnCxn.plt"})
        EXPECT_TRUE(std::filesystem::exists(plotted.file(name))) << name;
    const std::string text = plotted.run.quiet.screenText();
    std::size_t from = 0;
    for (const char* words :
         {"------------------------------------------------------->\n",
          "Streamline-Based Diagnostic Function is called...\n", "Number of SLine traced : 10\n",
          "time elapsed output TOF: ", "<------------------------------------------------------\n"}) {
        from = text.find(words, from);
        ASSERT_NE(from, std::string::npos) << words;
    }
}

}  // namespace
}  // namespace kvr
