#include "matching/inversion.hpp"

#include "unit/quiet_console.hpp"

#include <cmath>
#include <gtest/gtest.h>

using namespace kvr;

namespace {

CellArray<double> cells(const std::vector<double>& values) {
    CellArray<double> array;
    array.slots = {0.0};
    array.slots.insert(array.slots.end(), values.begin(), values.end());
    return array;
}

SensitivityRows rowOf(const std::vector<double>& values) {
    SensitivityRows rows;
    CellArray<std::uint8_t> all;
    all.assign(static_cast<CellId>(values.size()), 1);
    addRow(cells(values), all, rows);
    return rows;
}

CellArray<double> limited(const UpdateLimits& limits, const CellArray<double>& lnk, CellArray<double> dlnk) {
    limitUpdate(QuietConsole().console, limits, lnk, dlnk);
    return dlnk;
}

/// A row of cells along i, all active.
GridModel rowOfCells(const std::vector<double>& permeability) {
    GridModel grid;
    const auto count = static_cast<CellId>(permeability.size());
    grid.NCELLS = count;
    grid.PERMX = grid.PERMY = grid.PERMZ = cells(permeability);
    grid.Active.assign(count, 1);
    for (CellArray<int>* index : {&grid.CellI, &grid.CellJ, &grid.CellK}) index->assign(count, 1);
    for (CellId cell = 1; cell <= count; ++cell) grid.CellI[cell] = cell;
    return grid;
}

}  // namespace

TEST(RowFigures, AreThoseOfTheValuesThatAreNotZero) {
    const RowFigures row = rowFigures(rowOf({0.0, 2.0, 0.0, 4.0}), 0);
    EXPECT_EQ(row.nonzeros, 2U);
    EXPECT_EQ(row.sum, 6.0);
    EXPECT_EQ(row.mean, 3.0);
    EXPECT_EQ(row.least, 2.0);
    EXPECT_EQ(row.most, 4.0);
    EXPECT_EQ(row.variance, 1.0);
    EXPECT_EQ(rowFigures(rowOf({-2.0, 5.0}), 0).sumOfSizes, 7.0);
    EXPECT_EQ(rowFigures(rowOf({0.0, 0.0}), 0).sum, 0.0);
}

TEST(ConstraintOfARow, BringsThePredictedChangeToItsLimit) {
    const double expected = expectedChange(100.0, 20.0);
    EXPECT_EQ(expected, 5.0);
    const double multiplier = constraintMultiplier(expected, 2.0);
    EXPECT_EQ(multiplier, 2.5);
    SensitivityRows rows = rowOf({5.0, 15.0});
    scaleRow(multiplier, 0, rows);
    EXPECT_EQ(expectedChange(100.0, rowFigures(rows, 0).sum), 2.0);
    EXPECT_EQ(constraintMultiplier(-5.0, 2.0), 2.5) << "the size counts";
    EXPECT_EQ(constraintMultiplier(1.9, 2.0), 1.0);
    EXPECT_EQ(constraintMultiplier(5.0, 0.0), 1.0) << "no limit";
    EXPECT_EQ(expectedChange(100.0, 0.0), 0.0);
}

TEST(GlobalLimit, BelowOneDividesTheIncrement) {
    EXPECT_EQ(limited({0.5, 0.0, 1.0}, cells({4.0, 4.0}), cells({0.3, -0.2})).slots,
              (std::vector<double>{0.0, 0.6, -0.4}));
}

TEST(GlobalLimit, AboveOneDividesByItsShareOfTheFieldAndOne) {
    const CellArray<double> dlnk = limited({2.0, 0.0, 1.0}, cells({30.0, -10.0}), cells({-20.0, 10.0}));
    EXPECT_DOUBLE_EQ(dlnk[1], -20.0 / 2.5);
    EXPECT_DOUBLE_EQ(dlnk[2], 10.0 / 2.5);
    EXPECT_EQ(limited({2.0, 0.0, 1.0}, cells({30.0, 30.0}), cells({10.0, 10.0}))[1], 10.0)
        << "2 * 20/60 is below 1";
}

