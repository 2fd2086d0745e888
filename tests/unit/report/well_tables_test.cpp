#include "report/well_tables.hpp"

#include "report/material_balance.hpp"
#include "report/well_figures.hpp"
#include "report/well_rows.hpp"
#include "unit/pressure/well_samples.hpp"
#include "unit/quiet_console.hpp"
#include "unit/scratch_folder.hpp"

#include <gtest/gtest.h>
#include <map>
#include <sstream>

namespace kvr {
namespace {

/// A column of two cells with an injector and a producer, its output set open in a scratch folder.
struct WellRun {
    WellRun() {
        run.console = {nullptr, nullptr, nullptr};
        openOutputs(folder.path, run.outputs, run.console);
        run.grid = sample::column(2);
        run.state = sample::state(2);
        run.state.PoreVolume.assign(2, 5000.0);
        run.state.So.assign(2, 0.8);
        run.state.Sw.assign(2, 0.2);
        run.options.outputXls = run.options.outputPlt = run.options.outputKvrView = "Yes";
        run.pressure.AveragePressure = 3000.0;
        Well injector = sample::well("inj", "rate", 1);
        injector.WellQw = injector.connections[0].ConnQw = injector.reservoirRate = 100.0;
        injector.Bhp = 3500.0;
        Well producer = sample::well("prd", "bhp", 2);
        producer.WellQo = producer.connections[0].ConnQo = -60.0;
        producer.WellQw = producer.connections[1].ConnQw = -20.0;
        producer.WellQg = producer.connections[0].ConnQg = -178.10761725;  // 1 Mscf/day
        producer.reservoirRate = -100.0;
        producer.Bhp = 1000.0;
        run.wells.wells = {injector, producer};
    }
    ~WellRun() {
        closeOutputs(run.outputs);
        closeLog(run.outputs, run.console);
    }
    void start() {
        startWellTables(run);
        advanceBalance(run, 0.0);
    }
    void step(double days) {
        run.clock.time += days;
        advanceBalance(run, days);
        reportWells(run);
    }
    [[nodiscard]] std::string text(const std::string& name) const { return folder.read(name); }
    [[nodiscard]] std::string logText() const {
        std::fflush(run.console.log);
        return folder.read("KVR_dbg.out");
    }

