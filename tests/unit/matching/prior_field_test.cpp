#include "matching/prior_field.hpp"

#include "unit/box_grid.hpp"

#include <cmath>
#include <gtest/gtest.h>
#include <random>

using namespace kvr;

namespace {

constexpr double Side = 50.0, Thickness = 10.0;  // ft

GridModel box(int nx, int ny, int nz) {
    GridModel grid = boxGrid(nx, ny, nz);
    grid.DX.assign(grid.NCELLS, Side);
    grid.DY.assign(grid.NCELLS, Side);
    grid.DZ.assign(grid.NCELLS, Thickness);
    return grid;
}

CellArray<std::uint8_t> everywhere(const GridModel& grid) {
    CellArray<std::uint8_t> region;
    region.assign(grid.NCELLS, 1);
    return region;
}

CellArray<double> column(const PriorCovariance& prior, CellId cells, CellId of) {
    CellArray<double> values;
    values.assign(cells, 0.0);
    values[of] = 1.0;
    std::vector<double> scratch;
    applyPriorCovariance(prior, values, scratch);
    return values;
}

double product(const CellArray<double>& a, const CellArray<double>& b) {
    double sum = 0.0;
    for (CellId cell = 1; cell <= a.count(); ++cell) sum += a[cell] * b[cell];
    return sum;
}

}  // namespace

TEST(PriorField, FallsOffByTheSquareOfTheDistanceOverTheLengthOfEachAxis) {
    const GridModel grid = box(9, 7, 5);
    const PriorCovariance prior =
        buildPriorCovariance(grid, {0.5, {150.0, 100.0, 25.0}, 0.2}, everywhere(grid));
    const CellId middle = 5 + 9 * 3 + 63 * 2;  // i 5, j 4, k 3
    const CellArray<double> values = column(prior, grid.NCELLS, middle);
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        const double i = (cell - 1) % 9 - 4, j = (cell - 1) / 9 % 7 - 3, k = (cell - 1) / 63 - 2;
        const double power =
            std::pow(i * Side / 150.0, 2) + std::pow(j * Side / 100.0, 2) + std::pow(k * Thickness / 25.0, 2);
        EXPECT_NEAR(values[cell], 0.25 * std::exp(-power) + 0.04, 2e-3) << i << " " << j << " " << k;
    }
    EXPECT_NEAR(values[middle], 0.29, 1e-12);
}

TEST(PriorField, IsSymmetricAndPositiveWhateverTheRegion) {
    const GridModel grid = box(8, 6, 3);
    CellArray<std::uint8_t> region = everywhere(grid);
    for (CellId cell = 3; cell <= grid.NCELLS; cell += 5) region[cell] = 0;
    const PriorCovariance prior = buildPriorCovariance(grid, {1.0, {400.0, 120.0, 30.0}, 0.0}, region);
    std::mt19937 random(3);
    std::normal_distribution<double> normal;
    std::vector<double> scratch;
    for (int n = 0; n < 50; ++n) {
        CellArray<double> a, b;
        a.assign(grid.NCELLS, 0.0);
        b.assign(grid.NCELLS, 0.0);
        for (double& value : a.cells()) value = normal(random);
        for (double& value : b.cells()) value = normal(random);
        CellArray<double> ofA = a, ofB = b;
        applyPriorCovariance(prior, ofA, scratch);
        applyPriorCovariance(prior, ofB, scratch);
        EXPECT_NEAR(product(a, ofB), product(b, ofA), 1e-10);
        EXPECT_GE(product(a, ofA), 0.0);
        EXPECT_EQ(ofA[3], 0.0) << "a cell that may not change";
    }
}

TEST(PriorField, WithoutLengthsTakesAnEighthOfTheGrid) {
    const GridModel grid = box(16, 8, 1);
    const PriorCovariance own = buildPriorCovariance(grid, {1.0, {}, 0.0}, everywhere(grid));
    const PriorCovariance given =
        buildPriorCovariance(grid, {1.0, {2.0 * Side, 2.0 * Side, 0.125 * Thickness}, 0.0}, everywhere(grid));
    for (std::size_t axis = 0; axis < AxisCount; ++axis)
        EXPECT_EQ(own.correlation[axis], given.correlation[axis]);
    EXPECT_NEAR(own.correlation[0][2], std::exp(-1.0), 2e-3) << "two cells are the length";
}

TEST(PriorField, OfALengthBeyondTheGridIsTheBellItself) {
    const GridModel grid = box(9, 1, 1);
    for (const double cells : {9.0, 20.0, 1e4}) {
        const double far = cells * Side;
        const CellArray<double> values =
            column(buildPriorCovariance(grid, {1.0, {far, far, far}, 0.0}, everywhere(grid)), 9, 1);
        for (CellId cell = 1; cell <= 9; ++cell)
            EXPECT_NEAR(values[cell], std::exp(-std::pow((cell - 1) / cells, 2)), 1e-12);
    }
}
