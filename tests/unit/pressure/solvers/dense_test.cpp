#include "pressure/solvers/dense.hpp"

#include "pressure/solvers/solver_memory.hpp"
#include "unit/pressure/solvers/generated_systems.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

TEST(DenseElimination, OverwritesTheRightHandSideByTheSolution) {
    std::vector<double> a = {2.0, 1.0, 1.0, 3.0};
    std::vector<double> b = {3.0, 5.0};
    EXPECT_EQ(LINEAR_SOLVE(2, a, b), DenseStatus::Solved);
    EXPECT_DOUBLE_EQ(b[0], 0.8);
    EXPECT_DOUBLE_EQ(b[1], 1.4);
}

TEST(DenseElimination, ExchangesRowsWhenTheFirstPivotIsZero) {
    std::vector<double> a = {0.0, 1.0, 2.0, 0.0};  // columns (0, 1) and (2, 0)
    std::vector<double> b = {4.0, 7.0};
    EXPECT_EQ(LINEAR_SOLVE(2, a, b), DenseStatus::Solved);
    EXPECT_DOUBLE_EQ(b[0], 7.0);
    EXPECT_DOUBLE_EQ(b[1], 2.0);
}

TEST(DenseElimination, RefusesASizeBelowOneAndShortArrays) {
    std::vector<double> a = {1.0}, b = {1.0};
    EXPECT_EQ(LINEAR_SOLVE(0, a, b), DenseStatus::BadParameter);
    EXPECT_EQ(LINEAR_SOLVE(-3, a, b), DenseStatus::BadParameter);
    EXPECT_EQ(LINEAR_SOLVE(2, a, b), DenseStatus::BadParameter);
}

TEST(DenseElimination, TellsASingularMatrix) {
    std::vector<double> a = {1.0, 2.0, 2.0, 4.0}, b = {1.0, 2.0};
    EXPECT_EQ(LINEAR_SOLVE(2, a, b), DenseStatus::Singular);
}

TEST(DenseRoute, TellsASingularMatrixThatRoundingHides) {
    // Row 3 is row 1 + row 2 in tenths, which are not exact in binary.
    const LinearSystem system =
        test::fromFull({{0.1, 0.2, 0.3}, {0.4, 0.5, 0.7}, {0.5, 0.7, 1.0}}, {1.0, 1.0, 1.0});
    SolverMemory memory;
    std::vector<double> x(3, 0.0);
    EXPECT_EQ(solveDense(system, x, memory).failure, SolveFailure::Singular);
}

TEST(DenseRoute, RefusesASystemBeyondTheIndexRangeWithAMemoryFailure) {
    LinearSystem system;
    system.size = system.cellRows = 50000;
    SolverMemory memory;
    std::vector<double> x(50000, 0.0);
    EXPECT_EQ(solveDense(system, x, memory).failure, SolveFailure::Memory);
    EXPECT_EQ(solveInPlace(system, x, memory).failure, SolveFailure::Memory);
}

}  // namespace
}  // namespace kvr
