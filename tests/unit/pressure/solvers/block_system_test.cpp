#include "pressure/solvers/block_system.hpp"

#include "pressure/solvers/block_kernels.hpp"
#include "pressure/solvers/block_memory.hpp"
#include "unit/pressure/solvers/block_samples.hpp"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace kvr {
namespace {

using test::BlockSample;
using test::makeBlockSystem;

constexpr double Tight = 1e-11;

struct Solved {
    SolveResult result;
    std::vector<double> all;  // cells' unknowns, then wells' pressures
};

Solved solveWith(const BlockSystem& system, BlockPreconditioner preconditioner, BlockSolverMemory& memory) {
    Solved solved;
    std::vector<double> x(system.rhs.size(), 17.0), bhp(system.wells.size(), 17.0);
    const BlockSolveLimits limits{Tight, 400, preconditioner};
    solved.result = solveBlockSystem(system, limits, x, bhp, memory);
    solved.all = x;
    solved.all.insert(solved.all.end(), bhp.begin(), bhp.end());
    return solved;
}

/// Largest difference of each unknown (and of the wells' pressures) over its largest value.
double relativeDifference(const BlockSystem& system, const std::vector<double>& a,
                          const std::vector<double>& b) {
    const std::size_t n = static_cast<std::size_t>(system.blockSize), cells = system.rhs.size();
    std::vector<double> difference(n + 1, 0.0), size(n + 1, 1e-300);
    for (std::size_t k = 0; k < a.size(); ++k) {
        const std::size_t kind = k < cells ? k % n : n;
        difference[kind] = std::max(difference[kind], std::abs(a[k] - b[k]));
        size[kind] = std::max(size[kind], std::abs(b[k]));
    }
    double largest = 0.0;
    for (std::size_t kind = 0; kind <= n; ++kind) largest = std::max(largest, difference[kind] / size[kind]);
    return largest;
}

BlockSystem sampleWithWells(const BlockSample& sample) {
    BlockSystem system = makeBlockSystem(sample);
    addColumnWell(sample, 0, 0, true, system);
    addColumnWell(sample, sample.nx - 1, sample.ny - 1, false, system);
    addColumnWell(sample, sample.nx / 2, 1, true, system);
    return system;
}

TEST(BlockPattern, HoldsEachNeighbourOnceInRisingOrderAndTellsWhereConnectionsStand) {
    const std::vector<std::pair<int, int>> pairs{{2, 0}, {0, 1}, {1, 0}};
    BlockSystem system;
    const auto places = buildBlockPattern(3, 2, pairs, system);
    EXPECT_EQ(system.rowStart, (std::vector<int>{0, 3, 5, 7}));
    EXPECT_EQ(system.column, (std::vector<int>{0, 1, 2, 0, 1, 0, 2}));
    EXPECT_EQ(system.diagonal, (std::vector<int>{0, 4, 6}));
    EXPECT_EQ(system.value.size(), 28u);
    EXPECT_EQ(places[0].forward, 5);
    EXPECT_EQ(places[0].backward, 2);
    EXPECT_EQ(places[1].forward, 1);
    EXPECT_EQ(places[2].forward, 3);
}

TEST(BlockPattern, IsStampedAnewByEachBuild) {
    BlockSystem system;
    buildBlockPattern(2, 2, {}, system);
    const auto first = system.patternStamp;
    buildBlockPattern(2, 2, {}, system);
    EXPECT_NE(system.patternStamp, first);
}

TEST(BlockPattern, ClearingKeepsTheStorage) {
    BlockSystem system = sampleWithWells({});
    clearValues(system);
    EXPECT_EQ(system.blocks() * 4, system.value.size());
    EXPECT_TRUE(std::all_of(system.value.begin(), system.value.end(), [](double v) { return v == 0.0; }));
    EXPECT_EQ(system.wells[0].cells.size(), 4u);
    EXPECT_EQ(system.wells[0].rowBlocks[0], 0.0);
}

TEST(BlockKernels, InverseTimesBlockIsTheUnitBlock) {
    const double a[9] = {2.0, -1.0, 0.5, 0.3, 4.0, -2.0, 1.0, 0.1, 3.0};
    double inverse[9], unit[9];
    ASSERT_TRUE(invertBlock<3>(a, inverse));
    setBlockProduct<3>(a, inverse, unit);
    for (int k = 0; k < 9; ++k) EXPECT_NEAR(unit[k], k % 4 == 0 ? 1.0 : 0.0, 1e-15);
}

TEST(BlockKernels, SingularBlocksAreNotInverted) {
    const double two[4] = {1.0, 2.0, 0.5, 1.0};
    const double three[9] = {1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0, 9.0};
    const double empty[4] = {0.0, 0.0, 0.0, 1.0};
    double inverse[9];
    EXPECT_FALSE(invertBlock<2>(two, inverse));
    EXPECT_FALSE(invertBlock<3>(three, inverse));
    EXPECT_FALSE(invertBlock<2>(empty, inverse));
}

struct Way {
    int blockSize;
    BlockPreconditioner preconditioner;
};

class EveryPreconditioner : public testing::TestWithParam<Way> {};

TEST_P(EveryPreconditioner, AgreesWithEliminationOfTheFullMatrix) {
    BlockSample sample;
    sample.blockSize = GetParam().blockSize;
    const BlockSystem system = sampleWithWells(sample);
    const auto memory = makeBlockSolverMemory();
    const Solved solved = solveWith(system, GetParam().preconditioner, *memory);
    EXPECT_EQ(solved.result.failure, SolveFailure::None);
    EXPECT_LE(solved.result.residual, Tight);
    EXPECT_GT(solved.result.iterations, 0);
    EXPECT_LT(relativeDifference(system, solved.all, test::eliminatedBlocks(system)), 1e-8);
}

TEST_P(EveryPreconditioner, AgreesWithEliminationWithoutWellsAndWithoutTheAccumulationPart) {
    BlockSample sample;
    sample.blockSize = GetParam().blockSize;
    BlockSystem system = makeBlockSystem(sample);
    system.accumulation.clear();
    const auto memory = makeBlockSolverMemory();
    const Solved solved = solveWith(system, GetParam().preconditioner, *memory);
    EXPECT_EQ(solved.result.failure, SolveFailure::None);
    EXPECT_LT(relativeDifference(system, solved.all, test::eliminatedBlocks(system)), 1e-8);
}

TEST_P(EveryPreconditioner, FollowsValuesAndWellsThatChangeBetweenSolves) {
    BlockSample sample;
    sample.blockSize = GetParam().blockSize;
    const auto memory = makeBlockSolverMemory();
    BlockSystem system = sampleWithWells(sample);
    solveWith(system, GetParam().preconditioner, *memory);
    for (double& value : system.value) value *= 3.0;
    system.wells[0].rowBlocks.assign(system.wells[0].rowBlocks.size(), 0.0);  // now held at its pressure
    system.wells[0].diagonal = 1.0;
    const Solved solved = solveWith(system, GetParam().preconditioner, *memory);
    EXPECT_EQ(solved.result.failure, SolveFailure::None);
    EXPECT_LT(relativeDifference(system, solved.all, test::eliminatedBlocks(system)), 1e-8);
}

TEST_P(EveryPreconditioner, TakesAsManyIterationsWhateverTheUnitsOfTheEquations) {
    BlockSample sample;
    sample.blockSize = GetParam().blockSize;
    sample.unit = {1.0, 1.0, 1.0};
    const BlockSystem plain = sampleWithWells(sample);
    sample.unit = {1e6, 1.0, 1e-6};
    const BlockSystem mixed = sampleWithWells(sample);
    const auto first = makeBlockSolverMemory(), second = makeBlockSolverMemory();
    const Solved a = solveWith(plain, GetParam().preconditioner, *first);
    const Solved b = solveWith(mixed, GetParam().preconditioner, *second);
    EXPECT_NEAR(a.result.iterations, b.result.iterations, 1.0 + 0.1 * a.result.iterations);
    EXPECT_LT(relativeDifference(mixed, b.all, a.all), 1e-7);
}

INSTANTIATE_TEST_SUITE_P(
    BlockSystems, EveryPreconditioner,
    testing::Values(Way{2, BlockPreconditioner::BlockIlu}, Way{3, BlockPreconditioner::BlockIlu},
                    Way{2, BlockPreconditioner::TwoStage}, Way{3, BlockPreconditioner::TwoStage},
                    Way{2, BlockPreconditioner::Automatic}, Way{3, BlockPreconditioner::Automatic}));

TEST(BlockSystems, DenseRouteAgreesWithElimination) {
    for (const int size : {2, 3}) {
        BlockSample sample;
        sample.blockSize = size;
        const BlockSystem system = sampleWithWells(sample);
        const auto memory = makeBlockSolverMemory();
        std::vector<double> x(system.rhs.size()), bhp(system.wells.size());
        const SolveResult result = solveBlockSystemDense(system, x, bhp, *memory);
        EXPECT_EQ(result.failure, SolveFailure::None);
        EXPECT_LT(result.residual, 1e-12);
        x.insert(x.end(), bhp.begin(), bhp.end());
        EXPECT_LT(relativeDifference(system, x, test::eliminatedBlocks(system)), 1e-9);
    }
}

TEST(BlockSystems, SingularMatrixIsReportedByTheDenseRoute) {
    BlockSystem system = makeBlockSystem({});
    for (int k = system.rowStart[5]; k < system.rowStart[6]; ++k) {
        for (double& entry : system.block(k)) entry = 0.0;
    }
    const auto memory = makeBlockSolverMemory();
    std::vector<double> x(system.rhs.size()), bhp;
    EXPECT_EQ(solveBlockSystemDense(system, x, bhp, *memory).failure, SolveFailure::Singular);
    const BlockSolveLimits limits{1e-6, 50, BlockPreconditioner::Automatic};
    EXPECT_EQ(solveBlockSystem(system, limits, x, bhp, *memory).failure, SolveFailure::NotConverged);
}

TEST(BlockSystems, EntriesThatAreNotNumbersAreReported) {
    BlockSystem system = makeBlockSystem({});
    system.value[40] = std::numeric_limits<double>::quiet_NaN();
    const auto memory = makeBlockSolverMemory();
    std::vector<double> x(system.rhs.size()), bhp;
    EXPECT_EQ(solveBlockSystem(system, {}, x, bhp, *memory).failure, SolveFailure::NotANumber);
    EXPECT_EQ(solveBlockSystemDense(system, x, bhp, *memory).failure, SolveFailure::NotANumber);
}

TEST(BlockSystems, ZeroRightSideGivesZero) {
    BlockSystem system = makeBlockSystem({});
    std::fill(system.rhs.begin(), system.rhs.end(), 0.0);
    const auto memory = makeBlockSolverMemory();
    std::vector<double> x(system.rhs.size(), 3.0), bhp;
    const SolveResult result = solveBlockSystem(system, {}, x, bhp, *memory);
    EXPECT_EQ(result.iterations, 0);
    EXPECT_TRUE(std::all_of(x.begin(), x.end(), [](double v) { return v == 0.0; }));
}

TEST(BlockSystems, TwoStagesNeedFewerIterationsWherePressureReachesFar) {
    BlockSample sample;
    sample.nx = sample.ny = 40;
    sample.nz = 3;
    sample.dt = 100.0;
    const BlockSystem system = sampleWithWells(sample);
    const auto first = makeBlockSolverMemory(), second = makeBlockSolverMemory();
    const Solved ilu = solveWith(system, BlockPreconditioner::BlockIlu, *first);
    const Solved two = solveWith(system, BlockPreconditioner::TwoStage, *second);
    EXPECT_LT(3 * two.result.iterations, ilu.result.iterations);
    EXPECT_LT(relativeDifference(system, ilu.all, two.all), 1e-7);
}

TEST(PreconditionerChoice, StaysWithIncompleteFactorsWhileTheyTakeFewIterations) {
    PreconditionerChoice choice;
    for (int solve = 0; solve < 200; ++solve) {
        EXPECT_FALSE(choice.twoStages);
        noteSolve(choice.twoStages, TrialIterations, choice);
    }
}

TEST(PreconditionerChoice, TakesTwoStagesOnceTheyHaveCostLess) {
    PreconditionerChoice choice;
    noteSolve(false, 60, choice);
    EXPECT_TRUE(choice.twoStages);
    noteSolve(true, 8, choice);
    EXPECT_TRUE(choice.twoStages);
}

TEST(PreconditionerChoice, GoesBackWhenTwoStagesCostMore) {
    PreconditionerChoice choice;
    noteSolve(false, 20, choice);
    noteSolve(true, 13, choice);
    EXPECT_FALSE(choice.twoStages);
}

TEST(PreconditionerChoice, BuildsANewHierarchyWhenIterationsHaveGrown) {
    PreconditionerChoice choice;
    noteHierarchy(true, 6, choice);
    EXPECT_FALSE(choice.hierarchyWorn);
    noteHierarchy(false, 6 + WornIterations, choice);
    EXPECT_FALSE(choice.hierarchyWorn);
    noteHierarchy(false, 7 + WornIterations, choice);
    EXPECT_TRUE(choice.hierarchyWorn);
}

TEST(BlockSystems, DenseWordsAndTinyModelsAreSolvedDensely) {
    EXPECT_TRUE(solvesBlocksDensely("dgesv", 5000));
    EXPECT_TRUE(solvesBlocksDensely("dgesl", 5000));
    EXPECT_TRUE(solvesBlocksDensely("st", 5000));
    EXPECT_TRUE(solvesBlocksDensely("amg", 26));
    for (const char* word : {"amg", "samg", "gmres", "cg", "bicg"})
        EXPECT_FALSE(solvesBlocksDensely(word, 27));
}

}  // namespace
}  // namespace kvr
