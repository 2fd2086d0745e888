#include "pressure/pressure_solve.hpp"

#include "pressure/pressure_matrix.hpp"
#include "pressure/solvers/multigrid.hpp"
#include "unit/pressure/small_run.hpp"
#include "unit/quiet_console.hpp"
#include "unit/scratch_folder.hpp"

#include <filesystem>
#include <gtest/gtest.h>
#include <limits>

using namespace kvr;

namespace {

/// Dense rows as a system; the diagonal of each row first.
LinearSystem systemOf(const std::vector<std::vector<double>>& rows, const std::vector<double>& rhs) {
    LinearSystem system;
    system.size = system.cellRows = static_cast<int>(rows.size());
    system.rhs = rhs;
    system.rowStart = {0};
    for (std::size_t r = 0; r < rows.size(); ++r) {
        system.column.push_back(static_cast<int>(r));
        system.value.push_back(rows[r][r]);
        for (std::size_t c = 0; c < rows.size(); ++c)
            if (c != r) {
                system.column.push_back(static_cast<int>(c));
                system.value.push_back(rows[r][c]);
            }
        system.rowStart.push_back(static_cast<std::int64_t>(system.column.size()));
    }
    system.patternStamp = 1;
    return system;
}

/// The text as a regular expression that means it to the letter.
std::string asPattern(const std::string& text) {
    std::string pattern;
    for (const char c : text) {
        if (c == '(' || c == ')' || c == '.') pattern += '\\';
        pattern += c;
    }
    return pattern;
}

/// Solves in a scratch folder.
struct Bench {
    Bench() {
        outputs.folder = folder.path;
        options.stepControl = false;
    }

    void solve(const LinearSystem& system, const Console& console) {
        solvePressure(console, options, outputs, 12.5, system, solver, it);
    }

    ScratchFolder folder;
    OutputStreams outputs;
    RunOptions options;
    PressureSolver solver;
    int it = 4;
};

}  // namespace

TEST(SolvePressure, GivesTheSameSolutionByEveryDirectWord) {
    for (const char* word : {"st", "dgesl", "dgesv"}) {
        Bench bench;
        bench.options.pressureSolver = word;
        bench.solve(systemOf({{2, 1}, {1, 3}}, {3, 5}), Console{nullptr, nullptr, nullptr});
        EXPECT_EQ(bench.it, 4);
        EXPECT_NEAR(bench.solver.solution[0], 0.8, 1e-12);
        EXPECT_NEAR(bench.solver.solution[1], 1.4, 1e-12);
    }
}

TEST(SolvePressure, LeavesTheConvergenceOfTheBiconjugateWordsInTheirFile) {
    Bench bench;
    bench.options.pressureSolver = "gmres";
    const LinearSystem system = systemOf({{2, 1}, {1, 3}}, {3, 5});
    bench.folder.write("KVR_BICGSTB_Info.out", "of an older run\n");
    for (int n = 0; n < 2; ++n) bench.solve(system, Console{nullptr, nullptr, nullptr});
    EXPECT_NEAR(bench.solver.solution[0], 0.8, 1e-7);
    const std::string text = bench.folder.read("KVR_BICGSTB_Info.out");
    EXPECT_EQ(text.find("older"), std::string::npos);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 2);
}

TEST(SolvePressure, DumpsTheSystemWhenItsSwitchIsOn) {
    Bench bench;
    bench.options.pressureSolver = "st";
    bench.options.outputPressureMatrix = true;
    bench.solve(systemOf({{2, 1}, {1, 3}}, {3, 5}), Console{nullptr, nullptr, nullptr});
    EXPECT_EQ(bench.folder.read("pmtrx.out"), "1 1 2\n1 2 1\n2 2 3\n2 1 1\n3\n5\n");
}

