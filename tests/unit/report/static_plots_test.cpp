#include "report/static_plots.hpp"

#include "unit/report/report_run.hpp"

#include <cmath>
#include <gtest/gtest.h>

namespace kvr {
namespace {

/// The small run with a value of its own in every cell of every static field.
struct StaticRun : ReportRun {
    StaticRun() {
        GridModel& grid = run.grid;
        for (CellArray<double>* field : {&grid.PERMX, &grid.PERMY, &grid.PERMZ, &grid.PORO})
            field->assign(grid.NCELLS, 0.0);
        run.connections.Trans.assign(grid.NCELLS, 6, 0.0);
        for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
            grid.PERMX[cell] = 100.0 * cell;
            grid.PERMY[cell] = 10.0 * cell;
            grid.PERMZ[cell] = 0.1 * cell;
            grid.PORO[cell] = 0.01 * cell;
            for (int d = 1; d <= 6; ++d) run.connections.Trans(cell, d) = 1000.0 * d + cell;
        }
    }
};

TEST(StaticPlots, AreOneFilePerFieldWithItsTitleAndItsValues) {
    StaticRun test;
    writeStaticPlots(test.run);
    struct Case {
        const char* file;
        const char* title;
        double ofThirdCell;
    };
    for (const Case& shown :
         {Case{"Logkx", "Log_k<sub>x</sub>", std::log10(300.0)},
          Case{"Logky", "Log_k<sub>y</sub>", std::log10(30.0)},
          Case{"Logkz", "Log_k<sub>z</sub>", std::log10(0.3)}, Case{"phif", "<greek>f</greek>", 0.03},
          Case{"kx", "k<sub>x</sub>", 300.0}, Case{"ky", "k<sub>y</sub>", 30.0},
          Case{"kz", "k<sub>z</sub>", 0.3}, Case{"TRNSX", "TrnsX", 2003.0}, Case{"TRNSY", "TrnsY", 4003.0},
          Case{"TRNSZ", "TrnsZ", 6003.0}}) {
        const std::vector<PlotZone> zones =
            test.zones(std::string("KVR_Tplot_Static_") + shown.file + ".plt");
        ASSERT_EQ(zones.size(), 1U) << shown.file;
        EXPECT_EQ(zones[0].title, std::string(shown.title) + "PLOT");
        EXPECT_EQ(zones[0].variables.back(), shown.title);
        ASSERT_EQ(zones[0].columns[3].size(), 24U);
        EXPECT_NEAR(zones[0].columns[3][2], shown.ofThirdCell, 1e-8 * std::abs(shown.ofThirdCell));
    }
}

TEST(StaticPlots, ShowTheLogarithmOfAHundredAsTwo) {
    StaticRun test;
    writeStaticPlots(test.run);
    EXPECT_EQ(test.zones("KVR_Tplot_Static_Logkx.plt")[0].columns[3][0], 2.0);
}

TEST(StaticPlots, HoldNumbersAlsoWhereThereIsNoPermeability) {
    StaticRun test;
    test.run.grid.PERMZ[1] = 0.0;
    writeStaticPlots(test.run);
    EXPECT_EQ(test.zones("KVR_Tplot_Static_Logkz.plt")[0].columns[3][0], -20.0);
}

TEST(StaticPlots, TellOfEachFileInTheLog) {
    StaticRun test;
    writeStaticPlots(test.run);
    const std::string log = test.logText();
    std::size_t at = 0;
    for (const char* name : {"Logkx.plt", "Logky.plt", "Logkz.plt", "kx.plt", "ky.plt", "kz.plt", "TRNSX.plt",
                             "TRNSY.plt", "TRNSZ.plt", "permx,permy,permz,swini for KVR"}) {
        const std::size_t found = log.find(std::string("File Generated : ") + name + "\n", at);
        ASSERT_NE(found, std::string::npos) << name;
        at = found;
    }
    EXPECT_EQ(log.find("phif"), std::string::npos);
}

TEST(StaticPlots, LeaveNoFileWithTheTecplotSwitchOff) {
    StaticRun test;
    test.run.options.outputPlt = "No";
    writeStaticPlots(test.run);
    for (const auto& entry : std::filesystem::directory_iterator(test.folder.path))
        EXPECT_EQ(entry.path().filename().string().find("Static"), std::string::npos);
    EXPECT_NE(test.folder.read("KVR_Run_PermX.out"), "");
}

TEST(StaticPlots, GiveTheViewFilesTheirTitles) {
    StaticRun test;
    writeStaticPlots(test.run);
    struct Case {
        const char* file;
        const char* title;
        const char* firstLine;
    };
    for (const Case& shown : {Case{"PermX", "Permx", "5 10 1002.5 100.0000000000"},
                              Case{"PermY", "Permy", "5 10 1002.5 10.0000000000"},
                              Case{"PermZ", "Permz", "5 10 1002.5 0.1000000000"},
                              Case{"IniSwat", "Saturation", "5 10 1002.5 0.3000000000"}})
        EXPECT_EQ(test.folder.read(std::string("KVR_Run_") + shown.file + ".out")
                      .find(std::string("TITLE=waterPLOT\nVARIABLES= X,Y,Z,") + shown.title +
                            "\nZone I =4,J=3,k=2,F = Point\n" + shown.firstLine + "\n"),
                  0U)
            << shown.file;
}

TEST(StaticPlots, LeaveTheViewFilesEmptyWithTheViewSwitchOff) {
    StaticRun test;
    test.run.options.outputKvrView = "No";
    writeStaticPlots(test.run);
    EXPECT_EQ(test.folder.read("KVR_Run_PermX.out"), "");
    EXPECT_EQ(test.folder.read("KVR_Run_IniSwat.out"), "");
}

}  // namespace
}  // namespace kvr
