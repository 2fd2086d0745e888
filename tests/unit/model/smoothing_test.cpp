#include "model/smoothing.hpp"

#include "model/rock_properties.hpp"
#include "unit/model/conditioned.hpp"

#include <gtest/gtest.h>
#include <numeric>

namespace kvr {
namespace {

std::vector<double> smoothed(const GridModel& grid, int passes, const std::vector<double>& values) {
    CellArray<double> array;
    array.assign(grid.NCELLS, 0.0);
    setCells(array, values);
    smooth(grid, passes, array);
    return {array.cells().begin(), array.cells().end()};
}

void expectValues(const std::vector<double>& values, const std::vector<double>& expected) {
    ASSERT_EQ(values.size(), expected.size());
    for (std::size_t n = 0; n < values.size(); ++n) EXPECT_TRUE(close(values[n], expected[n]));
}

TEST(Smoothing, TakesTheMeanOfEachCellAndItsNeighboursInTheRow) {
    const GridModel grid = rockOnly(3, 1, 1);
    expectValues(smoothed(grid, 1, {1, 2, 6}), {1.5, 3.0, 4.0});
    expectValues(smoothed(grid, 2, {1, 2, 6}), {2.25, 17.0 / 6.0, 3.5});
}

TEST(Smoothing, CountsTheCellAboveThreeTimes) {
    // The offset (0, 0, -1) stands in three rows of the table, (0, 0, 1) in one.
    expectValues(smoothed(rockOnly(1, 1, 3), 1, {1, 2, 6}), {1.5, 2.2, 3.0});
}

TEST(Smoothing, CountsRepeatedNeighboursAsOftenAsTheyStandInTheTable) {
    std::vector<double> values(27);
    std::iota(values.begin(), values.end(), 1.0);
    const std::vector<double> result = smoothed(rockOnly(3, 3, 3), 1, values);
    EXPECT_TRUE(close(result[13], 13.7037037, 1e-8));
    EXPECT_TRUE(close(result[0], 7.5));
    EXPECT_TRUE(close(result[26], 19.3333333, 1e-8));
}

TEST(Smoothing, KnowsItsPropertiesInAnyCase) {
    for (const char* name : {"PERMX", "permx", "PermX", " pErMx "})
        EXPECT_EQ(findRockProperty(name)->name, "PERMX");
    EXPECT_EQ(findRockProperty("PERM"), nullptr);
}

TEST(Smoothing, OfNoPassesLeavesTheValues) {
    expectValues(smoothed(rockOnly(3, 1, 1), 0, {1, 2, 6}), {1, 2, 6});
    expectValues(smoothed(rockOnly(3, 1, 1), -5, {1, 2, 6}), {1, 2, 6});
}

TEST(Smoothing, EndsWhateverCountADeckGives) {
    const GridModel grid = rockOnly(3, 1, 1);
    EXPECT_EQ(smoothed(grid, 2000000000, {1, 2, 6}), smoothed(grid, MostSmoothingPasses, {1, 2, 6}));
}

TEST(Smoothing, LeavesAGridOfOneCell) {
    expectValues(smoothed(rockOnly(1, 1, 1), 7, {4.5}), {4.5});
}

TEST(Smoothing, ActsInPlaceBehindTheConnectionsAndOncePerRun) {
    RunOptions options;
    options.parameterSmoothing = true;
    options.smoothingRows = {{"PERMX   ", {1, 1, 1}, 1}, {"NONSENSE", {1, 1, 1}, 1}};
    GridModel grid = uniformBlocks(3, 1, 1, 100, 50, 10);
    setCells(grid.PERMX, {1, 2, 6});
    auto [first, table] = condition(grid, false, options);
    expectValues({first.PERMX.cells().begin(), first.PERMX.cells().end()}, {1.5, 3.0, 4.0});
    EXPECT_EQ(table.Trans(1, 2), condition(grid, false).table.Trans(1, 2));
    const auto again = condition(first, false, options);
    expectValues({again.grid.PERMX.cells().begin(), again.grid.PERMX.cells().end()}, {1.5, 3.0, 4.0});
}

}  // namespace
}  // namespace kvr
