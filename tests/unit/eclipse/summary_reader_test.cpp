#include "eclipse/summary_reader.hpp"

#include "eclipse/restart_file.hpp"
#include "eclipse/restart_plots.hpp"
#include "eclipse/summary_files.hpp"
#include "unit/eclipse/block_file.hpp"
#include "unit/eclipse/small_case.hpp"
#include "unit/quiet_console.hpp"
#include "unit/report/plot_file_parser.hpp"

#include <filesystem>
#include <gtest/gtest.h>
#include <sstream>

namespace kvr {
namespace {

bool holds(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

std::vector<std::string> linesOf(const std::string& text) {
    std::istringstream in(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

struct ResponseCase : SmallCase {
    ResponseCase() : SmallCase(2, 1, 1) { run.console = quiet.console; }
    /// Own summaries of the wells of the run for steps 0..last; oil rate 100 step, time 10 step.
    void writeOwn(int last) {
        std::vector<std::string> names;
        for (const Well& well : run.wells.wells) names.push_back(well.WellName);
        writeSummarySpec(run.console, run.options, run.grid, names);
        for (int step = 0; step <= last; ++step) {
            std::vector<SummaryFigures> figures(names.size());
            for (std::size_t w = 0; w < names.size(); ++w) {
                figures[w].time = 10.0 * step;
                figures[w].producer = run.wells.wells[w].WellKind == "prd";
                figures[w].oil = 100.0 * step;
                figures[w].water = 300.0 * step;
                figures[w].gas = 50.0 * step;
                figures[w].bhp = 2000.0 + step;
                figures[w].historyOil = 90.0;
                figures[w].historyBhp = 1995.0;
            }
            run.clock.reportIndex = step;
            writeSummaryStep(run.console, run.options, run.clock, figures);
        }
    }
    void read(int first) {
        Schedule schedule;
        schedule.steps.resize(1);
        for (const Well& well : run.wells.wells) {
            ScheduleWell scheduled;
            scheduled.name = well.WellName;
            scheduled.isInjector = well.WellKind == "inj";
            schedule.steps[0].wells.push_back(scheduled);
        }
        read_ECL_response(run.console, run.options, schedule, "CASE", first, response);
    }
    QuietConsole quiet;
    SummaryResponse response;
};

TEST(OwnSummary, OfTwoWellsIsReadWhole) {
    ResponseCase c;
    c.addWell("P1", "prd");
    c.addWell("P2", "prd");
    c.writeOwn(3);
    RecordReader reader;
    ASSERT_EQ(open_read(c.path(".SMSPEC"), ByteOrder::Big, reader), 0);
    SummarySpec spec;
    EXPECT_EQ(readSummarySpec(c.run.console, reader, spec), ReadResult::Ok);
    close(reader);
    EXPECT_EQ(spec.vectorCount, 34);
    c.read(1);
    EXPECT_EQ(c.response.time, (std::vector<double>{10, 20, 30}));
    EXPECT_EQ(c.response.wellNames, (std::vector<std::string>{"P1", "P2"}));
    EXPECT_EQ(*responseOf(c.response, response::WOPR, 2), (std::vector<double>{100, 200, 300}));
    EXPECT_EQ(*responseOf(c.response, response::WBHP, 1), (std::vector<double>{2001, 2002, 2003}));
    EXPECT_EQ(linesOf(c.folder.read("WELL_CALCULATED.DATA")).size(), 1U + 3U * 2U);
    EXPECT_FALSE(std::filesystem::exists(c.folder.path + "WELL_OBSERVED.DATA"));
    EXPECT_TRUE(holds(c.quiet.logText(), " ECLIPSE .SMSPEC File Found. \n"));
    EXPECT_TRUE(holds(c.quiet.logText(), " SMSPEC Key employd -> KEYWORDS\n"));
    EXPECT_TRUE(holds(c.quiet.logText(), " SMSPEC Key ignored :  UNITS   \n"));
    EXPECT_TRUE(holds(c.quiet.logText(), " Key Found -> WOPR     :: P1      \n"));
    EXPECT_TRUE(holds(c.quiet.logText(), " Not Found -> " + c.path(".S0004") + "\n"));
}

TEST(WellDataFiles, HaveAHeadAndARowForEachProducerAndTime) {
    ResponseCase c;
    c.run.options.useHistoryControls = true;
    c.addWell("I1", "inj");
    c.addWell("P1", "prd");
    c.writeOwn(1);
    c.read(1);
    const std::vector<std::string> lines = linesOf(c.folder.read("WELL_CALCULATED.DATA"));
    ASSERT_EQ(lines.size(), 2U);
    std::string head;
    for (const char* name : {"WNAME", "TIME", "WOPR", "WWPR", "WGPR", "WBHP", "WWCT", "WGOR"}) {
        head += name;
        head.resize((head.size() + 20) / 21 * 21, ' ');
    }
    EXPECT_EQ(lines[0], head);
    EXPECT_EQ(lines[1],
              "P1            1.000000000000E+01   1.000000000000E+02   3.000000000000E+02 "
              "  5.000000000000E+01   2.001000000000E+03   7.500000000000E-01 "
              "  5.000000000000E-01 ");
    const std::vector<std::string> observed = linesOf(c.folder.read("WELL_OBSERVED.DATA"));
    ASSERT_EQ(observed.size(), 2U);
    EXPECT_EQ(observed[1].substr(0, 53), "P1            1.000000000000E+01   9.000000000000E+01");
}

TEST(SummarySeries, EndsAtTheFirstMissingStep) {
    ResponseCase c;
    c.addWell("P1", "prd");
    c.writeOwn(14);
    c.read(0);
    EXPECT_EQ(c.response.time.size(), 15U);
    EXPECT_TRUE(holds(c.quiet.logText(), " Not Found -> " + c.path(".S0015") + "\n"));
}

/// An index of one vector per name and well, and one step of values.
void writeForeign(const ResponseCase& c, const std::vector<std::pair<std::string, std::string>>& vectors,
                  std::size_t values, std::int32_t dimension) {
    const auto count = static_cast<std::int32_t>(vectors.size());
    RecordWriter writer;
    ASSERT_EQ(open_write(c.path(".SMSPEC"), writer), 0);
    write_keyword<std::int32_t>(writer, "INTEHEAD", 2, [](std::size_t) { return 100; });
    write_keyword<std::int32_t>(writer, "DIMENS", 6, [&](std::size_t n) { return n == 0 ? dimension : 1; });
    write_keyword<Text8>(writer, "KEYWORDS", count, [&](std::size_t n) { return text8(vectors[n].first); });
    write_keyword<Text8>(writer, "WGNAMES", count, [&](std::size_t n) { return text8(vectors[n].second); });
    write_keyword<std::int32_t>(writer, "NUMS", count,
                                [](std::size_t n) { return 70 + static_cast<std::int32_t>(n); });
    close(writer);
    ASSERT_EQ(open_write(c.path(".S0001"), writer), 0);
    write_keyword<std::int32_t>(writer, "SEQHDR", 1, [](std::size_t) { return 7; });
    for (const float add : {0.0F, 0.5F}) {
        write_keyword<std::int32_t>(writer, "MINISTEP", 1, [](std::size_t) { return 0; });
        write_keyword<float>(writer, "PARAMS", static_cast<std::int32_t>(values),
                             [&](std::size_t n) { return static_cast<float>(n) + add; });
    }
    close(writer);
}

TEST(ForeignSummary, WithoutATimeReadsNoStep) {
    ResponseCase c;
    c.addWell("P1", "prd");
    writeForeign(c, {{"WOPR", "P1"}}, 1, 1);
    c.read(1);
    EXPECT_TRUE(holds(c.quiet.screenText(), "ERROR :: No TIME keyword was in the .SMSPEC file.\n"));
    EXPECT_TRUE(c.response.time.empty());
    EXPECT_FALSE(holds(c.quiet.logText(), " Start Reading -> "));
}

TEST(ForeignSummary, PassesOverVectorsBeyondTheWells) {
    ResponseCase c;
    c.addWell("P1", "prd");
    writeForeign(c, {{"TIME", ""}, {"WOPR", "P1"}, {"WOPR", "P2"}, {"FOPR", "FIELD"}, {"WXYZ", "P1"}}, 5, 5);
    c.read(1);
    EXPECT_EQ(c.response.wellNames, std::vector<std::string>{"P1"});
    EXPECT_EQ(responseOf(c.response, response::WOPR, 2), nullptr);
    EXPECT_EQ(*responseOf(c.response, 44, 1), std::vector<double>{3.5});  // the last PARAMS of the file
    EXPECT_EQ(c.response.time, std::vector<double>{0.5});
}

TEST(ForeignSummary, KeepsTheStepsOnTheWayToAReportApart) {
    ResponseCase c;
    c.addWell("P1", "prd");
    writeForeign(c, {{"WOPR", "P1"}, {"TIME", ""}}, 2, 2);
    RecordWriter writer;
    ASSERT_EQ(open_write(c.path(".S0002"), writer), 0);
    for (const float time : {3.0F, 7.0F, 20.0F})
        write_keyword<float>(writer, "PARAMS", 2,
                             [time](std::size_t n) { return n == 0 ? 10.0F * time : time; });
    close(writer);
    c.read(1);
    EXPECT_EQ(c.response.time, (std::vector<double>{1.5, 20.0}));
    EXPECT_EQ(*responseOf(c.response, response::WOPR, 1), (std::vector<double>{0.5, 200.0}));
    std::vector<double> times, rates;
    for (const StepBetween& step : c.response.between) {
        if (step.report != 1) continue;
        times.push_back(step.time);
        rates.push_back(responseAt(c.response, response::WOPR, 1, {1, &step}).value_or(0.0));
    }
    EXPECT_EQ(times, (std::vector<double>{3.0, 7.0}));
    EXPECT_EQ(rates, (std::vector<double>{30.0, 70.0}));
    EXPECT_EQ(responseAt(c.response, response::WOPR, 1, {1}), 200.0);
}

TEST(ForeignSummary, KeepsAWellsVectorsTogetherWhateverTheirOrder) {
    ResponseCase c;
    c.addWell("P1", "prd");
    c.addWell("P2", "prd");
    writeForeign(
        c, {{"TIME", ""}, {"WWPR", "P2"}, {"WOPR", "P1"}, {"WOPR", "P2"}, {"WWPR", "P1"}, {"WOPR", "P1"}}, 6,
        6);
    c.read(1);
    EXPECT_EQ(c.response.wellNames, (std::vector<std::string>{"P2", "P1"}));
    EXPECT_EQ(*responseOf(c.response, response::WWPR, 1), std::vector<double>{1.5});
    EXPECT_EQ(*responseOf(c.response, response::WOPR, 1), std::vector<double>{3.5});
    EXPECT_EQ(*responseOf(c.response, response::WOPR, 2), std::vector<double>{2.5});  // the first of two
    EXPECT_EQ(*responseOf(c.response, response::WWPR, 2), std::vector<double>{4.5});
}

TEST(ForeignSummary, StepWithoutParamsAddsNone) {
    ResponseCase c;
    c.addWell("P1", "prd");
    writeForeign(c, {{"TIME", ""}, {"WOPR", "P1"}}, 2, 2);
    RecordWriter writer;
    ASSERT_EQ(open_write(c.path(".S0002"), writer), 0);
    write_keyword<std::int32_t>(writer, "SEQHDR", 1, [](std::size_t) { return 7; });
    close(writer);
    c.read(1);
    EXPECT_EQ(c.response.time, std::vector<double>{0.5});
    EXPECT_EQ(*responseOf(c.response, response::WOPR, 1), std::vector<double>{1.5});
}

TEST(ForeignSummary, MayHaveItsKeywordsShiftedInTheirFields) {
    ResponseCase c;
    c.addWell("P1", "prd");
    writeForeign(c, {{"  TIME", ""}, {" WOPR", " P1"}}, 2, 2);
    c.read(1);
    EXPECT_EQ(c.response.time, std::vector<double>{0.5});
    EXPECT_EQ(*responseOf(c.response, response::WOPR, 1), std::vector<double>{1.5});
}

TEST(ForeignSummary, CountsTheConnectionsOfEachWell) {
    ResponseCase c;
    c.addWell("P1", "prd");
    writeForeign(c, {{"TIME", ""}, {"CVFR", "I1"}, {"CVFR", "P1"}, {"CVFR", "P1"}}, 4, 4);
    c.read(1);
    ASSERT_EQ(c.response.connections.size(), 3U);
    EXPECT_EQ(c.response.connections[0].connection, 1);
    EXPECT_EQ(c.response.connections[2].connection, 2);
    EXPECT_EQ(c.response.connections[2].well, "P1");
    EXPECT_EQ(c.response.connections[2].cell, 73);
    EXPECT_EQ(c.response.connections[2].values, std::vector<double>{3.5});
}

TEST(ForeignSummary, OfAnotherLengthEndsTheReading) {
    ResponseCase c;
    c.addWell("P1", "prd");
    writeForeign(c, {{"TIME", ""}, {"WOPR", "P1"}}, 3, 2);
    c.read(1);
    EXPECT_TRUE(holds(c.quiet.screenText(), "No. of Vectors not same in .smspec, .unsmry files\n"));
    EXPECT_TRUE(c.response.time.empty());
}

TEST(ForeignSummary, WithoutItsIndexStops) {
    ResponseCase c;
    c.run.console = consoleOnStandardError();
    EXPECT_EXIT(c.read(1), testing::ExitedWithCode(1),
                "ERROR: SMSPEC file is not given. Cannot Check .SXXXX file.\n"
                "       File I/O Error, in Summary file\n");
}

TEST(ForeignSummary, ThatIsCutShortStopsWithItsLastKeyword) {
    ResponseCase c;
    c.addWell("P1", "prd");
    c.writeOwn(1);
    const std::string bytes = c.folder.read("CASE.S0001");
    c.folder.write("CASE.S0001", bytes.substr(0, bytes.size() - 10));
    c.run.console = consoleOnStandardError();
    EXPECT_EXIT(c.read(1), testing::ExitedWithCode(1),
                "ERROR: Summary file error\\( .SXXXX file \\)\n       File I/O Error, in Summary file\n"
                "ERROR: File reading error, code = -1\n       Reading error, Last Keyword was PARAMS  \n"
                ".*S0001: byte 72: ");
}

TEST(Mnemonics, HoldTheComponentsTwice) {
    const std::vector<ResponseMnemonic> all = responseMnemonics(2);
    int found = 0;
    for (const ResponseMnemonic& mnemonic : all) {
        if (mnemonic.name != "WZMF_0002") continue;
        ++found;
        EXPECT_TRUE(mnemonic.id == 52 || mnemonic.id == 102);
    }
    // A mnemonic has eight characters in a file; the names of components have nine.
    EXPECT_EQ(
        found + static_cast<int>(std::count_if(
                    all.begin(), all.end(), [](const ResponseMnemonic& m) { return m.name == "WZMF_000"; })),
        4);
}

// --- restarts to plots -------------------------------------------------------------------------------------

struct PlotCase : SmallCase {
    PlotCase() : SmallCase(2, 2, 1) {
        run.console = quiet.console;
        run.grid.Active[2] = 0;
        run.clock.time = 31.5;
        for (const int step : {1, 2}) {
            run.clock.reportIndex = step;
            writeRestartFile(run.console, run.options, run.clock, run.grid, run.state,
                             {run.units, run.connections, run.velocity}, run.lines.diagnostics);
        }
    }
    void append(const std::string& extension, std::string_view keyword, const std::vector<float>& values) {
        RecordWriter writer;
        ASSERT_EQ(open_write(path(".TMP"), writer), 0);
        write_keyword(writer, keyword, std::span<const float>(values));
        close(writer);
        folder.write("CASE" + extension, folder.read("CASE" + extension) + folder.read("CASE.TMP"));
    }
    void convert() { input_RST2Tecplot(run.console, run.options, run.grid, "CASE", 0, run.clock); }
    QuietConsole quiet;
};

TEST(RestartPlots, GiveAZoneForEveryStep) {
    PlotCase c;
    c.convert();
    EXPECT_EQ(c.run.clock.time, 0.0);
    EXPECT_TRUE(holds(c.quiet.screenText(), "STEP :: 1 Time :: 31.5\n"));
    for (const char* keyword : {"INTEHEAD", "DOUBHEAD", "PRESSURE", "SWAT    ", "SOIL    ", "SGAS    "})
        EXPECT_TRUE(holds(c.quiet.logText(), "Keyword -> " + std::string(keyword) + " Employed \n"));
    EXPECT_TRUE(holds(c.quiet.screenText(), "Dimension does not match - Restart and Grid file\n"));
    const std::string text = c.folder.read("CASE_X0_PRES.PLT");
    EXPECT_TRUE(holds(text, "TITLE=p<sub>o</sub>PLOT\n"));
    const std::size_t first = text.find("SOLUTIONTIME = 31.5");
    ASSERT_NE(first, std::string::npos);
    EXPECT_NE(text.find("SOLUTIONTIME = 31.5", first + 1), std::string::npos);
    EXPECT_TRUE(holds(text, "3001"));
    EXPECT_FALSE(holds(text, "3002"));  // an inactive cell has no value in the file
    EXPECT_TRUE(holds(c.folder.read("CASE_X0_SWAT.PLT"), "S<sub>w</sub>"));
    EXPECT_TRUE(holds(c.folder.read("CASE_X0_SOIL.PLT"), "S<sub>o</sub>"));
    EXPECT_TRUE(holds(c.folder.read("CASE_X0_SGAS.PLT"), "S<sub>g</sub>"));
    EXPECT_EQ(c.folder.read("CASE_X0_ELSE.PLT"), "");
}

TEST(RestartPlots, GiveOtherRealsFilesOfTheirOwn) {
    PlotCase c;
    c.append(".X0002", "OIL/VISC", {1.5F, 2.5F, 3.5F});
    c.append(".X0002", "RS", {0.5F, 0.6F, 0.7F});
    c.append(".X0002", "LONGLIST", {1, 2, 3, 4, 5, 6});
    c.convert();
    EXPECT_TRUE(holds(c.quiet.screenText(), "Data -> OIL/VISC\n"));
    EXPECT_EQ(c.folder.read("CASE_OIL_VISC_STEP_0002_TIME_31.ECLTXT"), "1.5\n2.5\n3.5\n");
    EXPECT_TRUE(holds(c.folder.read("CASE_0002OIL_VISC.PLT"), "TITLE=OIL/VISC        PLOT"));
    EXPECT_TRUE(holds(c.folder.read("CASE_X0_ELSE.PLT"), "TITLE=RS              PLOT"));
    EXPECT_EQ(linesOf(c.folder.read("CASE_LONGLIST_STEP_0002_TIME_31.ECLTXT")).size(), 6U);
}

TEST(RestartPlots, TakeTheTimesOfFlightOfOurOwnRuns) {
    PlotCase c;
    c.run.clock.reportIndex = 2;
    DiagnosticMaps& maps = c.run.lines.diagnostics;
    for (CellArray<double>* times : {&maps.timeFromInjector, &maps.timeToProducer, &maps.timeSum})
        times->assign(c.run.grid.NCELLS, 12.5);
    for (CellArray<int>* wells : {&maps.injector, &maps.producer, &maps.connection})
        wells->assign(c.run.grid.NCELLS, 1);
    writeRestartFile(c.run.console, c.run.options, c.run.clock, c.run.grid, c.run.state,
                     {c.run.units, c.run.connections, c.run.velocity}, maps);
    c.convert();
    EXPECT_EQ(c.folder.read("CASE_TOFP_STEP_0002_TIME_31.ECLTXT"), "12.5\n12.5\n12.5\n");
    EXPECT_FALSE(std::filesystem::exists(c.path("_PRDID_STEP_0002_TIME_31.ECLTXT")));
}

TEST(RestartPlots, StopAtABrokenFile) {
    PlotCase c;
    const std::string bytes = c.folder.read("CASE.X0002");
    c.folder.write("CASE.X0002", bytes.substr(0, 1300));
    c.run.console = Console{stderr, nullptr, nullptr};
    EXPECT_EXIT(c.convert(), testing::ExitedWithCode(1), "ERROR: File Open Error\n.*CASE.X0002: byte 1236: ");
}

}  // namespace
}  // namespace kvr
