#include "run/example_deck.hpp"

#include "deck/deck_reader.hpp"
#include "unit/quiet_console.hpp"
#include "unit/scratch_folder.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

/// The generated deck, as text and read back into a run.
struct ExampleRun {
    ExampleRun() {
        writeExampleDeck(quiet.console, folder.path + "ECLIPSE.DATA");
        text = folder.read("ECLIPSE.DATA");
        run.console = quiet.console;
        run.options.inputMode = 1;
        run.options.useRelativePath = true;
        run.options.workingFolder = run.options.deckFolder = folder.path;
        run.options.dataFileBase = folder.path + "ECLIPSE";
        readDeck(run);
    }
    ScratchFolder folder;
    QuietConsole quiet;
    std::string text;
    Simulation run;
};

TEST(ExampleDeck, HasItsSectionsInOrder) {
    const ScratchFolder folder;
    writeExampleDeck({nullptr, nullptr, nullptr}, folder.path + "ECLIPSE.DATA");
    const std::string text = "\n" + folder.read("ECLIPSE.DATA");
    std::size_t position = 0;
    for (const char* section : {"RUNSPEC", "GRID", "EDIT", "PROPS", "REGIONS", "SOLUTION", "SUMMARY",
                                "SCHEDULE", "END", "TUNEKVR"}) {
        const std::size_t found = text.find(std::string("\n") + section + "\n", position);
        ASSERT_NE(found, std::string::npos) << section;
        position = found;
    }
}

TEST(ExampleDeck, ReplacesAnOldDeckAndKeepsEveryCommentOfTheManual) {
    const ScratchFolder folder;
    folder.write("ECLIPSE.DATA", std::string(100000, 'x'));
    writeExampleDeck({nullptr, nullptr, nullptr}, folder.path + "ECLIPSE.DATA");
    const std::string text = folder.read("ECLIPSE.DATA");
    EXPECT_EQ(text.find("xxx"), std::string::npos);
    for (const char* line : {"100    1    1  /\n",
                             "1    1                  100              100    1         50  /\n",
                             "1                       1    2   30 1* 7 /\n",
                             "100*0.82497192435831 /\n",
                             "100*4000/\n",
                             "0.000      10.0  1.000   2.200   /\n",
                             "1.000    5010.0  1.100   2.000\n",
                             "10010.0  1.090   2.020   /\n",
                             "5000.00     1.00   1.0d-6   1.0 0.0/\n",
                             "30.0   60.0   0.01/\n",
                             "0.9 0.9 10000.0 /\n",
                             "0.001 0.099/\n",
                             "-- Numerical Method [SL/IMPES/FIM : Def = SL]\n",
                             "-- Prs Lin Mtx Solver [SGAUSS/DGESV/ITGSV/CG/GMRES/AMG : Def = AMG]\n",
                             "-- Sat Lin Mtx Solver on SL [SGAUSS/GBAND : Def = GBAND]\n",
                             "-- Convergence criteria for pressure    [Def = 1.E-2]\n",
                             "-- Convergence criteria for sat for FIM [Def = 1.E-3]\n",
                             "1.d-2 1.d-4 /\n",
                             "-- Number of streamline    [Def = MAX(Nx,Ny,Nz)*Nwell]\n",
                             "-- SL launching position   [INJ/PRD/CEL : Def = INJ]\n",
                             "-- Trace From missed block [Yes/No : Def = No]\n",
                             "2 INJ No /\n",
                             "EXPLICIT  IRR 1.0 SPU Yes Yes Yes No/\n",
                             "-- CFL number, for explicit [Def = 0.8]\n",
                             "-- Minimum CFL time         [Def = 1.E-3]\n",
                             "-- CFL number, for Grv&Pc   [Def = 0.8]\n",
                             "0.01 1.d-5 / \n",
                             "-- Use upstream Pressure of Trans Calc          [Def = 0, Use upstream]\n",
                             "1 0 0 0 0 0 0 0/\n",
                             "1 1 1 0 0 0 0 /\n",
                             "-- Maximum Allowable Tstep  [Def = 999999.0]\n"})
        EXPECT_NE(text.find(line), std::string::npos) << line;
}

TEST(ExampleDeck, ReadsBackAsTheModelItDescribes) {
    const ExampleRun example;
    const Simulation& run = example.run;
    EXPECT_EQ(run.grid.NX, 100);
    EXPECT_EQ(run.grid.NY * run.grid.NZ, 1);
    EXPECT_EQ(run.grid.PERMX[100], 157.937419847697);
    EXPECT_EQ(run.grid.PORO[1], 0.1);
    EXPECT_TRUE(run.options.hasOil && run.options.hasWater && run.options.hasGas);
    EXPECT_EQ(run.fluids.GasRows, 2);
    EXPECT_EQ(run.fluids.OilRows, 3);
    EXPECT_EQ(run.fluids.rockReferencePressure, 4000.0);
    EXPECT_EQ(run.initial.initialSwat[50], 0.5);
    EXPECT_EQ(run.initial.initialPressure[50], 4000.0);
    ASSERT_EQ(run.wells.wells.size(), 1U);
    EXPECT_EQ(run.wells.wells[0].WellName, "INJ");
    EXPECT_EQ(run.schedule.reportEnd, (std::vector<double>{0.001, 0.1}));
}

TEST(ExampleDeck, ReadsBackWithTheOptionsItShows) {
    const ExampleRun example;
    const RunOptions& options = example.run.options;
    EXPECT_EQ(options.method, "streamline");
    EXPECT_EQ(options.cfl, 0.01);
    EXPECT_EQ(options.minCflStep, 1e-5);
    EXPECT_EQ(options.cflGravity, 0.01);
    EXPECT_EQ(options.PressureTolerance, 1e-2);
    EXPECT_EQ(options.SaturationTolerance, 1e-4);
    EXPECT_EQ(options.MaxPressureIterations, 30);
    EXPECT_EQ(options.requestedLines, 2);
    EXPECT_EQ(options.streamlineStart, "inj");
    EXPECT_EQ(options.traceMissed, "No");
    EXPECT_EQ(options.nodeControl, "irr");
    EXPECT_EQ(options.mapCount, 1);
    EXPECT_EQ(options.maxDt, 0.001);
    EXPECT_TRUE(options.debugOutput && options.lineCapillary);
    EXPECT_EQ(options.outputXls + options.outputPlt, "YesYes");
}

}  // namespace
}  // namespace kvr
