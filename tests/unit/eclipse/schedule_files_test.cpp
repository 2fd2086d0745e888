#include "eclipse/schedule_files.hpp"

#include "eclipse/step_decks.hpp"
#include "unit/deck/sections/schedule_bench.hpp"
#include "unit/eclipse/small_case.hpp"
#include "unit/quiet_console.hpp"

#include <gtest/gtest.h>
#include <numeric>
#include <sstream>

namespace kvr {
namespace {

bool holds(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

int countOf(const std::string& text, const std::string& part) {
    int count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
    return count;
}

const std::string Definitions = R"(WELSPECS
'INJ' 'G' 1 1 5010 'WATER' /
'GASI' 'G' 1 2 5010 'GAS' /
'PROD' 'G' 5 5 5010 'OIL' /
/
COMPDAT
'INJ' 1 1 1 1 'OPEN' 2* 0.5 /
'GASI' 1 2 1 1 'OPEN' 2* 0.5 /
'PROD' 5 5 1 3 'OPEN' 1* 12.5 0.5 1* 2.5 /
/
)";
const std::string Controls = R"(WCONPROD
'PROD' 'OPEN' 'LRAT' 3* 400 1* 2000 /
/
WCONINJE
'INJ' 'WATER' 'OPEN' 'RATE' 50 1* 9000 /
'GASI' 'GAS' 'OPEN' 'RATE' 700 1* 9500 /
/
TSTEP
10 20 /
)";

/// Three wells under controls and a response of two reports at 10 and 30 days.
struct HistoryCase {
    HistoryCase() : bench(Definitions + Controls) {
        bench.readAndClose();
        options.workingFolder = folder.path;
        response.time = {10.0, 30.0};
        response.wellNames = {"PROD", "INJ", "GASI"};
        response.vectors = {{response::WOPR, 1, {300.5, 250.25}}, {response::WWPR, 1, {99.5, 149.75}},
                            {response::WGPR, 1, {123.4, 111.1}},  {response::WBHP, 1, {2100.0, 2050.0}},
                            {response::WWIR, 2, {50.0, 49.0}},    {response::WBHP, 2, {4000.0, 4100.0}},
                            {response::WGIR, 3, {700.0, 650.0}},  {response::WBHP, 3, {5000.0, 5100.0}}};
    }
    std::string write() {
        Write_ECLSchedule_forHM(console, options, units, bench.schedule, response);
        return folder.read("SCHEDULE_TEMPORARY_FOR_HM.DATA");
    }
    ScheduleBench bench;
    ScratchFolder folder;
    QuietConsole quiet;
    Console console = quiet.console;
    RunOptions options;
    UnitSystem units;
    SummaryResponse response;
};

/// What our own reader makes of a schedule behind the definitions of the wells.
struct ReadBack : ScheduleBench {
    explicit ReadBack(const std::string& text, const UnitSystem& units = {})
        : ScheduleBench(Definitions + text) {
        deck.units = units;
        readAndClose();
    }
};

// --- history ---------------------------------------------------------------------------------------------

TEST(HistorySchedule, IsReadBackWithItsRatesAndPressures) {
    HistoryCase c;
    const ReadBack back(c.write());
    ASSERT_EQ(back.schedule.steps.size(), 2U);
    const ScheduleStep& second = back.schedule.steps[1];
    const ScheduleWell& water = second.wells[0];
    const ScheduleWell& gas = second.wells[1];
    const ScheduleWell& producer = second.wells[2];
    EXPECT_EQ(producer.histOil, 250.25);
    EXPECT_EQ(producer.histWater, 149.75);
    EXPECT_DOUBLE_EQ(producer.histGas, 111.1 * c.units.gasRate);
    EXPECT_EQ(producer.histBhp, 2050.0);
    EXPECT_EQ(producer.control, "LRAT");
    EXPECT_EQ(water.histInjRate, 49.0);
    EXPECT_EQ(water.histInjBhp, 4100.0);
    EXPECT_DOUBLE_EQ(gas.histInjRate, 650.0 * c.units.gasRate);
    EXPECT_EQ(gas.histInjBhp, 5100.0);
    EXPECT_EQ(back.schedule.steps[0].wells[2].histOil, 300.5);
}

TEST(HistorySchedule, StepsFromReportToReport) {
    HistoryCase c;
    const ReadBack back(c.write());
    EXPECT_EQ(back.schedule.stepLength, (std::vector<double>{10.0, 20.0}));
    c.response.time = {0.0, 10.0};  // what stands at time zero closes no step
    EXPECT_EQ(countOf(c.write(), "TSTEP"), 1);
}

TEST(HistorySchedule, HasABannerPerReportAndItsColumns) {
    HistoryCase c;
    const std::string text = c.write();
    const std::string dashes(40, '-');
    EXPECT_EQ(text.find(dashes + "\n--  Time = 10\n" + dashes + "\nWCONINJH\n"), 0U);
    EXPECT_TRUE(holds(text, "'INJ' WATER OPEN 50 4000 6* RATE /\n"));
    EXPECT_TRUE(holds(text, "'GASI' GAS OPEN 700 5000 6* BHP /\n/\n"));
    EXPECT_TRUE(holds(text, "WCONHIST\n'PROD' OPEN LRAT 300.5 99.5 123.4 3* 2100 /\n/\nTSTEP\n10 /\n"));
}

TEST(HistorySchedule, TakesTheStepsBetweenReportsWhileGasIsHeldAtAPressure) {
    HistoryCase c;
    c.response.between = {{4.0, 0, {310.0, 95.0, 125.0, 2110.0, 51.0, 4010.0, 710.0, 5200.0}},
                          {15.0, 1, {290.0, 120.0, 120.0, 2090.0, 50.5, 4020.0, 690.0, 5010.0}},
                          {40.0, 1, {1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 1.0}}};  // behind its report
    const std::string text = c.write();
    EXPECT_TRUE(holds(text, "--  Time = 4\n"));
    EXPECT_TRUE(holds(text, "'GASI' GAS OPEN 710 5200 6* BHP /\n/\n"));
    EXPECT_TRUE(holds(text, "'PROD' OPEN LRAT 310 95 125 3* 2110 /\n/\nTSTEP\n4 /\n"));
    EXPECT_EQ(ReadBack(text).schedule.stepLength, (std::vector<double>{4.0, 6.0, 5.0, 15.0}));
    for (StepBetween& step : c.response.between) step.values.back() = 0.0;  // no pressure, so at its rate
    EXPECT_EQ(ReadBack(c.write()).schedule.stepLength, (std::vector<double>{10.0, 20.0}));
}

TEST(HistorySchedule, WithoutProducersStillSteps) {
    HistoryCase c;
    ScheduleBench onlyInjector(
        "WELSPECS\n'INJ' 'G' 1 1 5010 'WATER' /\n/\nCOMPDAT\n'INJ' 1 1 1 1 /\n/\n"
        "WCONINJE\n'INJ' 'WATER' 'OPEN' 'RATE' 50 /\n/\nTSTEP\n10 20 /\n");
    onlyInjector.readAndClose();
    Write_ECLSchedule_forHM(c.quiet.console, c.options, c.units, onlyInjector.schedule, c.response);
    const std::string text = c.folder.read("SCHEDULE_TEMPORARY_FOR_HM.DATA");
    EXPECT_FALSE(holds(text, "WCONHIST"));
    EXPECT_EQ(countOf(text, "TSTEP"), 2);
}

TEST(HistorySchedule, TakesTheRateOfTheDeckWhereTheResponseHasNone) {
    HistoryCase c;
    c.response.vectors.erase(c.response.vectors.begin() + 4, c.response.vectors.end());
    const std::string text = c.write();
    EXPECT_TRUE(holds(text, "'INJ' WATER OPEN 50 1* 6* RATE /\n"));
    EXPECT_TRUE(holds(text, "'GASI' GAS OPEN 700 1* 6* RATE /\n"));
}

TEST(HistorySchedule, LeavesOutAProducerWithoutRates) {
    HistoryCase c;
    c.response.vectors.erase(c.response.vectors.begin(), c.response.vectors.begin() + 3);
    EXPECT_FALSE(holds(c.write(), "WCONHIST"));
    EXPECT_EQ(countOf(c.quiet.screenText(), "THE SUMMARY HAS NO RATES OF PRODUCER PROD"), 1);
}

TEST(HistorySchedule, IsInTheUnitsOfTheDeck) {
    HistoryCase c;
    c.units = metricUnits();
    c.bench.deck.units = c.units;
    c.response.units = ResponseUnits::Field;  // own files are, whatever the deck
    const ReadBack back(c.write(), c.units);
    const ScheduleWell& producer = back.schedule.steps[0].wells[2];
    // Internal volumes of a METRIC deck are cubic feet: 5.614583 of them a barrel, 1000 an Mscf.
    EXPECT_NEAR(producer.histOil, 300.5 * 5.614583, 1e-8);
    EXPECT_NEAR(producer.histGas, 123.4 * 1000.0, 1e-6);
    EXPECT_NEAR(producer.histBhp, 2100.0, 1e-9);
    c.response.units = ResponseUnits::Metric;
    EXPECT_TRUE(holds(c.write(), "'PROD' OPEN LRAT 300.5 99.5 123.4 3* 2100 /\n"));
}

TEST(HistorySchedule, StopsWhereItsFileCannotStand) {
    HistoryCase c;
    c.options.workingFolder = "/nowhere/at/all/";
    c.console = consoleOnStandardError();
    EXPECT_EXIT(c.write(), testing::ExitedWithCode(1),
                "ERROR: SMSPEC file is not given. Cannot Check .SXXXX file.\n"
                "       File I/O Error, in Summary file");
}

// --- one step --------------------------------------------------------------------------------------------

/// The wells of the history case as a run controls them.
struct StepCase : HistoryCase {
    StepCase() {
        const auto add = [this](const std::string& name, const std::string& kind, const std::string& control,
                                double target, double limit) -> Well& {
            Well well;
            well.WellName = name;
            well.WellKind = kind;
            well.deckControl = well.WellControl = control;
            well.TargetRate = target;
            well.BhpLimit = limit;
            wells.wells.push_back(well);
            return wells.wells.back();
        };
        add("INJ", "inj", "rate", 60.0, 9000.0).InjectFluid = "wat";
        add("GASI", "inj", "rate", 700.0 * units.gasRate, 9500.0).InjectFluid = "gas";
        add("PROD", "prd", "lrat", -410.0, 2000.0);
    }
    std::string write(int step, double dt) {
        Write_ECLSchedule_forOP(console, options, units, bench.schedule.steps[0], wells, 0.0, step, dt);
        return folder.read(stepScheduleName(step));
    }
    WellRecord wells;
};

/// The file has the definitions of the wells itself.
struct WholeReadBack : ScheduleBench {
    explicit WholeReadBack(const std::string& text) : ScheduleBench(text) { readAndClose(); }
};

TEST(StepSchedule, IsReadBackWithItsControls) {
    StepCase c;
    const WholeReadBack back(c.write(7, 12.5));
    ASSERT_EQ(back.schedule.steps.size(), 1U);
    const ScheduleStep& step = back.schedule.steps[0];
    EXPECT_EQ(step.wells[0].injRate, 60.0);
    EXPECT_EQ(step.wells[0].injBhp, 9000.0);
    EXPECT_EQ(step.wells[1].injType, "GAS");
    EXPECT_NEAR(step.wells[1].injRate, 700.0 * c.units.gasRate, 1e-9);
    EXPECT_EQ(step.wells[2].prodLiquid, 410.0);
    EXPECT_EQ(step.wells[2].prodBhp, 2000.0);
    EXPECT_EQ(step.wells[2].control, "LRAT");
    EXPECT_EQ(back.schedule.stepLength, std::vector<double>{12.5});
}

TEST(StepSchedule, DefinesItsWellsAsTheDeckDoes) {
    StepCase c;
    const WholeReadBack back(c.write(7, 12.5));
    const ScheduleStep& before = c.bench.schedule.steps[0];
    const ScheduleStep& after = back.schedule.steps[0];
    ASSERT_EQ(after.wells.size(), before.wells.size());
    for (std::size_t w = 0; w < before.wells.size(); ++w) {
        EXPECT_EQ(after.wells[w].name, before.wells[w].name);
        EXPECT_EQ(after.wells[w].headI, before.wells[w].headI);
        EXPECT_EQ(after.wells[w].refDepth, before.wells[w].refDepth);
        EXPECT_EQ(after.wells[w].preferredPhase, before.wells[w].preferredPhase);
    }
    const std::vector<ScheduleCompletion> a(after.completions.begin(), after.completions.end());
    const std::vector<ScheduleCompletion> b(before.completions.begin(), before.completions.end());
    ASSERT_EQ(a.size(), b.size());
    for (std::size_t n = 0; n < b.size(); ++n) {
        EXPECT_EQ(a[n].wellName, b[n].wellName);
        EXPECT_EQ(a[n].i, b[n].i);
        EXPECT_EQ(a[n].k2, b[n].k2);
        EXPECT_EQ(a[n].transFactor, b[n].transFactor);
        EXPECT_EQ(a[n].diameter, b[n].diameter);
        EXPECT_EQ(a[n].skin, b[n].skin);
        EXPECT_EQ(a[n].direction, b[n].direction);
    }
}

TEST(StepSchedule, PutsARateUnderItsControl) {
    StepCase c;
    EXPECT_TRUE(holds(c.write(1, 5.0), "'PROD' OPEN LRAT 1* 1* 1* 410 1* 2000 /\n"));
    c.wells.wells[2].deckControl = "grat";
    c.wells.wells[2].TargetRate = -50.0 * c.units.gasRate;
    EXPECT_TRUE(holds(c.write(1, 5.0), "'PROD' OPEN GRAT 1* 1* 50 1* 1* 2000 /\n"));
    c.wells.wells[2].deckControl = "bhp";
    EXPECT_TRUE(holds(c.write(1, 5.0), "'PROD' OPEN BHP 1* 1* 1* 1* 1* 2000 /\n"));
    c.wells.wells[2].shut = true;
    EXPECT_TRUE(holds(c.write(1, 5.0), "'PROD' SHUT BHP "));
    EXPECT_TRUE(holds(c.quiet.logText(), " -> File Generated for Schedule of Optimization    :: "));
}

TEST(StepSchedule, KeepsTheLimitsBesideTheControl) {
    StepCase c;
    Well& well = c.wells.wells[2];
    well.holdsLimits = true;
    well.givenControl = "orat";  // the limit of liquid holds at present
    well.targetOil = -100.0;
    well.targetLiquid = -410.0;
    EXPECT_TRUE(holds(c.write(1, 5.0), "'PROD' OPEN ORAT 100 1* 1* 410 1* 2000 /\n"));
    well.givenControl = "bhp";  // with a limit of water, which has a word of its own
    well.deckControl = "wlim";
    well.TargetRate = well.targetWater = -500.0;
    well.targetOil = well.targetLiquid = 0.0;
    EXPECT_TRUE(holds(c.write(1, 5.0), "'PROD' OPEN BHP 1* 500 1* 1* 1* 2000 /\n"));
    Well& injector = c.wells.wells[0];
    injector.holdsLimits = true;
    injector.givenControl = "bhp";
    injector.targetResv = 90.0;
    EXPECT_TRUE(holds(c.write(1, 5.0), "'INJ' WATER OPEN BHP 60 90 9000 /\n"));
}

TEST(StepSchedule, GivesTheRateOfTheTimeThatAWellIsOn) {
    StepCase c;
    c.wells.wells[2].efficiency = 0.5;
    const std::string text = c.write(1, 5.0);
    EXPECT_TRUE(holds(text, "'PROD' OPEN LRAT 1* 1* 1* 820 1* 2000 /\n"));
    EXPECT_TRUE(holds(text, "WEFAC\n'PROD' 0.5 /\n/\n"));
}

TEST(StepSchedule, PassesOverAProducerWhoseControlItDoesNotKnow) {
    StepCase c;
    c.wells.wells[2].deckControl = "strange";
    const std::string text = c.write(1, 5.0);
    EXPECT_FALSE(holds(text, "WCONPROD"));
    EXPECT_TRUE(holds(text, "TSTEP\n5 /\n"));
    EXPECT_TRUE(holds(c.quiet.screenText(), " Control Mode is not surpported for producer\n"));
}

TEST(StepSchedule, StopsWhereItsFileCannotStand) {
    StepCase c;
    c.options.workingFolder = "/nowhere/at/all/";
    c.console = consoleOnStandardError();
    EXPECT_EXIT(c.write(1, 5.0), testing::ExitedWithCode(1),
                "ERROR: Fatal Error during module Write_ECLSchedule_forOP\n"
                "ERROR: Fatal Error during module Write_ECLSchedule_forOP.\n"
                "       Writing of Optimization schedule faild...");
}

// --- decks of steps --------------------------------------------------------------------------------------

const std::string MainDeck =
    "RUNSPEC\nDIMENS\n 3 1 1 /\n-- SOLUTION in a comment\nPROPS\nPVDO\n/\n"
    "SOLUTION  ====\nPRESSURE\n3*4000 /\nSWAT\n3*0.2 /\nSUMMARY\nFOPR\nSCHEDULE\n"
    "TSTEP\n5 /\nEND\nTUNEKVR\nECLTRACE\n";

TEST(DeckSplitter, IncludesTheFilesOfTheStepInPlaceOfTwoSections) {
    SmallCase c(3, 1, 1);
    const QuietConsole quiet;
    c.folder.write("CASE.DATA", MainDeck);
    splitDeck(quiet.console, c.run.options, 12);
    EXPECT_EQ(
        c.folder.read("CASE_RST0012.DATA"),
        "RUNSPEC\nDIMENS\n 3 1 1 /\n-- SOLUTION in a comment\nPROPS\nPVDO\n/\nSOLUTION  ====\nINCLUDE\n"
        "'SOLUTION_STP0012.DATA' /\nSUMMARY\nFOPR\nSCHEDULE\nINCLUDE\n'SCHEDULE_STP0012.DATA' /\nEND\n");
    EXPECT_TRUE(holds(quiet.logText(), " -> Finished Reading RUNSPEC. Move to Next Section ::\n"));
}

TEST(DeckSplitter, TakesNoSectionFromATitleOrFromWhatIsSkipped) {
    SmallCase c(3, 1, 1);
    const std::string head = "RUNSPEC\nTITLE\nEND of field life study\nSKIP\nSCHEDULE\nEND\nENDSKIP\nOIL\n";
    c.folder.write("CASE.DATA", head + "SOLUTION\nSWAT\nSCHEDULE\nTSTEP\n");
    splitDeck(c.run.console, c.run.options, 1);
    EXPECT_EQ(c.folder.read("CASE_RST0001.DATA"),
              head +
                  "SOLUTION\nINCLUDE\n'SOLUTION_STP0001.DATA' /\nSCHEDULE\nINCLUDE\n"
                  "'SCHEDULE_STP0001.DATA' /\nEND\n");
}

TEST(DeckSplitter, GivesADeckWithoutScheduleOne) {
    SmallCase c(3, 1, 1);
    c.folder.write("CASE.DATA", "RUNSPEC\nSOLUTION\nSWAT\n");
    splitDeck(c.run.console, c.run.options, 1);
    EXPECT_EQ(c.folder.read("CASE_RST0001.DATA"),
              "RUNSPEC\nSOLUTION\nINCLUDE\n'SOLUTION_STP0001.DATA' /\nSCHEDULE\nINCLUDE\n"
              "'SCHEDULE_STP0001.DATA' /\nEND\n");
}

TEST(DeckSplitter, StopsWithoutTheMainDeck) {
    SmallCase c(3, 1, 1);
    EXPECT_EXIT(splitDeck(consoleOnStandardError(), c.run.options, 1), testing::ExitedWithCode(1),
                "Error :: Optimization, cannot find original input file ");
    EXPECT_FALSE(std::filesystem::exists(c.path("_RST0001.DATA")));
}

TEST(DeckSplitter, TellsOfADeckThatEndsEarly) {
    SmallCase c(3, 1, 1);
    const QuietConsole quiet;
    c.folder.write("CASE.DATA", "RUNSPEC\nSOLUTION\nSWAT\n");
    splitDeck(quiet.console, c.run.options, 1);
    EXPECT_TRUE(holds(quiet.logText(), "FILE I/O -> END OF FILE..\n"));
}

/// Numbers of a block, with counts before an asterisk spelled out.
std::vector<double> blockOf(const std::string& text, const std::string& keyword) {
    std::istringstream lines(text.substr(text.find(keyword + "\n")));
    std::string line;
    std::getline(lines, line);
    std::vector<double> values;
    while (std::getline(lines, line) && line != "/") {
        std::istringstream words(line);
        for (std::string word; words >> word;) {
            const std::size_t star = word.find('*');
            const int count = star == std::string::npos ? 1 : std::stoi(word.substr(0, star));
            values.insert(values.end(), static_cast<std::size_t>(count),
                          std::stod(star == std::string::npos ? word : word.substr(star + 1)));
        }
    }
    EXPECT_EQ(line, "/") << "each block ends with a slash line";
    return values;
}

TEST(StepSolution, HasAValuePerCellAndASlashLineBehindEachBlock) {
    SmallCase c(5, 4, 1);
    const QuietConsole quiet;
    c.run.state.Pressure[3] = 3001.25;
    c.run.state.Sw[20] = 1.0 / 3.0;
    writeStepSolution(quiet.console, c.run.options, c.run.units, c.run.state, 4);
    const std::string text = c.folder.read("SOLUTION_STP0004.DATA");
    const std::vector<double> pressure = blockOf(text, "PRESSURE"), water = blockOf(text, "SWAT    ");
    ASSERT_EQ(pressure.size(), 20U);
    EXPECT_EQ(pressure[2], 3001.25);
    ASSERT_EQ(water.size(), 20U);
    EXPECT_EQ(water[19], 1.0 / 3.0);
    EXPECT_FALSE(holds(text, "SGAS"));
    EXPECT_TRUE(holds(quiet.logText(), " -> File Generated for Solution of Optimization    :: "));
}

TEST(StepSolution, HasNoLineThatSimulatorsDoNotReadWhole) {
    SmallCase c(30, 1, 1);
    for (CellId cell = 1; cell <= 30; ++cell) c.run.state.Sw[cell] = 1e-10 / (3.0 + cell / 2);
    writeStepSolution(c.run.console, c.run.options, c.run.units, c.run.state, 1);
    std::istringstream lines(c.folder.read("SOLUTION_STP0001.DATA"));
    for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 128U);
    const std::vector<double> water = blockOf(c.folder.read("SOLUTION_STP0001.DATA"), "SWAT    ");
    ASSERT_EQ(water.size(), 30U);
    for (CellId cell = 1; cell <= 30; ++cell)
        EXPECT_EQ(water[static_cast<std::size_t>(cell) - 1], c.run.state.Sw[cell]);
}

