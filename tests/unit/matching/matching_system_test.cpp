#include "matching/matching_system.hpp"

#include "unit/box_grid.hpp"
#include "unit/matching/dense_system.hpp"

#include <gtest/gtest.h>
#include <random>

using namespace kvr;

namespace {

CellArray<double> cellValues(std::initializer_list<double> values) {
    CellArray<double> cells;
    cells.assign(static_cast<CellId>(values.size()), 0.0);
    std::copy(values.begin(), values.end(), cells.slots.begin() + 1);
    return cells;
}

WellData randomData(const GridModel& grid, int rows, std::mt19937& random) {
    std::uniform_real_distribution<double> number(-1.0, 1.0);
    WellData data;
    for (int r = 0; r < rows; ++r) {
        CellArray<double> sensitivity;
        sensitivity.assign(grid.NCELLS, 0.0);
        for (double& value : sensitivity.cells())
            if (number(random) > 0.0) value = number(random);
        addRow(sensitivity, grid.Active, data.rows);
        data.rightSide.push_back(number(random));
    }
    return data;
}

std::vector<double> randomVector(std::size_t size, std::mt19937& random) {
    std::uniform_real_distribution<double> number(-1.0, 1.0);
    std::vector<double> vector(size);
    for (double& value : vector) value = number(random);
    return vector;
}

double dot(const std::vector<double>& a, const std::vector<double>& b) {
    double sum = 0.0;
    for (std::size_t n = 0; n < a.size(); ++n) sum += a[n] * b[n];
    return sum;
}

}  // namespace

TEST(SensitivityRows, HoldTheValuesOtherThanZeroOfActiveCells) {
    const GridModel grid = boxGrid(5, 1, 1, {4});
    SensitivityRows rows;
    addRow(cellValues({1.0, 0.0, 3.0, 4.0, 5.0}), grid.Active, rows);
    addRow(cellValues({0.0, 0.0, 0.0, 7.0, 0.0}), grid.Active, rows);
    addRow(cellValues({0.0, 2.0, 0.0, 0.0, 0.0}), grid.Active, rows);
    EXPECT_EQ(rows.start, (std::vector<std::size_t>{0, 3, 3, 4}));
    EXPECT_EQ(rows.cell, (std::vector<CellId>{1, 3, 5, 2}));
    EXPECT_EQ(rows.value, (std::vector<double>{1.0, 3.0, 5.0, 2.0}));
}

TEST(MatchingSystem, ProductsAreThoseOfTheRowsWrittenOut) {
    std::mt19937 random(7);
    const GridModel grid = boxGrid(4, 3, 2, {6, 19});
    const WellData data = randomData(grid, 3, random);
    for (const ConstraintWeights& weights : {ConstraintWeights{0.0, 0.0, 0.0},
                                             {0.3, 0.0, 0.0},
                                             {0.0, 0.2, 0.0},
                                             {0.0, 0.0, 0.4},
                                             {0.3, 0.2, 0.4}}) {
        const MatchingSystem system = buildMatchingSystem(grid, weights, data);
        const DenseRows rows = denseRows(grid, data, weights);
        ASSERT_EQ(rowCount(system), rows.size());
        const std::vector<double> x = randomVector(system.columns(), random);
        std::vector<double> y(rows.size(), 0.5);
        apply_A(system, x, y);
        for (std::size_t r = 0; r < rows.size(); ++r) {
            double expected = 0.5;
            for (std::size_t c = 0; c < x.size(); ++c)
                expected += rows[r][static_cast<std::size_t>(system.cells[c]) - 1] * x[c];
            EXPECT_NEAR(y[r], expected, 1e-14) << "row " << r;
        }
    }
}

TEST(MatchingSystem, TransposeAgreesWithTheProduct) {
    std::mt19937 random(11);
    std::uniform_real_distribution<double> number(0.01, 3.0);
    for (int n = 0; n < 50; ++n) {
        const GridModel grid =
            boxGrid(1 + n % 5, 1 + n % 4, 1 + n % 3,
                    n % 3 == 2 ? std::initializer_list<CellId>{2} : std::initializer_list<CellId>{});
        const WellData data = randomData(grid, n % 4, random);
        const MatchingSystem system =
            buildMatchingSystem(grid, {number(random), number(random), number(random)}, data);
        const std::vector<double> v = randomVector(system.columns(), random);
        const std::vector<double> u = randomVector(rowCount(system), random);
        std::vector<double> Av(u.size(), 0.0), Atu(v.size(), 0.0);
        apply_A(system, v, Av);
        apply_At(system, u, Atu);
        EXPECT_NEAR(dot(u, Av), dot(v, Atu), 1e-12);
    }
}

TEST(MatchingSystem, SmoothnessOfAConstantFieldIsZeroInside) {
    const GridModel grid = boxGrid(5, 5, 5);
    const WellData none;
    const MatchingSystem system = buildMatchingSystem(grid, {0.0, 0.7, 0.9}, none);
    std::vector<double> y(rowCount(system), 0.0);
    apply_A(system, std::vector<double>(system.columns(), 3.0), y);
    ASSERT_EQ(y.size(), 3u * 125u);
    const CellId inside = cellIndex(grid, 3, 2, 4);
    for (std::size_t axis = 0; axis < 3; ++axis)
        EXPECT_EQ(y[axis * 125 + static_cast<std::size_t>(inside) - 1], 0.0);
    EXPECT_DOUBLE_EQ(y[0], 0.7 * 1.5)
        << "a corner has one neighbour along the axis: half of the weight is left";
}

TEST(MatchingSystem, AnAxisOfOneCellHasRowsOfZeros) {
    const GridModel grid = boxGrid(3, 1, 1);
    const WellData none;
    const MatchingSystem system = buildMatchingSystem(grid, {0.0, 0.5, 0.0}, none);
    std::vector<double> y(rowCount(system), 0.0);
    apply_A(system, std::vector<double>{1.0, 2.0, 4.0}, y);
    EXPECT_EQ(y, (std::vector<double>{0.0, -0.25, 1.5, 0.0, 0.0, 0.0}));
}

TEST(MatchingSystem, ACellWithoutNeighboursIsFreeUnlessTheNormHoldsIt) {
    const GridModel grid = boxGrid(4, 1, 1, {3});
    const WellData none;
    EXPECT_FALSE(constraintsHoldAll(buildMatchingSystem(grid, {0.0, 1.0, 1.0}, none)));
    EXPECT_TRUE(constraintsHoldAll(buildMatchingSystem(grid, {0.1, 0.0, 0.0}, none)));
    EXPECT_TRUE(constraintsHoldAll(buildMatchingSystem(boxGrid(4, 1, 1), {0.0, 1.0, 0.0}, none)));
}