TEST(SolvePressureDeathTest, WritesASingularMatrixAndStops) {
    Bench bench;
    bench.options.pressureSolver = "dgesv";
    EXPECT_EXIT(bench.solve(systemOf({{1, 2}, {2, 4}}, {1, 3}), consoleOnStandardError()),
                ::testing::ExitedWithCode(1),
                "ERROR OCCURS IN SOLVING PRESSURES.\n"
                " ERROR  :: DGESV SOLVER - MATRIX MEY BE ERRORNOUS\n"
                "           GENERATE MATRIX AT PMATRIX FOLDER, PLEASE CHECK");
    EXPECT_EQ(bench.folder.read("PMatrix_T_12.5_ite_4.xls"), "1\t2\t1\n2\t4\t3\n");
}

TEST(SolvePressureDeathTest, StopsOnASingularMatrixByElimination) {
    Bench bench;
    bench.options.pressureSolver = "st";
    EXPECT_EXIT(bench.solve(systemOf({{1, 2}, {2, 4}}, {1, 3}), consoleOnStandardError()),
                ::testing::ExitedWithCode(1),
                "LINEAR_SOLVE FAILED\nIT IS HIGHLY PROBABLE THAT THE MATRIX IS SINGULAR.");
    EXPECT_FALSE(std::filesystem::exists(bench.folder.path + "PMatrix_T_12.5_ite_4.xls"));
}

TEST(MultigridTexts, NameEveryReturnCode) {
    const std::string head = "-- SECTION AMG --";
    using Lines = std::vector<std::string>;
    EXPECT_EQ(multigridTexts(6), (Lines{head, "PRESSURES COULD NOT BE SOLVED DUE TO MEMORY PROBLEM",
                                        "YOU SHOULD CHOOSE DIRECT MATRIX SOLVER."}));
    EXPECT_EQ(multigridTexts(13), (Lines{head, "DIAGONAL ELEMENT NOT STORED FIRST"}));
    EXPECT_EQ(multigridTexts(14),
              (Lines{head, "DIAGONAL ELEMENT MUST BE NEGATIVE", "CHANGE TO DGESV SOLVER"}));
    EXPECT_EQ(multigridTexts(18), (Lines{head, "PARAMETER LEVELX ERRONEOUS"}));
    EXPECT_EQ(multigridTexts(21),
              (Lines{head, "ERRORS OF THE AMG1R5-SYSTEM (SHOULD NOT OCCUR)", "TRANSPOSE A-ENTRY MISSING"}));
    EXPECT_EQ(multigridTexts(99).back(), "FACTORIZATION");
    EXPECT_EQ(multigridTexts(3), (Lines{head, "PRESSURES COULD NOT BE SOLVED WITH IERROR= 3"}));
}

TEST(MultigridTexts, TellASmallGrid) {
    EXPECT_EQ(multigridTexts(static_cast<int>(MultigridCode::SmallGrid)),
              (std::vector<std::string>{"-- SECTION AMG --",
                                        "PRESSURES COULD NOT BE SOLVED DUE TO SMALL NO. OF GRID BLCOKS",
                                        "YOU SHOULD CHOOSE DGESV FOR PRESSURE SOLVER."}));
}

TEST(SolvePressureDeathTest, StopsOnEveryReturnCodeOfTheMultigridWithItsTexts) {
    Bench bench;
    const LinearSystem system = systemOf({{2, 1}, {1, 3}}, {3, 5});
    for (const int code : {-1, 3, 13, 14, 15, 16, 17, 18, 21, 22, 23, 24, 25, 26, 27, 28}) {
        SolveResult result;
        result.failure = SolveFailure::BadMatrix;
        result.code = code;
        std::string all;
        for (const std::string& line : multigridTexts(code)) all += asPattern(line) + "\n";
        for (const char* word : {"amg", "samg"}) {
            EXPECT_EXIT(
                answerFailure(consoleOnStandardError(), bench.outputs, 0.0, word, system, result, bench.it),
                ::testing::ExitedWithCode(1), all);
        }
    }
}