TEST(GridLimit, CutsEachCellWithItsSign) {
    const CellArray<double> dlnk =
        limited({0.0, 0.1, 1.0}, cells({4.6, 4.6, -4.6, 4.6}), cells({1.0, -1.0, 1.0, 0.2}));
    EXPECT_DOUBLE_EQ(dlnk[1], 0.46);
    EXPECT_DOUBLE_EQ(dlnk[2], -0.46);
    EXPECT_DOUBLE_EQ(dlnk[3], 0.46);
    EXPECT_EQ(dlnk[4], 0.2);
}

TEST(Divisor, DividesOnlyWhereItIsAboveZero) {
    EXPECT_EQ(limited({0.0, 0.0, 2.0}, cells({4.0}), cells({1.0}))[1], 0.5);
    EXPECT_EQ(limited({0.0, 0.0, -1.0}, cells({4.0}), cells({1.0}))[1], 1.0);
    EXPECT_EQ(limited({0.0, 0.0, 0.0}, cells({4.0}), cells({1.0}))[1], 1.0);
}

TEST(Update, StaysWithinTheBoundsAndTakesTheOtherAxesAlong) {
    GridModel grid = rowOfCells({4000.0, 1e-3, 100.0, 8000.0, 0.0});
    grid.PERMZ = cells({400.0, 1e-4, 10.0, 800.0, 0.0});
    const Permeabilities base{grid.PERMX, grid.PERMY, grid.PERMZ};
    applyUpdate(base, cells({std::log(2.0), -std::log(100.0), std::log(4.0), 0.0, 1.0}), 1.0, {1e-4, 5000.0},
                grid);
    EXPECT_EQ(grid.PERMX[1], 5000.0);
    EXPECT_EQ(grid.PERMX[2], 1e-4);
    EXPECT_NEAR(grid.PERMX[3], 400.0, 1e-10);
    EXPECT_NEAR(grid.PERMY[3], 400.0, 1e-10);
    EXPECT_NEAR(grid.PERMZ[3], 40.0, 1e-11);
    EXPECT_NEAR(grid.PERMZ[1], 500.0, 1e-10);
    EXPECT_EQ(grid.PERMX[4], 8000.0) << "what is not changed keeps its value";
    EXPECT_EQ(grid.PERMX[5], 0.0);
    applyUpdate(base, cells({0.0, 0.0, std::log(4.0), 0.0, 0.0}), 0.5, {1e-4, 5000.0}, grid);
    EXPECT_NEAR(grid.PERMX[3], 200.0, 1e-10) << "halved";
}

TEST(UpdateRegion, IsWithinARadiusOfCompletions) {
    GridModel grid = rowOfCells({1.0, 1.0, 1.0, 1.0, 1.0, 0.0});
    grid.Active[2] = 0;
    const std::vector<CellId> completed{3};
    EXPECT_EQ(updateRegion(grid, 1.0, completed).slots, (std::vector<std::uint8_t>{0, 0, 0, 1, 1, 0, 0}));
    EXPECT_EQ(updateRegion(grid, 0.0, completed).slots, (std::vector<std::uint8_t>{0, 1, 0, 1, 1, 1, 0}));
}

TEST(UpdateFigures, CountRatiosWhereTheyAreDefined) {
    CellArray<std::uint8_t> all;
    all.assign(3, 1);
    const UpdateFigures figures = updateFigures(all, cells({0.01, 0.0, 4.0}), cells({1.01, 5.0, -1.0}));
    EXPECT_EQ(figures.huge, 1) << "1.01 over 0.01; a cell of 1 md has no ratio";
    EXPECT_EQ(figures.least, -1.0);
    EXPECT_EQ(figures.most, 5.0);
    EXPECT_EQ(figures.largest, 5.0);
    EXPECT_NEAR(figures.magnitude, 7.01 / 4.01, 1e-14);
}
