#include "report/material_balance.hpp"

#include "report/balance_table.hpp"
#include "unit/quiet_console.hpp"
#include "unit/report/box_model.hpp"
#include "unit/scratch_folder.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

constexpr double Tight = 1e-8;  // relative

/// One active cell of 1000 rb with oil, water and gas, and an output set in a scratch folder.
struct BalanceRun {
    BalanceRun() {
        run.console = {nullptr, nullptr, nullptr};
        openOutputs(folder.path, run.outputs, run.console);
        run.grid = boxModel(1, 1, 1);
        allocateCellState(1, 0, run.state);
        run.options.hasGas = true;
        run.clock.endTime = 100.0;
        setCell(0.9, 0.0, 0.1);
        run.state.PoreVolume[1] = 1000.0;
        run.state.Bo[1] = 1.5;
        run.state.Bw[1] = 1.25;
        run.state.Bg[1] = 0.005;
        run.state.Rs[1] = 200.0;
        run.state.Pressure[1] = 3000.0;
    }
    ~BalanceRun() {
        closeOutputs(run.outputs);
        closeLog(run.outputs, run.console);
    }
    void setCell(double So, double Sw, double Sg) {
        run.state.So[1] = So;
        run.state.Sw[1] = Sw;
        run.state.Sg[1] = Sg;
    }
    void addWell(const char* kind, double qo, double qw, double qg, double reservoir) {
        Well well;
        well.WellKind = kind;
        well.WellQo = qo;
        well.WellQw = qw;
        well.WellQg = qg;
        well.reservoirRate = reservoir;
        run.wells.wells.push_back(well);
    }
    void step(double dt) {
        run.clock.time += dt;
        advanceBalance(run, dt);
        ReportMBE(run);
    }
    [[nodiscard]] const BalanceRow& last() const { return run.balance.rows.back(); }
    [[nodiscard]] std::string log() const { return folder.read("KVR_dbg.out"); }

    ScratchFolder folder;
    Simulation run;
};

std::vector<std::string> words(const std::string& line) {
    std::istringstream in(line);
    std::vector<std::string> parts;
    for (std::string part; in >> part;) parts.push_back(part);
    return parts;
}

TEST(MaterialBalance, CountsFromTheCellsOfARestartOnceItIsReset) {
    BalanceRun balance;
    balance.step(0.0);
    balance.setCell(0.45, 0.5, 0.05);  // as another simulator has left them
    RESET_INITIAL_INPLACE(balance.run);
    balance.step(0.0);
    const BalanceRow& row = balance.run.balance.rows.back();
    EXPECT_EQ(balance.run.balance.initial.oil, 1000.0 * 0.45 / 1.5);
    EXPECT_NEAR(row.errorOil, 0.0, Tight);
    EXPECT_NEAR(row.errorWater, 0.0, Tight);
    EXPECT_NEAR(row.errorGas, 0.0, Tight);
    EXPECT_NEAR(row.recoveryOil, 0.0, Tight);
}

TEST(BalanceError, IsWhatTheWellsDoNotExplain) {
    EXPECT_NEAR(balanceError(1e7, 9.8e6, -2.1e5), -0.001, 1e-3 * Tight);
    EXPECT_EQ(balanceError(1e7, 1e7, 0.0), 0.0);
}

TEST(BalanceError, ComparesWithThePresentWhenThereWasNothing) {
    EXPECT_EQ(balanceError(0.0, 0.0, 0.0), 0.0);
    EXPECT_NEAR(balanceError(0.0, 100.0, 90.0), 0.1, Tight);
    EXPECT_EQ(balanceError(0.0, 0.0, 5.0), 0.0);
}

TEST(RecoveredFraction, IsTheMissingShareOfTheInitialAmount) {
    EXPECT_NEAR(recoveredFraction(1e7, 9e6), 0.1, Tight);
    EXPECT_EQ(recoveredFraction(0.0, 0.0), 0.0);
}

