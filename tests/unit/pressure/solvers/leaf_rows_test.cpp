#include "pressure/solvers/leaf_rows.hpp"

#include <gtest/gtest.h>
#include <random>
#include <utility>

namespace kvr {
namespace {

/// A ring of `hosts` rows, the even ones with a leaf each, and a well in the second; entries at random, in
/// the scale of a reservoir: pressures a thousand times the saturations.
BlockSystem ringWithLeaves(int hosts, int blockSize) {
    std::vector<std::pair<int, int>> pairs;
    const int leaves = hosts / 2;
    for (int i = 0; i < hosts; ++i) pairs.emplace_back(leaves + i, leaves + (i + 1) % hosts);
    for (int i = 0; i < leaves; ++i) pairs.emplace_back(i, leaves + 2 * i);
    BlockSystem system;
    buildBlockPattern(hosts + leaves, blockSize, pairs, system);
    std::mt19937 random(7);
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    const int size = blockSize * blockSize;
    for (std::size_t k = 0; k < system.value.size(); ++k)
        system.value[k] = unit(random) * (static_cast<int>(k) % blockSize == 0 ? 1e-3 : 1.0);
    for (int row = 0; row < system.rows; ++row)
        for (int e = 0; e < blockSize; ++e)
            system.value[static_cast<std::size_t>(system.diagonal[row] * size + e * (blockSize + 1))] +=
                e == 0 ? 8e-3 : 8.0;
    for (double& value : system.rhs) value = unit(random);
    system.accumulation.assign(system.rhs.size() * static_cast<std::size_t>(blockSize), 0.5);
    WellBorder well;
    well.cells = {leaves + 1};
    well.columnBlocks.assign(static_cast<std::size_t>(blockSize), 0.3);
    well.rowBlocks.assign(static_cast<std::size_t>(blockSize), 0.2);
    well.rhs = 0.7;
    system.wells = {well};
    return system;
}

std::vector<int> upTo(int count) {
    std::vector<int> rows;
    for (int row = 0; row < count; ++row) rows.push_back(row);
    return rows;
}

TEST(LeafRows, TakenOutAndPutBackGiveTheSolutionOfTheWholeSystem) {
    for (const int blockSize : {2, 3}) {
        const BlockSystem whole = ringWithLeaves(20, blockSize);
        const BlockSolverMemoryPointer memory = makeBlockSolverMemory();
        std::vector<double> expected(whole.rhs.size()), found(whole.rhs.size());
        std::vector<double> expectedBhp(1), bhp(1);
        ASSERT_EQ(solveBlockSystemDense(whole, expected, expectedBhp, *memory).failure, SolveFailure::None);
        LeafRows leaves = findLeafRows(whole, upTo(10));
        ASSERT_EQ(leaves.leaves.size(), 10u);
        EXPECT_EQ(leaves.rest.rows, 20);
        ASSERT_TRUE(takeOutLeaves(whole, leaves));
        ASSERT_EQ(solveBlockSystemDense(leaves.rest, leaves.solution, bhp, *memory).failure,
                  SolveFailure::None);
        putBackLeaves(whole, leaves, found);
        EXPECT_NEAR(bhp[0], expectedBhp[0], 1e-9);
        for (std::size_t k = 0; k < found.size(); ++k)
            EXPECT_NEAR(found[k], expected[k],
                        1e-11 * (k % static_cast<std::size_t>(blockSize) == 0 ? 1e3 : 1.0))
                << k;
    }
}

TEST(LeafRows, AreTheCandidatesWithOneNeighbourThatIsNone) {
    const BlockSystem whole = ringWithLeaves(6, 2);
    EXPECT_EQ(findLeafRows(whole, upTo(9)).leaves.size(), 3u);  // rows of the ring have two neighbours
    EXPECT_TRUE(findLeafRows(whole, {}).leaves.empty());
    BlockSystem pair;
    buildBlockPattern(2, 2, std::vector<std::pair<int, int>>{{0, 1}}, pair);
    EXPECT_EQ(findLeafRows(pair, upTo(2)).leaves.size(), 1u);
}

TEST(LeafRows, StayWhereTheirBlockHasNoInverseOrAWellStandsInThem) {
    BlockSystem whole = ringWithLeaves(6, 2);
    LeafRows leaves = findLeafRows(whole, upTo(3));
    ASSERT_TRUE(takeOutLeaves(whole, leaves));
    whole.wells[0].cells = {1};
    EXPECT_FALSE(takeOutLeaves(whole, leaves));
    whole.wells.clear();
    for (double& value : whole.block(whole.diagonal[2])) value = 0.0;
    EXPECT_FALSE(takeOutLeaves(whole, leaves));
}

}  // namespace
}  // namespace kvr