    ScratchFolder folder;
    Simulation run;
};

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

std::vector<std::string> wordsOf(const std::string& line) {
    std::vector<std::string> words;
    std::istringstream in(line);
    for (std::string word; in >> word;) words.push_back(word);
    return words;
}

/// A row of a table by column name; the first line is the head.
std::map<std::string, double> rowOf(const std::string& table, std::size_t row) {
    const auto lines = linesOf(table);
    const auto names = wordsOf(lines.at(0));
    const auto values = wordsOf(lines.at(row));
    EXPECT_EQ(names.size(), values.size());
    std::map<std::string, double> result;
    for (std::size_t n = 0; n < std::min(names.size(), values.size()); ++n)
        result[names[n]] = std::stod(values[n]);
    return result;
}

int countOf(const std::string& text, const std::string& part) {
    int count = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
    return count;
}

TEST(WaterCut, IsZeroWithoutLiquid) {
    EXPECT_EQ(waterCut({0.0, 0.0, 5.0, 0.0}), 0.0);
    EXPECT_EQ(waterCut({60.0, 20.0, 0.0, 0.0}), 0.25);
    EXPECT_EQ(gasOilRatio({0.0, 20.0, 3.0, 0.0}), 0.0);
}

TEST(RecoveryTable, HasARowForTimeZeroAndOneForEveryStep) {
    WellRun run;
    run.start();
    run.step(10.0);
    run.step(10.0);
    const std::string table = run.text("KVR_Run_Recovery.out");
    ASSERT_EQ(linesOf(table).size(), 4U);
    EXPECT_EQ(rowOf(table, 1)["TIME"], 0.0);
    EXPECT_EQ(rowOf(table, 1)["FOPR"], 0.0);
    EXPECT_EQ(rowOf(table, 1)["FPR"], 3000.0);
    auto last = rowOf(table, 3);
    EXPECT_EQ(last["TIME"], 20.0);
    EXPECT_EQ(last["FOPR"], 60.0);
    EXPECT_EQ(last["FWPR"], 20.0);
    EXPECT_NEAR(last["FGPR"], 1.0, 1e-8);
    EXPECT_NEAR(last["FGOR"], 1.0 / 60.0, 1e-9);
    EXPECT_EQ(last["FWCT"], 0.25);
    EXPECT_EQ(last["FWIR"], 100.0);
    EXPECT_EQ(last["FOPT"], 1200.0);
    EXPECT_EQ(last["FWPT"], 400.0);
    EXPECT_NEAR(last["FGPT"], 20.0, 1e-7);
    EXPECT_EQ(last["FWIT"], 2000.0);
    EXPECT_EQ(last["WBHP:INJ"], 3500.0);
    EXPECT_EQ(last["WWIR:INJ"], 100.0);
    EXPECT_EQ(last["WOPR:PROD"], 60.0);
    EXPECT_EQ(last["WWPR:PROD"], 20.0);
    EXPECT_EQ(last["WWIR:PROD"], 0.0);
    EXPECT_NE(run.logText().find("File Replaced : KVR_Run_Recovery.out"), std::string::npos);
}

TEST(RecoveryTable, NamesTheColumnsInTheirOrder) {
    WellRun run;
    run.start();
    const auto names = wordsOf(linesOf(run.text("KVR_Run_Recovery.out")).at(0));
    const std::vector<std::string> fixed = {"TIME", "FOPR", "FWPR", "FGPR", "FGOR", "FWCT", "FWIR", "FGIR",
                                            "FOPT", "FWPT", "FGPT", "FWIT", "FGIT", "FPR",  "FOE"};
    ASSERT_EQ(names.size(), fixed.size() + 12U);
    EXPECT_EQ(std::vector<std::string>(names.begin(), names.begin() + 15), fixed);
    EXPECT_EQ(names[15], "WBHP:INJ");
    EXPECT_EQ(names[26], "WGIR:PROD");
}

TEST(RecoveryTable, HasColumnsForWellsThatComeLater) {
    WellRun run;
    run.run.schedule.steps.resize(1);
    for (const char* name : {"INJ", "PROD", "LATE 1"}) {
        ScheduleWell well;
        well.name = name;
        run.run.schedule.steps[0].wells.push_back(well);
    }
    run.start();
    run.step(1.0);
    EXPECT_EQ(rowOf(run.text("KVR_Run_Recovery.out"), 2).count("WOPR:LATE_1"), 1U);
}

TEST(RecoveryTable, StaysAsItIsInAPhaseOfTheAnalyticalSolver) {
    WellRun run;
    run.run.options.solverPhaseName = {"btf"};
    run.start();
    run.step(10.0);
    EXPECT_EQ(run.text("KVR_Run_Recovery.out"), "");
    EXPECT_EQ(run.logText().find("File Replaced : KVR_Run_Recovery.out"), std::string::npos);
}

TEST(SinkSourceTable, NamesEveryColumnOncePerWell) {
    WellRun run;
    run.start();
    run.step(10.0);
    run.step(10.0);
    const auto lines = linesOf(run.text("KVR_TPlot_Well_Rate.plt"));
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[0], "TITLE=WELL_SINKSOURCE_DATA_OUTPUT");
    EXPECT_EQ(lines[1],
              "VARIABLES = TIME, PVI,WWIT_INJ,WWIR_INJ,WGIT_INJ,WVIT_INJ,WGIR_INJ,WVIR_INJ,WWPR_INJ,WOPT_INJ,"
              "WWPT_INJ,WGPT_INJ,WVPT_INJ,WOPR_INJ,WGPR_INJ,WVPR_INJ,WWCT_INJ,WWIT_PROD,WWIR_PROD,WGIT_PROD,"
              "WVIT_PROD,WGIR_PROD,WVIR_PROD,WWPR_PROD,WOPT_PROD,WWPT_PROD,WGPT_PROD,WVPT_PROD,WOPR_PROD,"
              "WGPR_PROD,WVPR_PROD,WWCT_PROD,FOIP,FWIP,FGIP,FOPR,FWPR,FGPR,FOPT,FWPT,FGPT,FWCT,FGOR,FPR,"
              "FOIR,FWIR,FGIR,FOIT,FWIT,FGIT,FOE,NPV,dEUR");
    const auto values = wordsOf(lines[3]);
    ASSERT_EQ(values.size(), static_cast<std::size_t>(countOf(lines[1], ",") + 1));
    EXPECT_EQ(values[2], "2000") << "100 stb/day over two steps of 10 days";
    EXPECT_EQ(values[1], "0.2") << "2000 rb into 10000 rb of pores";
}

TEST(SinkSourceTable, CarriesUnitsWithTheOutsideFormatOn) {
    WellRun run;
    run.run.options.outputEclipse = "Yes";
    run.start();
    const auto lines = linesOf(run.text("KVR_TPlot_Well_Rate.plt"));
    EXPECT_EQ(lines[1].rfind("# UNITS : DAYS, - ,STB,STB/D,MSCF,RB,MSCF/D,RB/D,STB/D,STB,STB,MSCF,RB,STB/D,"
                             "MSCF/D,RB/D,FCTN,STB,",
                             0),
              0U);
    EXPECT_EQ(countOf(lines[1], ","), countOf(lines[2], ","));
}

TEST(WellPropertyTable, ShowsTheFirstCompletedCell) {
    WellRun run;
    run.run.state.Rs[1] = 1.27 / GasRatioFactor;
    run.run.wells.wells[1].connections.clear();
    run.start();
    run.step(10.0);
    const auto lines = linesOf(run.text("KVR_TPlot_Well_Blk.plt"));
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0], "TITLE=WELL_GRID_PROPERTY_OUTPUT");
    EXPECT_EQ(lines[1],
              "VARIABLES = TIME ,WBHP_INJ,POIL_INJ,PBUB_INJ,SOIL_INJ,SWAT_INJ,SGAS_INJ,RS___INJ,DENO_INJ,"
              "DENW_INJ,DENG_INJ,VISO_INJ,VISW_INJ,VISG_INJ,WBHP_PROD,POIL_PROD,PBUB_PROD,SOIL_PROD,"
              "SWAT_PROD,SGAS_PROD,RS___PROD,DENO_PROD,DENW_PROD,DENG_PROD,VISO_PROD,VISW_PROD,"
              "VISG_PROD");
    const auto values = wordsOf(lines[2]);
    ASSERT_EQ(values.size(), 27U);
    EXPECT_EQ(values[2], "3000");
    EXPECT_EQ(values[4], "0.8");
    EXPECT_EQ(values[7], "1.27");
    EXPECT_EQ(values[15], "0") << "a well without a completed cell";
}