TEST(SolvePressureDeathTest, StopsOnAMatrixThatTheMultigridRefuses) {
    Bench bench;
    bench.options.pressureSolver = "amg";
    LinearSystem system = systemOf({{2, 1}, {1, -3}}, {3, 5});
    EXPECT_EXIT(bench.solve(system, consoleOnStandardError()), ::testing::ExitedWithCode(1),
                "-- SECTION AMG --\nDIAGONAL ELEMENT MUST BE NEGATIVE\nCHANGE TO DGESV SOLVER");
    std::swap(system.column[0], system.column[1]);
    EXPECT_EXIT(bench.solve(system, consoleOnStandardError()), ::testing::ExitedWithCode(1),
                "-- SECTION AMG --\nDIAGONAL ELEMENT NOT STORED FIRST");
    system.column[0] = 7;
    EXPECT_EXIT(bench.solve(system, consoleOnStandardError()), ::testing::ExitedWithCode(1),
                "-- SECTION AMG --\nPOINTER JA ERRONEOUS");
    system.rowStart[1] = 5;
    EXPECT_EXIT(bench.solve(system, consoleOnStandardError()), ::testing::ExitedWithCode(1),
                "-- SECTION AMG --\nPOINTER IA ERRONEOUS");
}

TEST(SolvePressure, GivesANegativeDiagonalBackToTheStepControl) {
    Bench bench;
    bench.options.pressureSolver = "amg";
    bench.options.stepControl = true;
    bench.solve(systemOf({{2, 1}, {1, -3}}, {3, 5}), Console{nullptr, nullptr, nullptr});
    EXPECT_EQ(bench.it, FailedIteration);
}

TEST(SolvePressureDeathTest, StopsWhenTheMultigridRunsOutOfMemory) {
    Bench bench;
    SolveResult result;
    result.failure = SolveFailure::Memory;
    result.code = static_cast<int>(MultigridCode::Memory);
    EXPECT_EXIT(answerFailure(consoleOnStandardError(), bench.outputs, 0.0, "amg", {}, result, bench.it),
                ::testing::ExitedWithCode(1),
                "-- SECTION AMG --\nPRESSURES COULD NOT BE SOLVED DUE TO MEMORY PROBLEM\n"
                "YOU SHOULD CHOOSE DIRECT MATRIX SOLVER.\nError :: Memory error for AMG Solver");
}

TEST(SolvePressureDeathTest, StopsWhenADenseMatrixDoesNotFit) {
    Bench bench;
    LinearSystem system;
    system.size = system.cellRows = 50000;  // its square is beyond the indices of LAPACK
    system.rhs.assign(50000, 1.0);
    for (int i = 0; i < system.size; ++i) {
        system.rowStart.push_back(i);
        system.column.push_back(i);
        system.value.push_back(1.0);
    }
    system.rowStart.push_back(system.size);
    for (const char* word : {"st", "dgesl", "dgesv"}) {
        bench.options.pressureSolver = word;
        EXPECT_EXIT(bench.solve(system, consoleOnStandardError()), ::testing::ExitedWithCode(1),
                    "Error :: Memory error for Direct Solver");
    }
}

TEST(SolvePressureDeathTest, StopsTheEliminationOfAnEmptySystemByItsParameters) {
    Bench bench;
    bench.options.pressureSolver = "st";
    LinearSystem system;
    system.rowStart = {0};
    EXPECT_EXIT(bench.solve(system, consoleOnStandardError()), ::testing::ExitedWithCode(1),
                "PARAMETER ERROR IN LINEAR_SOLVE\nLINEAR_SOLVE FAILED\n"
                "IT IS HIGHLY PROBABLE THAT THE MATRIX IS SINGULAR.");
}