TEST(SumInPlace, SplitsGasIntoFreeAndDissolved) {
    const BalanceRun test;
    const InPlaceSums sums = sumInPlace(test.run.grid, test.run.state, true);
    EXPECT_NEAR(sums.freeGas, 20000.0, 20000.0 * Tight);
    EXPECT_NEAR(sums.dissolvedGas, 120000.0, 120000.0 * Tight);
    EXPECT_NEAR(sums.oil, 600.0, 600.0 * Tight);
    EXPECT_NEAR(sums.gasPore, 100.0, 100.0 * Tight);
    EXPECT_EQ(sums.water, 0.0);
}

TEST(SumInPlace, LeavesOutGasOfARunWithoutItAndInactiveCells) {
    BalanceRun test;
    const InPlaceSums dry = sumInPlace(test.run.grid, test.run.state, false);
    EXPECT_EQ(dry.freeGas + dry.dissolvedGas + dry.gasPore, 0.0);
    test.run.grid.Active[1] = 0;
    EXPECT_EQ(sumInPlace(test.run.grid, test.run.state, true).poreVolume, 0.0);
}

TEST(AdvanceBalance, StartsWithoutErrorAlsoWhereNothingIsInPlace) {
    BalanceRun test;
    test.step(0.0);
    EXPECT_EQ(test.last().errorOil, 0.0);
    EXPECT_EQ(test.last().errorWater, 0.0);  // no water in the cell
    EXPECT_EQ(test.last().errorGas, 0.0);
    EXPECT_EQ(test.last().recoveryOil, 0.0);
}

TEST(AdvanceBalance, AddsTheFlowsOfEachExecutedStep) {
    BalanceRun test;
    test.step(0.0);
    test.addWell("inj", 0.0, 100.0, 0.0, 125.0);
    test.addWell("prd", -6.0, -2.0, -1500.0, -30.0);
    test.step(10.0);
    test.step(10.0);
    const BalanceRecord& record = test.run.balance;
    EXPECT_EQ(record.wells[0].injected.water, 2000.0);
    EXPECT_EQ(record.wells[0].injectedReservoir, 2500.0);
    EXPECT_EQ(record.wells[1].produced.oil, 120.0);
    EXPECT_EQ(record.wells[1].produced.gas, 30000.0);
    EXPECT_EQ(record.wells[1].injected.oil, 0.0);
    EXPECT_EQ(record.field.produced.water, 40.0);
    EXPECT_EQ(record.netInflow.water, 1960.0);
    EXPECT_EQ(test.last().poreVolumesInjected, 2.5);
    EXPECT_EQ(test.last().injectionRate.water, 100.0);
    EXPECT_EQ(test.last().productionRate.oil, 6.0);
    EXPECT_EQ(test.last().flowingWells, 2);
}

TEST(AdvanceBalance, ClosesWhenTheCellLosesWhatTheWellTook) {
    BalanceRun test;
    test.step(0.0);
    test.addWell("prd", -6.0, 0.0, -1200.0, 0.0);  // oil with its dissolved gas, Rs 200
    test.setCell(0.81, 0.0, 0.1);                  // 60 stb less
    test.step(10.0);
    EXPECT_NEAR(test.last().errorOil, 0.0, Tight);
    EXPECT_NEAR(test.last().errorGas, 0.0, Tight);
    EXPECT_NEAR(test.last().recoveryOil, 0.1, Tight);
    EXPECT_NEAR(test.last().deltaRecovery, 0.1, Tight);
    test.run.wells.wells.clear();
    test.step(10.0);
    EXPECT_NEAR(test.last().deltaRecovery, 0.0, Tight);
}

TEST(AdvanceBalance, KeepsNoNetInflowForTheAverageOfAnalyticalLines) {
    BalanceRun test;
    test.run.options.solverPhaseName = {"btf"};
    test.run.options.conservativeMapping = false;
    test.addWell("prd", -6.0, 0.0, 0.0, 0.0);
    test.step(10.0);
    EXPECT_EQ(test.run.balance.netInflow.oil, 0.0);
    EXPECT_EQ(test.run.balance.wells[0].produced.oil, 60.0);
}