TEST(WellBlockTable, HasAHeadPerWellAndALinePerCompletedCell) {
    WellRun run;
    run.run.wells.wells.push_back(sample::well("prd", "orat", 0));
    run.run.wells.wells[2].LocI = 7;
    run.start();
    run.step(10.0);
    const auto lines = linesOf(run.text("KVR_Excl_Well_Blk.xls"));
    const std::string head = "NO. TYPE I   J  CMPLTN  CTRL   WOPR       WGPR       WIR        BHP       WCT";
    ASSERT_EQ(lines.size(), 7U);
    EXPECT_EQ(lines[0], head);
    EXPECT_EQ(lines[2], head);
    EXPECT_EQ(wordsOf(lines[1]),
              (std::vector<std::string>{"1", "wat", "1", "1", "1", "rate", "0", "0", "100", "3500", "0"}));
    EXPECT_EQ(wordsOf(lines[3]),
              (std::vector<std::string>{"2", "oil", "1", "1", "1", "bhp", "60", "1", "0", "1000", "0"}));
    EXPECT_EQ(wordsOf(lines[4]),
              (std::vector<std::string>{"2", "oil", "1", "1", "2", "bhp", "0", "0", "0", "1000", "1"}));
    EXPECT_EQ(wordsOf(lines[6]),
              (std::vector<std::string>{"3", "oil", "7", "0", "0", "orat", "0", "0", "0", "0", "0"}));
    EXPECT_NE(run.logText().find("Info Added in FILE : Well_Blk.xls"), std::string::npos);
}

