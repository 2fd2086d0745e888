#include "deck/options/finalise_options.hpp"

#include "deck/options/option_section.hpp"
#include "unit/quiet_console.hpp"

#include <cmath>
#include <gtest/gtest.h>

namespace kvr {
namespace {

struct Finished {
    explicit Finished(RunOptions start = {}, int nx = 2, int ny = 2, int nz = 2, int wells = 2)
        : options(start) {
        grid.NX = nx;
        grid.NY = ny;
        grid.NZ = nz;
        grid.NCELLS = nx * ny * nz;
        grid.Active.assign(grid.NCELLS, 1);
        schedule.steps.resize(1);
        const ScheduleWell well;
        for (int w = 0; w < wells; ++w) schedule.steps[0].wells.push_back(well);
        finaliseOptions(quiet.console, grid, tables, schedule, options);
    }
    [[nodiscard]] bool logged(const std::string& text) const {
        return quiet.logText().find(text) != std::string::npos;
    }
    [[nodiscard]] bool shown(const std::string& text) const {
        return quiet.screenText().find(text) != std::string::npos;
    }
    QuietConsole quiet;
    GridModel grid;
    FluidTables tables;
    Schedule schedule;
    RunOptions options;
};

RunOptions given() {
    RunOptions options;
    setOptionDefaults(options);
    options.requestedLines = 7;
    options.cfl = options.cflGravity = 0.5;
    options.minCflStep = options.minCflgStep = 0.001;
    options.MaxPressureIterations = options.maxSaturationIterations = 12;
    options.PressureTolerance = 0.1;
    options.SaturationTolerance = 1e-3;
    return options;
}

TEST(DefaultLineCount, FollowsTheGridAndTheWells) {
    struct Case {
        int nx, ny, nz, wells, lines;
    };
    for (const Case& c :
         {Case{10, 10, 3, 2, 120}, Case{100, 1, 1, 2, 1}, Case{20, 1, 5, 2, 50}, Case{1, 10, 1, 2, 4},
          Case{24, 25, 15, 26, 562}, Case{20, 20, 10, 4, 500}, Case{2, 2, 1, 1, 1}})
        EXPECT_EQ(Finished({}, c.nx, c.ny, c.nz, c.wells).options.requestedLines, c.lines);
}

TEST(DefaultLineCount, IsToldOnConsoleAndLog) {
    const Finished run({}, 10, 10, 3, 2);
    EXPECT_TRUE(run.logged("WARNING :: Num of Streamline was 0. Use Default :: 120\n"));
    EXPECT_TRUE(run.shown("WARNING :: Num of Streamline was 0. Use Default :: 120\n"));
}

TEST(Bounds, OfLinesFollowTheCells) {
    RunOptions options = given();
    options.requestedLines = 2'000'000'000;
    const Finished small(options, 10, 10, 10);
    EXPECT_EQ(small.options.requestedLines, 100'000);
    EXPECT_TRUE(small.shown("WARNING :: NUMLINE 2000000000 IS TOO MUCH FOR 1000 CELLS, 100000 IS TAKEN"));
    EXPECT_EQ(Finished(options, 20, 20, 10).options.requestedLines, 400'000);
    options.requestedLines = 90'000;
    EXPECT_EQ(Finished(options, 10, 10, 10).options.requestedLines, 90'000);
}

TEST(Bounds, OfTheNodeFactorFollowTheWayThroughTheGrid) {
    RunOptions options = given();
    options.nodeFactor = 1e30;
    const Finished run(options, 10, 10, 5);
    EXPECT_DOUBLE_EQ(run.options.nodeFactor, 4000.0);
    EXPECT_TRUE(run.shown("WARNING :: SL1DCON: NODE FACTOR 1e+30 IS OUT OF RANGE 0 TO 4000 FOR THIS GRID"));
    for (const double none : {0.0, -2.0, std::nan("")}) {
        options.nodeFactor = none;
        EXPECT_EQ(Finished(options, 10, 10, 5).options.nodeFactor, 1.0);
    }
    options.nodeFactor = 2.5;
    EXPECT_EQ(Finished(options, 10, 10, 5).options.nodeFactor, 2.5);
}

TEST(FallBacks, GiveCriteriaAndIterationsWithoutConverge) {
    RunOptions options = given();
    options.MaxPressureIterations = options.maxSaturationIterations = 0;
    options.PressureTolerance = options.SaturationTolerance = 0.0;
    const Finished run(options);
    EXPECT_EQ(run.options.MaxPressureIterations, 30);
    EXPECT_EQ(run.options.maxSaturationIterations, 30);
    EXPECT_EQ(run.options.PressureTolerance, 0.01);
    EXPECT_EQ(run.options.SaturationTolerance, 0.0001);
    const std::string warnings =
        "WARNING :: Max iter for pres was not given or zero\nWe use default value, 30\n"
        "WARNING :: Max iter for sat implicit was not given or zero\nWe use default value, 30\n"
        "WARNING :: Conv criteria for Press was not given or too small\nWe use default value, 1.d-2\n"
        "WARNING :: Conv criteria for Sat was not given or too small\nWe use default value, 1.d-4\n";
    EXPECT_EQ(run.quiet.logText().rfind(warnings, 0), 0U);
    EXPECT_EQ(run.quiet.screenText().rfind(warnings, 0), 0U);
}

TEST(FallBacks, GiveStepsAndCourantNumbers) {
    RunOptions options = given();
    options.maxDt = -1.0;
    options.cfl = 100001.0;
    options.cflGravity = 0.0;
    options.minCflStep = 1e-10;
    options.minCflgStep = 0.0;
    const Finished run(options);
    EXPECT_EQ(run.options.maxDt, 1e10);
    EXPECT_EQ(run.options.cfl, 0.8);
    EXPECT_EQ(run.options.cflGravity, 0.8);
    EXPECT_EQ(run.options.minCflStep, 0.01);
    EXPECT_EQ(run.options.minCflgStep, 0.01);
    EXPECT_EQ(run.quiet.logText().rfind(
                  "WARNING :: Maximum Constraint Tstep is less than zero\nReset for 1.E10\n"
                  "WARNING :: Courant Num was not given or too small\nReset for 0.8\n"
                  "WARNING :: Courant Num for gravity was not given or too small\nReset for 0.8\n"
                  "WARNING :: Min Tstep for Expl SLine was not given or too small\nReset for 1.d-2\n"
                  "WARNING :: Min Tstep for Gravity flow was not given or too small\nReset for 1.d-2\n",
                  0),
              0U);
}

TEST(FallBacks, LeaveWhatWasGivenWithoutAWarning) {
    const Finished run(given());
    EXPECT_EQ(run.options.cfl, 0.5);
    EXPECT_EQ(run.options.requestedLines, 7);
    EXPECT_FALSE(run.logged("WARNING"));
}

TEST(FinaliseOptions, NamesTheSolverInTheUpwindFieldOfAnImplicitLine) {
    RunOptions options = given();
    options.solverPhaseName = {"imp"};
    options.saturationSolver = "gband";
    options.upwindWord = "2PU";
    const Finished run(options);
    EXPECT_EQ(run.options.upwindName, std::vector<std::string>{"gband"});
    EXPECT_EQ(run.options.upwindWord, "2PU");
}

TEST(Echo, SaysOnlyThatDebugIsOffWhenItIs) {
    const Finished run(given());
    EXPECT_EQ(run.quiet.logText(), "Debug Mode is OFF\n");
}

TEST(Echo, ListsEveryLabelInOrderWithItsValue) {
    RunOptions options = given();
    options.debugOutput = true;
    options.historyMatch = true;
    options.rateOptimization = true;
    const Finished run(options);
    const std::string text = run.quiet.logText();
    const char* labels[] = {"Simulation General Info\n",
                            "Nine Point Schme (FIM only) :: No\n",
                            "Maximum Number of Cxn/Grid :: 6\n",
                            "Liniear Equation Solver :: amg\n",
                            "Liniear Equation Solver Sat :: \n",
                            "Numerical Method :: streamline\n",
                            "Simulation Model :: SPSP\n",
                            "Gravity Drainage  DualPoro :: No\n",
                            "Trnsmissibility by NEWTRAN? :: Yes\n",
                            "Pressure Update Frequency :: 1\n",
                            "Jfunction Option :: No\n",
                            "Jfunction Surface Tention :: 1\n",
                            "Output METRIC unit file :: No\n",
                            "Correction of Irreducible S :: No\n",
                            "Maximum iteration for prs :: 12\n",
                            "Maximum iteration for sat :: 12\n",
                            "Convergence criteria for P :: 0.1\n",
                            "Convergence criteria for S :: 0.001\n",
                            "Optimal Time Steppint Ctrl :: 0\n",
                            "Maximum Allowable time step :: 10000000\n",
                            "have Gas Phase through sim? :: No\n",
                            "Have Capillary thorugh sim? :: No\n",
                            "Iterative IMPES, Iteration :: 0\n",
                            "Some Streamline Related Option\n",
                            "Number of reference SLine :: 7\n",
                            "Mapping number of SL-Grid :: 1\n",
                            "Save EndNode SL info ? :: Yes\n",
                            "Tracing Corner Point Method :: Yes\n",
                            "Tecplot Corner point HiRes :: No\n",
                            "Output KVR SL inv file ? :: No\n",
                            "Output KVR inversion file :: No\n",
                            "Tracer Injection Active ? :: No\n",
                            "Num of Tracer (If active) :: 0\n",
                            "Streamline Start from ? :: inj\n",
                            "Trace from missed grid ? :: No\n",
                            "Use Orthogonal Projection :: No\n",
                            "Num of Intp Rel, for ASol :: 200\n",
                            "Num of Intp Sol, for ASol :: 100\n",
                            "Streamline Saturation solver :: mas\n",
                            "How do you divide node on SL :: \n",
                            "Degree of Upstream weighting :: SPU\n",
                            "Include Compressibility onSL :: Yes\n",
                            "Include Gravity Effect  byOS :: Yes\n",
                            "Include Capillary Pressure :: Yes\n",
                            "File I/O, Option, ETC.\n",
                            "CFL condition for 1D :: 0.5\n",
                            "CFL condition for Gr :: 0.5\n",
                            "minimmum CFL  for 1D :: 0.001\n",
                            "minimmum CFL  for Gr :: 0.001\n",
                            "Output Debug File :: Yes\n",
                            "Output .xls  File :: No\n",
                            "Output .plt  File :: No\n",
                            "Output Streamline :: No\n",
                            "Output Diffusive TOF :: No\n",
                            "Output Pressure Mtrx :: No\n",
                            "Output Streamline MX :: No\n",
                            "Output KVR Visualize :: Yes\n",
                            "Output KVR Inversion :: No\n",
                            "Output KVR Inv .SLN :: No\n",
                            "Compressiblity metho :: Yes\n",
                            "bubble pres max lim :: No\n",
                            "bubble pres min lim :: No\n",
                            "General System information\n",
                            "Global File Header Name :: ECLIPSE\n",
                            "Global Working Folder Path :: \n",
                            "Main inputdata file path :: \n",
                            "Given Simulation Command :: $e300\n",
                            "Using Relative file path? :: No\n",
                            "Delete Pre outdata before ? :: No\n",
                            "Restart File Detected ? :: No\n",
                            "Convert Restart to Tecplot? :: No\n",
                            "Convert ECLIPSE to IX ? :: No\n",
                            "IX Extract Option Active ? :: No\n",
                            "History Matching Related Data\n",
                            "History Matching Activated? :: Yes\n",
                            "Total Iteration for HM :: 30\n",
                            "Output Parameter Sensitiv :: No\n",
                            "Upper Const, Global, Wct :: 0\n",
                            "Upper Const, Global, Prs :: 0\n",
                            "Upper Const, Grid  , Wct :: 0\n",
                            "Upper Const, Grid  , Prs :: 0\n",
                            "Ln(k) update constraint ? :: 1\n",
                            "Ln(k) update constraint WCT :: 2\n",
                            "Ln(k) update constraint Prd :: 2\n",
                            "Maximum possible grid para :: 5000\n",
                            "Minimum possible grid para :: 0.0001\n",
                            "Matched TTime Criteria :: 10\n",
                            "Minimum BHP Criteria :: 10\n",
                            "Update Well Grid ? :: 0\n",
                            "Use ECLIPSE Simulator ? :: No\n",
                            "Output WCONHIST data ? :: No\n",
                            "Number of Smoothing WCT sns :: 2\n",
                            "Number of Smoothing BHP sns :: 5\n",
                            "Use Gauss Newton Method ? :: No\n",
                            "LSQR Maximum Iteration :: 400\n",
                            "LSQR Norm Constraint :: 0\n",
                            "LSQR Vertical Smoothness :: 0\n",
                            "LSQR Horizontal Smootherss :: 0\n",
                            "Local Global Pressure Match :: No\n",
                            "Total Iteration for GloblHM :: 0\n",
                            "Is Amplitude matching ? :: No\n",
                            "Travel Time Beta Factor :: 0\n",
                            "Rate Optimization Related Data\n",
                            "Rate Optimization Activated? :: Yes\n",
                            "Equalize Arrival Time ? :: No\n",
                            "Equalize Allocation Factor? :: No\n",
                            "NPV based Optimizaation ? :: No\n",
                            "Treat Minimum Miscibility P :: No\n",
                            "Oil Prd Price for NPV :: 0\n",
                            "Wat Prd Price for NPV :: 0\n",
                            "Gas Prd Price for NPV :: 0\n",
                            "Oil Inj Price for NPV :: 0\n",
                            "Wat Inj Price for NPV :: 0\n",
                            "Gas Inj Price for NPV :: 0\n",
                            "Optimization strt step :: 1\n",
                            "Optimization emin :: 0\n",
                            "Optimization emax :: 1\n",
                            "Optimization alpha :: 2\n",
                            "Optimization wmin :: -0.25\n",
                            "Optimization wmax :: 25\n",
                            "Optimization qwmin :: 0\n",
                            "Optimization UsageofTOF :: 100\n",
                            "Other Testing Functions\n",
                            "Forward Restart Pressure :: No\n",
                            "Forward Restart Saturation :: No\n",
                            "Do Flo Based upscaling ? :: No\n",
                            "Do Parameter Smoothing ? :: No\n"};
    std::size_t position = 0;
    for (const char* label : labels) {
        const std::size_t found = text.find(std::string("\n") + label, position == 0 ? 0 : position - 1);
        ASSERT_NE(found, std::string::npos) << label;
        position = found + 1;
    }
}

TEST(Echo, LeavesOutMatchingAndOptimisationWhenTheyAreOff) {
    RunOptions options = given();
    options.debugOutput = true;
    const Finished run(options);
    EXPECT_TRUE(run.logged("History Matching Activated? :: No\n"));
    EXPECT_FALSE(run.logged("Total Iteration for HM"));
    EXPECT_TRUE(run.logged("Rate Optimization Activated? :: No\n"));
    EXPECT_FALSE(run.logged("Equalize Arrival Time ?"));
}

TEST(Echo, SendsTheShortListToTheConsole) {
    EXPECT_EQ(Finished(given()).quiet.screenText(),
              "SL_1D Solution metho :: mas\nCFL condition for 1D :: 0.5\nCFL condition for Gr :: 0.5\n"
              "minimmum CFL  for 1D :: 0.001\nminimmum CFL  for Gr :: 0.001\nOutput Debug File :: No\n"
              "Output .xls  File :: No\nOutput .plt  File :: No\nOutput Streamline :: No\n"
              "Output Pressure Mtrx :: No\nOutput Streamline MX :: No\nOutput KVR Visualize :: Yes\n"
              "Output KVR Inversion :: No\nOutput KVR Inv .SLN :: No\nCompressiblity metho :: Yes\n"
              "Gravity Drainage  DP :: No\nMax iteration for prs :: 12\nMax iteration for sat :: 12\n"
              "Conv criteria for prs :: 0.1\nConv criteria for sat :: 0.001\n");
}

TEST(Echo, TellsCapillaryPressureByItsSpan) {
    RunOptions options = given();
    options.debugOutput = true;
    QuietConsole quiet;
    GridModel grid;
    grid.NX = grid.NY = grid.NZ = 1;
    FluidTables tables;
    tables.PcogSpan = 6e-8;
    finaliseOptions(quiet.console, grid, tables, Schedule{}, options);
    EXPECT_NE(quiet.logText().find("Have Capillary thorugh sim? :: Yes\n"), std::string::npos);
}

}  // namespace
}  // namespace kvr