TEST(AdvanceBalance, CountsTheWellsWhereAmountsMoveWhateverTheLineSolver) {
    for (const char* method : {"FIM", "IMPES", "streamline"}) {
        BalanceRun test;
        test.run.options.method = method;
        test.run.options.solverPhaseName = {"btf"};
        test.addWell("prd", -6.0, 0.0, 0.0, 0.0);
        test.step(10.0);
        EXPECT_EQ(test.run.balance.netInflow.oil, -60.0) << method;
    }
}

TEST(AdvanceBalance, ValuesProductionAndInjectionAtTheirPrices) {
    BalanceRun test;
    test.run.options.productionPrice = {50.0, -1.0, 2.0};
    test.run.options.injectionPrice = {0.0, -0.5, 0.0};
    test.addWell("inj", 0.0, 10.0, 0.0, 10.0);
    test.addWell("prd", -6.0, -2.0, -178.1076173, -30.0);  // 1 Mscf a day
    test.step(10.0);
    // 6 * 50 - 2 * 1 + 1 * 2 - 10 * 0.5 = 295 $ a day
    EXPECT_NEAR(test.last().deltaNpv, 2950.0, 2950.0 * Tight);
    test.step(10.0);
    EXPECT_NEAR(test.last().npv, 5900.0, 5900.0 * Tight);
}

TEST(ReportMbe, LogsItsBlocksBetweenTheTwoArrows) {
    BalanceRun test;
    test.step(0.0);
    EXPECT_NE(test.log().find("------------------------------------------------------->\n"
                              " Material Balance Report: \n"
                              " Fluid in Place Totals **  \n"
                              " Total pore volume      :: 1000 rb \n"
                              " Total Oil pore volume  :: 900 rb 90 %\n"
                              " Total Wat pore volume  :: 0 rb 0 %\n"
                              " Total Gas pore volume  :: 100 rb 10 %\n"
                              " Average Oil Saturation :: 0.9 [-]\n"
                              " Average Wat Saturation :: 0 [-]\n"
                              " Average Gas Saturation :: 0.1 [-]\n"
                              " FIP Surface Volumes  ** \n"
                              " Surface Oil volume     :: 600 stb\n"
                              " Surface Wat volume     :: 0 stb\n"
                              " Surface Gas volume     :: 0.78604162 M Mscf\n"
                              " Was Dissolved Gas      :: 0.67374996 M Mscf\n"
                              " Was Free Gas           :: 0.11229166 M Mscf\n"
                              "File Replaced : KVR_Run_SweepVolume.out\n"
                              " Function Ends: ReportMBE\n"
                              "<------------------------------------------------------\n"),
              std::string::npos)
        << test.log();
}

TEST(ReportMbe, CountsGasInMillionsOfMscf) {
    BalanceRun test;
    test.setCell(0.0, 0.0, 1.0);
    test.run.state.Bg[1] = 1000.0 / 178107.617;
    test.step(0.0);
    const std::string label = " Surface Gas volume     :: ";
    const std::string log = test.log();
    ASSERT_NE(log.find(label), std::string::npos);
    EXPECT_NEAR(std::stod(log.substr(log.find(label) + label.size())), 1.0, Tight);
}

TEST(ReportMbe, PrintsZeroGasInARunWithoutIt) {
    BalanceRun test;
    test.run.options.hasGas = false;
    test.step(0.0);
    for (const char* line :
         {" Total Gas pore volume  :: 0 rb 0 %\n", " Surface Gas volume     :: 0 M Mscf\n",
          " Was Dissolved Gas      :: 0 M Mscf\n", " Was Free Gas           :: 0 M Mscf\n"})
        EXPECT_NE(test.log().find(line), std::string::npos) << line;
}

