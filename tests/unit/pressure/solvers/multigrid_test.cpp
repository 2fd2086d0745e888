#include "pressure/solvers/multigrid.hpp"

#include "pressure/solvers/solver_memory.hpp"
#include "unit/pressure/solvers/generated_systems.hpp"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <omp.h>

namespace kvr {
namespace {

using test::Box;
using test::boxSystem;

/// Solves from 0 and expects the true residual that every route promises.
SolveResult solveWell(const LinearSystem& system, SolverMemory& memory) {
    std::vector<double> x(static_cast<std::size_t>(system.size), 0.0);
    const SolveResult result = solveMultigrid(system, x, memory);
    EXPECT_EQ(result.failure, SolveFailure::None);
    EXPECT_LE(test::trueResidual(system, x), 1.01 * SolverTolerance);
    return result;
}

SolveResult solveWell(const LinearSystem& system) {
    SolverMemory memory;
    return solveWell(system, memory);
}

/// Wells in and out of balance, so that the solution is of the size of a real pressure field.
void setWellRates(LinearSystem& system) {
    for (int w = system.cellRows; w < system.size; ++w) system.rhs[w] = w % 2 == 0 ? 1000.0 : -900.0;
}

LinearSystem fieldWithWells(const Box& box, double deviation, std::array<double, 3> axisFactor) {
    const std::vector<double> field = test::lognormalField(box.cells(), deviation, 77);
    LinearSystem system = boxSystem(box, field, axisFactor, 1e-5, test::fiveSpotWells(box, field));
    setWellRates(system);
    return system;
}

TEST(Multigrid, SolvesAFivePointGridWithOneRateWell) {
    const Box box{30, 30, 1};
    const std::vector<double> ones(900, 1.0);
    const test::GeneratedWell well{{465}, {8.0}, 1.0};
    LinearSystem system = boxSystem(box, ones, {1.0, 1.0, 1.0}, 0.01, std::span(&well, 1));
    system.rhs[900] = 100.0;
    EXPECT_LT(solveWell(system).residual, 1e-8);
}

TEST(Multigrid, TakesFewIterationsOnAHeterogeneousFieldWithWells) {
    const LinearSystem system = fieldWithWells({60, 220, 5}, 2.0, {1.0, 4.0, 30.0});
    SolverMemory memory;
    EXPECT_LE(solveWell(system, memory).iterations, 12);
    EXPECT_LT(memory.multigrid.hierarchy.operatorComplexity, 3.5);
}

TEST(Multigrid, TakesNoMoreIterationsWhenItsRangesAreSweptSideBySide) {
    // Thin layers, numbered layer by layer: strong couplings run between rows that are far apart.
    const LinearSystem system = fieldWithWells({60, 220, 5}, 1.0, {1.0, 1.0, 100.0});
    SolverMemory memory;
    EXPECT_LE(solveWell(system, memory).iterations, 10);
    EXPECT_EQ(memory.multigrid.hierarchy.levels.front().matrix.ranges.count, 8);
}

TEST(Multigrid, GivesTheSameBitsForAnyNumberOfThreads) {
    const LinearSystem system = fieldWithWells({60, 110, 8}, 2.0, {1.0, 4.0, 30.0});
    const int before = omp_get_max_threads();
    std::vector<std::vector<double>> solutions;
    for (const int threads : {1, 2, 3, 8}) {
        omp_set_num_threads(threads);
        SolverMemory memory;
        solutions.emplace_back(static_cast<std::size_t>(system.size), 0.0);
        EXPECT_EQ(solveMultigrid(system, solutions.back(), memory).failure, SolveFailure::None);
        EXPECT_EQ(memory.multigrid.hierarchy.levels.front().matrix.ranges.count, 8);
        // The second solve starts at the first one's answer and keeps the hierarchy.
        LinearSystem next = system;
        for (double& value : next.rhs) value *= 1.25;
        EXPECT_EQ(solveMultigrid(next, solutions.back(), memory).failure, SolveFailure::None);
        EXPECT_EQ(solutions.back(), solutions.front()) << threads << " threads";
    }
    omp_set_num_threads(before);
}

TEST(Multigrid, TakesFewIterationsWhereCellsAreFlat) {
    EXPECT_LE(solveWell(fieldWithWells({40, 40, 10}, 0.5, {1.0, 1.0, 1000.0})).iterations, 12);
}

TEST(Multigrid, TakesFewIterationsWhereLayersHardlyCommunicate) {
    EXPECT_LE(solveWell(fieldWithWells({40, 40, 10}, 0.5, {1.0, 1.0, 1e-4})).iterations, 12);
}

TEST(Multigrid, TakesFewIterationsWithOneSidedMultipliers) {
    LinearSystem system = fieldWithWells({40, 40, 8}, 1.0, {1.0, 1.0, 1.0});
    test::oneSidedMultipliers(system, 0.1, 13);
    EXPECT_LE(solveWell(system).iterations, 12);
}

TEST(Multigrid, TakesFewIterationsWithSomePositiveCouplings) {
    LinearSystem system = fieldWithWells({40, 40, 8}, 1.0, {1.0, 1.0, 1.0});
    for (int i = 0; i < system.cellRows; i += 13) {
        const std::int64_t k = system.rowStart[i] + 2;
        if (k >= system.rowStart[i + 1] || system.column[k] >= system.cellRows) continue;
        system.value[system.rowStart[i]] += 1.3 * system.value[k];  // the row sum stays
        system.value[k] *= -0.3;
    }
    EXPECT_LE(solveWell(system).iterations, 30);
}

TEST(Multigrid, HandlesAWellOfAHundredCellsInGasSurfaceUnits) {
    const Box box{100, 20, 3};
    const std::vector<double> field = test::lognormalField(box.cells(), 1.0, 31);
    test::GeneratedWell well;
    well.rowWeight = 178.0 * 200.0;
    for (int i = 0; i < 100; ++i) {
        well.cells.push_back(i + 1000);
        well.index.push_back(50.0 * field[i + 1000]);
    }
    LinearSystem system = boxSystem(box, field, {1.0, 1.0, 1.0}, 1e-5, std::span(&well, 1));
    system.rhs[system.cellRows] = 1e6;
    EXPECT_LE(solveWell(system).iterations, 15);
}

TEST(Multigrid, HandlesManyWellsAndShutOnes) {
    const Box box{40, 40, 4};
    const std::vector<double> field = test::lognormalField(box.cells(), 1.0, 41);
    std::vector<test::GeneratedWell> wells;
    for (int w = 0; w < 300; ++w) {
        test::GeneratedWell well;
        for (int k = 0; k < box.nz; ++k) well.cells.push_back(w * 5 + 1600 * k);
        well.index.assign(4, 2.0);
        wells.push_back(well);
    }
    LinearSystem system = boxSystem(box, field, {1.0, 1.0, 1.0}, 1e-4, wells);
    test::randomRhs(system, 2);
    for (int w = 0; w < 50; ++w) {  // shut: diagonal 1, no couplings left in row and column
        const int row = system.cellRows + 6 * w;
        for (std::int64_t k = system.rowStart[row]; k < system.rowStart[row + 1]; ++k)
            system.value[k] = system.column[k] == row ? 1.0 : 0.0;
        for (std::size_t k = 0; k < system.column.size(); ++k) {
            if (system.column[k] == row && system.value[k] < 0.0) system.value[k] = 0.0;
        }
    }
    EXPECT_LE(solveWell(system).iterations, 15);
}

TEST(Multigrid, PassesOverInactiveCells) {
    LinearSystem system = fieldWithWells({40, 40, 3}, 1.0, {1.0, 1.0, 1.0});
    for (int i = 0; i < system.cellRows; ++i) {
        for (std::int64_t k = system.rowStart[i] + 1; k < system.rowStart[i + 1]; ++k) {
            const int j = system.column[k];
            if (j >= system.cellRows || (i % 7 != 0 && j % 7 != 0)) continue;
            system.value[system.rowStart[i]] += system.value[k];
            system.value[k] = 0.0;
        }
    }
    EXPECT_LE(solveWell(system).iterations, 12);
}

TEST(Multigrid, SolvesAClosedBoxWithoutStorageWhenSourcesBalance) {
    const Box box{30, 30, 2};
    const std::vector<double> field = test::lognormalField(box.cells(), 1.0, 51);
    LinearSystem system = boxSystem(box, field, {1.0, 1.0, 1.0}, 0.0);
    system.rhs[0] = 1.0;
    system.rhs[1799] = -1.0;
    EXPECT_LE(solveWell(system).iterations, 15);
}

TEST(Multigrid, AgreesWithEliminationOnSeveralLevels) {
    const LinearSystem system = fieldWithWells({12, 12, 5}, 2.0, {1.0, 1.0, 5.0});
    SolverMemory memory;
    std::vector<double> x(static_cast<std::size_t>(system.size), 0.0);
    solveMultigrid(system, x, memory);
    ASSERT_GE(memory.multigrid.hierarchy.levels.size(), 2U);
    const std::vector<double> twin = test::eliminated(system);
    for (std::size_t i = 0; i < x.size(); ++i) EXPECT_NEAR(x[i], twin[i], 1e-6 * std::abs(twin[i]) + 1e-6);
}

TEST(Multigrid, KeepsTheHierarchyWhileThePatternStands) {
    LinearSystem system = fieldWithWells({40, 40, 4}, 1.0, {1.0, 1.0, 1.0});
    SolverMemory memory;
    const SolveResult fresh = solveWell(system, memory);
    const float* coarse = memory.multigrid.hierarchy.levels[1].matrix.inner.value.data();
    for (double& value : system.value) value *= 1.5;
    const SolveResult kept = solveWell(system, memory);
    EXPECT_EQ(memory.multigrid.hierarchy.levels[1].matrix.inner.value.data(), coarse);
    EXPECT_LE(kept.iterations, fresh.iterations + 3);
}

TEST(Multigrid, BuildsTheHierarchyAgainForANewPattern) {
    const LinearSystem first = fieldWithWells({40, 40, 4}, 1.0, {1.0, 1.0, 1.0});
    const LinearSystem second = fieldWithWells({30, 40, 4}, 1.0, {1.0, 1.0, 1.0});
    SolverMemory memory;
    solveWell(first, memory);
    solveWell(second, memory);
    EXPECT_EQ(memory.multigrid.hierarchy.levels[0].matrix.rows, second.size);
}

TEST(Multigrid, BuildsTheHierarchyAgainWhenTheMatrixHasMovedFar) {
    const Box box{40, 40, 4};
    const std::vector<double> before = test::lognormalField(box.cells(), 2.0, 61);
    const std::vector<double> after = test::lognormalField(box.cells(), 2.0, 62);
    LinearSystem first = boxSystem(box, before, {1.0, 1.0, 1.0}, 1e-5);
    LinearSystem second = boxSystem(box, after, {1.0, 1.0, 1.0}, 1e-5);
    second.patternStamp = first.patternStamp;
    test::randomRhs(first, 5);
    test::randomRhs(second, 6);
    SolverMemory memory, freshMemory;
    solveWell(first, memory);
    solveWell(second, memory);
    solveWell(second, memory);
    const SolveResult third = solveWell(second, memory);
    EXPECT_LE(third.iterations, solveWell(second, freshMemory).iterations + 3);
}

TEST(Multigrid, TellsWhichCheckOfTheMatrixFailed) {
    const LinearSystem good = fieldWithWells({4, 4, 1}, 1.0, {1.0, 1.0, 1.0});
    EXPECT_EQ(checkRows(good), MultigridCode::None);
    LinearSystem bad = good;
    std::swap(bad.column[0], bad.column[1]);
    EXPECT_EQ(checkRows(bad), MultigridCode::DiagonalNotFirst);
    bad = good;
    bad.value[0] = -1.0;
    EXPECT_EQ(checkRows(bad), MultigridCode::DiagonalSign);
    bad = good;
    bad.rowStart[3] = bad.rowStart[4];
    EXPECT_EQ(checkRows(bad), MultigridCode::RowPointer);
    bad = good;
    bad.rowStart.pop_back();
    EXPECT_EQ(checkRows(bad), MultigridCode::RowPointer);
    bad = good;
    bad.column[1] = good.size;
    EXPECT_EQ(checkRows(bad), MultigridCode::ColumnIndex);
    bad.column[1] = -1;
    EXPECT_EQ(checkRows(bad), MultigridCode::ColumnIndex);
}

TEST(Multigrid, RefusesABadMatrixWithItsCode) {
    LinearSystem system = fieldWithWells({4, 4, 1}, 1.0, {1.0, 1.0, 1.0});
    system.value[0] = 0.0;
    SolverMemory memory;
    std::vector<double> x(static_cast<std::size_t>(system.size), 0.0);
    const SolveResult result = solveMultigrid(system, x, memory);
    EXPECT_EQ(result.failure, SolveFailure::BadMatrix);
    EXPECT_EQ(result.code, 14);
}

TEST(Multigrid, TellsANotANumberOnALargeMatrixWithoutHanging) {
    LinearSystem system = fieldWithWells({40, 40, 4}, 1.0, {1.0, 1.0, 1.0});
    system.value[500] = std::numeric_limits<double>::quiet_NaN();
    SolverMemory memory;
    std::vector<double> x(static_cast<std::size_t>(system.size), 0.0);
    EXPECT_NE(solveMultigrid(system, x, memory).failure, SolveFailure::None);
}

TEST(Multigrid, FindsItsWayAfterAFailure) {
    LinearSystem system = fieldWithWells({40, 40, 4}, 1.0, {1.0, 1.0, 1.0});
    LinearSystem broken = system;
    broken.value[500] = std::numeric_limits<double>::quiet_NaN();
    SolverMemory memory;
    std::vector<double> x(static_cast<std::size_t>(system.size), 0.0);
    solveMultigrid(broken, x, memory);
    solveWell(system, memory);
}

}  // namespace
}  // namespace kvr
