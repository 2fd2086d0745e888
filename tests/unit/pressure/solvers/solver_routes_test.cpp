#include "pressure/solvers/solver_table.hpp"
#include "unit/pressure/solvers/generated_systems.hpp"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <numeric>
#include <string>

namespace kvr {
namespace {

using test::boxSystem;
using test::fromFull;

struct Solved {
    SolveResult result;
    std::vector<double> x;
};

Solved solveWith(const std::string& word, const LinearSystem& system) {
    const SolverMemoryPointer memory = makeSolverMemory();
    Solved solved;
    solved.x.assign(static_cast<std::size_t>(system.size), 0.0);
    solved.result = findSolver(word)->route(system, solved.x, *memory);
    return solved;
}

double largestDifference(const std::vector<double>& a, const std::vector<double>& b) {
    double largest = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) largest = std::max(largest, std::abs(a[i] - b[i]));
    return largest;
}

/// 10 x 10 five-point Laplacian + identity.
LinearSystem laplacianPlusIdentity() {
    const std::vector<double> ones(100, 1.0);
    LinearSystem system = boxSystem({10, 10, 1}, ones, {1.0, 1.0, 1.0}, 1.0);
    test::randomRhs(system, 7);
    return system;
}

class EveryRoute : public testing::TestWithParam<std::string> {};

TEST_P(EveryRoute, SolvesTwoEquationsByHand) {
    const LinearSystem system = fromFull({{2.0, 1.0}, {1.0, 3.0}}, {3.0, 5.0});
    const Solved solved = solveWith(GetParam(), system);
    EXPECT_EQ(solved.result.failure, SolveFailure::None);
    EXPECT_NEAR(solved.x[0], 0.8, 0.8e-8);
    EXPECT_NEAR(solved.x[1], 1.4, 1.4e-8);
}

TEST_P(EveryRoute, AgreesWithEliminationOnTheLaplacianPlusIdentity) {
    const LinearSystem system = laplacianPlusIdentity();
    const Solved solved = solveWith(GetParam(), system);
    EXPECT_EQ(solved.result.failure, SolveFailure::None);
    EXPECT_LT(largestDifference(solved.x, test::eliminated(system)), 1e-7);
}

TEST_P(EveryRoute, AgreesWithEliminationOnAFieldWithRateWells) {
    const test::Box box{9, 8, 3};
    const std::vector<double> field = test::lognormalField(box.cells(), 2.0, 11);
    LinearSystem system = boxSystem(box, field, {1.0, 1.0, 4.0}, 1e-3, test::fiveSpotWells(box, field));
    test::randomRhs(system, 3);
    const Solved solved = solveWith(GetParam(), system);
    const std::vector<double> twin = test::eliminated(system);
    EXPECT_EQ(solved.result.failure, SolveFailure::None);
    EXPECT_LT(test::trueResidual(system, solved.x), 1e-8);
    const double size = std::abs(*std::max_element(
        twin.begin(), twin.end(), [](double a, double b) { return std::abs(a) < std::abs(b); }));
    EXPECT_LT(largestDifference(solved.x, twin), 1e-5 * size);
}

TEST_P(EveryRoute, SolvesFieldsWithOneSidedMultipliers) {
    const test::Box box{15, 12, 2};
    const std::vector<double> field = test::lognormalField(box.cells(), 1.0, 5);
    LinearSystem system = boxSystem(box, field, {1.0, 1.0, 0.1}, 0.01, test::fiveSpotWells(box, field));
    test::oneSidedMultipliers(system, 0.2, 19);
    test::randomRhs(system, 4);
    const Solved solved = solveWith(GetParam(), system);
    EXPECT_EQ(solved.result.failure, SolveFailure::None);
    EXPECT_LT(test::trueResidual(system, solved.x), 1e-8);
}

TEST_P(EveryRoute, PassesThroughRowsWithoutCouplings) {
    const LinearSystem system =
        fromFull({{1.0, 0.0, 0.0, 0.0}, {0.0, 4.0, -1.0, 0.0}, {0.0, -1.0, 4.0, 0.0}, {0.0, 0.0, 0.0, 1.0}},
                 {0.0, 3.0, 3.0, 2.5});
    const Solved solved = solveWith(GetParam(), system);
    EXPECT_EQ(solved.result.failure, SolveFailure::None);
    EXPECT_DOUBLE_EQ(solved.x[0], 0.0);
    EXPECT_NEAR(solved.x[1], 1.0, 1e-8);
    EXPECT_NEAR(solved.x[2], 1.0, 1e-8);
    EXPECT_NEAR(solved.x[3], 2.5, 1e-8);
}

TEST_P(EveryRoute, AnswersAZeroRightHandSideWithZero) {
    LinearSystem system = laplacianPlusIdentity();
    std::fill(system.rhs.begin(), system.rhs.end(), 0.0);
    const Solved solved = solveWith(GetParam(), system);
    EXPECT_EQ(solved.result.failure, SolveFailure::None);
    EXPECT_TRUE(std::all_of(solved.x.begin(), solved.x.end(), [](double x) { return x == 0.0; }));
}

TEST_P(EveryRoute, FailsOnASingularSystemThatHasNoSolution) {
    // Two closed cells without storage, fluid put into both.
    const LinearSystem system = fromFull({{1.0, -1.0}, {-1.0, 1.0}}, {1.0, 1.0});
    EXPECT_NE(solveWith(GetParam(), system).result.failure, SolveFailure::None);
}

TEST_P(EveryRoute, FailsOnAMatrixWithANotANumberEntry) {
    LinearSystem system = laplacianPlusIdentity();
    system.value[20] = std::numeric_limits<double>::quiet_NaN();
    EXPECT_NE(solveWith(GetParam(), system).result.failure, SolveFailure::None);
}

TEST_P(EveryRoute, GivesTheSameBitsTwice) {
    const test::Box box{12, 11, 4};
    const std::vector<double> field = test::lognormalField(box.cells(), 2.0, 23);
    LinearSystem system = boxSystem(box, field, {1.0, 1.0, 1.0}, 1e-4);
    test::randomRhs(system, 8);
    EXPECT_EQ(solveWith(GetParam(), system).x, solveWith(GetParam(), system).x);
}

TEST_P(EveryRoute, ReportsTheTrueResidual) {
    const LinearSystem system = laplacianPlusIdentity();
    const Solved solved = solveWith(GetParam(), system);
    EXPECT_NEAR(solved.result.residual, test::trueResidual(system, solved.x), 1e-12);
}

INSTANTIATE_TEST_SUITE_P(ByWord, EveryRoute,
                         testing::Values("amg", "samg", "st", "dgesl", "dgesv", "gmres", "cg", "bicg"),
                         [](const auto& info) { return info.param; });

TEST(SolverTable, KnowsNoOtherWord) {
    EXPECT_EQ(findSolver("foo"), nullptr);
    EXPECT_EQ(findSolver(""), nullptr);
}

TEST(SolverTable, ServesTheThreeKrylovWordsByOneRoute) {
    EXPECT_EQ(findSolver("gmres")->route, findSolver("cg")->route);
    EXPECT_EQ(findSolver("gmres")->route, findSolver("bicg")->route);
}

TEST(SolverTable, ServesBothLapackWordsByOneRoute) {
    EXPECT_EQ(findSolver("dgesl")->route, findSolver("dgesv")->route);
}

TEST(SolverRoutes, MeasureResidualsAgainstTheReferenceOfTheStepWhereTheRightSideIsSmaller) {
    const std::vector<double> ones(396, 1.0);
    LinearSystem system = boxSystem({12, 11, 3}, ones, {1.0, 2.0, 5.0}, 1e-3);
    test::randomRhs(system, 11);
    const double size =
        std::sqrt(std::inner_product(system.rhs.begin(), system.rhs.end(), system.rhs.begin(), 0.0));
    for (const char* word : {"amg", "bicg"}) {
        int before = std::numeric_limits<int>::max();
        for (const double larger : {0.5, 1e4}) {
            system.reference = larger * size;
            const Solved solved = solveWith(word, system);
            EXPECT_EQ(solved.result.failure, SolveFailure::None);
            const double share = std::max(1.0, larger);
            EXPECT_LE(test::trueResidual(system, solved.x), 1.01 * SolverTolerance * share) << word;
            EXPECT_NEAR(solved.result.residual * share, test::trueResidual(system, solved.x), 1e-12) << word;
            EXPECT_LT(solved.result.iterations, before) << word;
            before = solved.result.iterations;
        }
    }
}

}  // namespace
}  // namespace kvr