TEST(StepSolution, HasGasAndItsRatioInTheUnitsOfTheDeck) {
    SmallCase c(3, 1, 1);
    c.run.options.hasGas = true;
    c.run.state.Rs[2] = 226.196674;  // 1.27 Mscf/stb
    writeStepSolution(c.run.console, c.run.options, c.run.units, c.run.state, 1);
    const std::string text = c.folder.read("SOLUTION_STP0001.DATA");
    EXPECT_EQ(blockOf(text, "SGAS    ").size(), 3U);
    EXPECT_NEAR(blockOf(text, "RS      ")[1], 1.27, 1e-6);
    writeStepSolution(c.run.console, c.run.options, metricUnits(), c.run.state, 1);
    EXPECT_NEAR(blockOf(c.folder.read("SOLUTION_STP0001.DATA"), "PRESSURE")[0], 3001.0 / 14.50377, 1e-9);
}

TEST(RestartSolution, GoesOnFromTheStepBeforeOrStartsAsTheDeckDoes) {
    SmallCase c(3, 1, 1);
    c.folder.write("CASE.DATA", MainDeck);
    writeRestartSolution(c.run.console, c.run.options, 1);
    EXPECT_EQ(c.folder.read("SOLUTION_STP0001.DATA"), "PRESSURE\n3*4000 /\nSWAT\n3*0.2 /\n");
    writeRestartSolution(c.run.console, c.run.options, 3);
    EXPECT_EQ(c.folder.read("SOLUTION_STP0003.DATA"), "RESTART\n'CASE_RST0002' 2 /\n");
}

}  // namespace
}  // namespace kvr