TEST(WellTable, GivesAWellWithoutOpenCompletionsItsRow) {
    WellRun run;
    run.run.wells.wells.push_back(sample::well("prd", "orat", 0));
    run.start();
    run.step(10.0);
    const auto lines = linesOf(run.text("KVR_Excl_Well.xls"));
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[3], "10\tPROD\toil\t0\t0\t0\torat\t0\t0\t0\t0\t0\t0\t0\t0\t0\t0\t0\t0\t0\t0");
}

TEST(ProductionTables, ListTheProducersOfEveryStep) {
    WellRun run;
    run.start();
    run.step(10.0);
    const auto rates = linesOf(run.text("KVR_Run_Production.out"));
    ASSERT_EQ(rates.size(), 2U);
    EXPECT_EQ(wordsOf(rates[1]), (std::vector<std::string>{"10", "PROD", "60", "20", "1"}));
    const auto cuts = linesOf(run.text("KVR_Run_Wct.out"));
    ASSERT_EQ(cuts.size(), 2U);
    EXPECT_EQ(wordsOf(cuts[1]), (std::vector<std::string>{"10", "PROD", "0.25"}));
    EXPECT_NE(run.logText().find("Info Added in FILE : KVR_Run_Production.out\nInfo Added in FILE : "
                                 "KVR_Run_Wct.out\nFile Replaced : KVR_Run_Recovery.out\n"),
              std::string::npos);
}

TEST(ReportWells, WritesOnlyWhatTheSwitchesAskFor) {
    WellRun run;
    run.run.options.outputXls = run.run.options.outputPlt = run.run.options.outputKvrView = "No";
    run.start();
    run.step(10.0);
    for (const char* name : {"KVR_Excl_Well_Blk.xls", "KVR_Excl_Well.xls", "KVR_Run_Production.out",
                             "KVR_Run_Wct.out", "KVR_TPlot_Well_Rate.plt", "KVR_TPlot_Well_Blk.plt"})
        EXPECT_EQ(run.text(name), "") << name;
    EXPECT_EQ(linesOf(run.text("KVR_Run_Recovery.out")).size(), 3U);
}

TEST(EmptyRunTables, StartsThreeTablesAnew) {
    WellRun run;
    run.start();
    run.step(10.0);
    emptyRunTables(run.run.console, run.run.outputs);
    for (const char* name : {"KVR_Run_Recovery.out", "KVR_Run_Production.out", "KVR_Run_Wct.out"})
        EXPECT_EQ(run.text(name), "") << name;
    run.step(10.0);
    EXPECT_EQ(rowOf(run.text("KVR_Run_Recovery.out"), 1)["TIME"], 20.0) << "with its head again";
}

TEST(MainPhase, IsTheInjectedOneOrTheLargerLiquid) {
    Well well = sample::well("inj", "rate", 1);
    EXPECT_EQ(mainPhase(well), "wat");
    well = sample::well("prd", "bhp", 1);
    EXPECT_EQ(mainPhase(well), "oil") << "nothing flows";
    well.WellQg = -1.0;
    EXPECT_EQ(mainPhase(well), "gas");
    well.WellQo = -2.0;
    well.WellQw = -1.0;
    EXPECT_EQ(mainPhase(well), "oil");
    well.WellQw = -3.0;
    EXPECT_EQ(mainPhase(well), "wat");
}

}  // namespace
}  // namespace kvr