TEST(SweepTable, HoldsItsHeadAndEveryRowSoFar) {
    BalanceRun test;
    test.folder.write("KVR_Run_SweepVolume.out", "of an earlier run\n");
    for (const double dt : {0.0, 10.0, 20.0}) {
        test.step(dt);
        std::istringstream in(test.folder.read("KVR_Run_SweepVolume.out"));
        std::string line;
        std::getline(in, line);
        const std::vector<std::string> head = words(line);
        EXPECT_EQ(head,
                  words("|TIME| |PVT| |PVI| |FPR| |MBEO| |MBEW| |MBEG| |FOIP_ORG| |FOIP_NOW| |FWIP_ORG| "
                        "|FWIP_NOW| |FGIP_ORG| |FGIP_NOW| |dEUR| |dNPV| |EUR| |NPV| |FWIR| |FWPR| |FOPR| "
                        "|FWCT| |OIP| |FOE| |FOEW| |FPR| |FOPR| |FGPR| |FWPR| |FWCT| |FGOR| |FWIR| |FGIR| "
                        "|dEUR| |dNPV| |EUR| |NPV| |WRFLO| |CMP_MAS| |CMP_MOL|"));
        std::size_t rows = 0;
        for (; std::getline(in, line); ++rows) EXPECT_EQ(words(line).size(), head.size());
        EXPECT_EQ(rows, test.run.balance.rows.size());
        EXPECT_EQ(words(balanceTableRow(test.run.units, test.run.balance, test.last()))[0],
                  number(test.run.clock.time));
    }
}

TEST(SweepTable, GivesRatesAndTheirRatios) {
    BalanceRun test;
    test.addWell("prd", -6.0, -2.0, -178.1076173 * 12.0, -30.0);  // 12 Mscf a day
    test.step(10.0);
    const std::vector<std::string> row =
        words(balanceTableRow(test.run.units, test.run.balance, test.last()));
    EXPECT_EQ(row[18], "2");                              // FWPR
    EXPECT_EQ(row[19], "6");                              // FOPR
    EXPECT_EQ(row[20], "0.25");                           // FWCT
    EXPECT_NEAR(std::stod(row[26]), 12.0, 12.0 * Tight);  // FGPR, Mscf
    EXPECT_NEAR(std::stod(row[29]), 2.0, 2.0 * Tight);    // FGOR, Mscf/stb
    EXPECT_EQ(row[36], "1");                              // WRFLO
}

TEST(SweepTable, HasNoWaterCutWithoutLiquid) {
    BalanceRun test;
    test.step(0.0);
    EXPECT_EQ(words(balanceTableRow(test.run.units, test.run.balance, test.last()))[20], "0");
}

TEST(BalanceSheet, GetsARowPerStepWithTheExcelSwitchOnly) {
    BalanceRun test;
    test.step(0.0);
    EXPECT_EQ(test.folder.read("KVR_Excl_mbe.xls"), "TIME\tPVI\tMBE_O %\tMBE_W %\tMBE_G %\tPCT %\n");
    test.run.options.outputXls = "Yes";
    test.addWell("prd", -6.0, 0.0, 0.0, 0.0);
    test.step(25.0);
    // 150 of 600 stb went out by the well and none left the cell.
    EXPECT_EQ(test.folder.read("KVR_Excl_mbe.xls"),
              "TIME\tPVI\tMBE_O %\tMBE_W %\tMBE_G %\tPCT %\n25\t0\t-25\t0\t0\t25\n");
}

TEST(GlobalIterationErrors, AreDifferencesOfAbsoluteSums) {
    QuietConsole quiet;
    Simulation run;
    run.console = quiet.console;
    allocateCellState(2, 0, run.state);
    run.balance.previousSumSo = 1.0;
    run.balance.previousSumSw = 0.5;
    run.balance.previousSumPressure = 6000.0;
    run.state.So[1] = 0.5;
    run.state.So[2] = -0.75;
    run.state.Sw[1] = 0.25;
    run.state.Pressure[1] = 3000.0;
    run.state.Pressure[2] = 3100.0;
    reportGlobalIterationErrors(run);
    const std::string text =
        "-- ERROR FOR GLOBAL ITERATION --\n ERROR Soil : 0.25\n ERROR Swat : -0.25\n ERROR Pres : 100\n";
    EXPECT_EQ(quiet.screenText(), text);
    EXPECT_EQ(quiet.logText(), text);
    EXPECT_EQ(run.balance.previousSumPressure, 6100.0);
}

}  // namespace
}  // namespace kvr