TEST(SolvePressure, FailsTheIterationWithoutConvergenceOrWithoutANumber) {
    const Console quiet{nullptr, nullptr, nullptr};
    for (const SolveFailure failure : {SolveFailure::NotConverged, SolveFailure::NotANumber}) {
        for (const char* word : {"amg", "samg", "gmres", "cg", "bicg", "dgesv"}) {
            Bench bench;
            SolveResult result;
            result.failure = failure;
            answerFailure(quiet, bench.outputs, 0.0, word, {}, result, bench.it);
            EXPECT_EQ(bench.it, FailedIteration);
        }
    }
    for (const char* word : {"gmres", "cg", "bicg", "amg", "samg"}) {
        Bench bench;
        bench.options.pressureSolver = word;
        bench.solve(systemOf({{2, 1}, {1, 3}}, {std::numeric_limits<double>::quiet_NaN(), 5}), quiet);
        EXPECT_EQ(bench.it, FailedIteration);
    }
    for (const char* word :
         {"gmres", "cg", "bicg"}) {  // no solution: 1000 iterations leave an error above 1e-7
        Bench bench;
        bench.options.pressureSolver = word;
        bench.solve(systemOf({{1, 1}, {1, 1}}, {1, 2}), quiet);
        EXPECT_EQ(bench.it, FailedIteration);
    }
}

TEST(BicgWorkSpace, TellsWhatIsShort) {
    EXPECT_TRUE(shortageTexts({10, 20}, {10, 20}).empty());
    EXPECT_EQ(shortageTexts({11, 21}, {10, 20}),
              (std::vector<std::string>{
                  "DSLUBC: INTEGER work array too short.  IWORK needs 11: have allocated 10.",
                  "DSLUBC: DOUBLE PRECISION work array too short.  RWORK needs 21: have allocated 20."}));
}

TEST(BicgWorkSpace, IsSetAsideByTheNumbersOfRowsAndEntries) {
    const LinearSystem system = systemOf({{2, 1}, {1, 3}}, {3, 5});  // 2 rows, 4 entries
    EXPECT_EQ(bicgAllocation(system).integers, 3 * 2 + 100 + 5 * 4);
    EXPECT_EQ(bicgAllocation(system).doubles, 3 * 2 + 1000 + 10 * 4);
    EXPECT_LE(bicgNeed(system).integers, bicgAllocation(system).integers);
    EXPECT_LE(bicgNeed(system).doubles, bicgAllocation(system).doubles);
}

namespace {

int iterationAfter(double change, bool active) {
    Simulation s;
    sample::makeRun(2, 1, 1, sample::waterAndOil(1e-5), s);
    s.grid.Active[2] = active ? 1 : 0;
    int it = 0;
    const std::vector<double> solution{1.0, change};
    updatePressures(s.grid, s.pressureWork.matrix, solution, 1.0, s.state, s.wells, it);
    return it;
}

}  // namespace

TEST(UpdatePressures, FailsBelowFifteenPsiaOrOnNoNumberInAnActiveCell) {
    EXPECT_EQ(iterationAfter(-2985.0, true), 0);
    EXPECT_EQ(iterationAfter(-2985.1, true), 999);
    EXPECT_EQ(iterationAfter(std::numeric_limits<double>::quiet_NaN(), true), 999);
    EXPECT_EQ(iterationAfter(std::numeric_limits<double>::infinity(), true), 999);
    EXPECT_EQ(iterationAfter(-2985.1, false), 0);
}

TEST(UpdatePressures, MovesCellsAndBottomHolesByTheSameShare) {
    Simulation s;
    sample::makeRun(2, 1, 1, sample::waterAndOil(1e-5), s);
    sample::addWell("inj", "rate", 10.0, 1e5, 1, s);
    s.wells.wells[0].Bhp = 3000.0;
    buildPattern(s.grid, s.connections, s.wells, s.pressureWork.matrix);
    int it = 0;
    updatePressures(s.grid, s.pressureWork.matrix, std::vector<double>{10.0, 20.0, 400.0}, 0.25, s.state,
                    s.wells, it);
    EXPECT_EQ(s.state.Pressure[1], 3002.5);
    EXPECT_EQ(s.state.Pressure[2], 3005.0);
    EXPECT_EQ(s.wells.wells[0].Bhp, 3100.0);
}
