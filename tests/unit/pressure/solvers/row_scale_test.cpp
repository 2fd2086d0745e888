#include "pressure/solvers/row_scale.hpp"

#include "unit/pressure/solvers/generated_systems.hpp"

#include <cmath>
#include <gtest/gtest.h>

namespace kvr {
namespace {

std::vector<double> balanceOf(const LinearSystem& system) {
    std::vector<double> wells, factor;
    formWellScale(system, wells);
    balanceRows(system, wells, factor);
    return factor;
}

/// Largest |column sum - row sum| over the diagonal, rows scaled by the factors; the row sums are those
/// before.
double worstImbalance(const LinearSystem& system, const std::vector<double>& factor) {
    std::vector<double> open(factor.size(), 0.0);
    for (int i = 0; i < system.size; ++i) {
        for (std::int64_t k = system.rowStart[i]; k < system.rowStart[i + 1]; ++k) {
            open[i] += system.value[k];
            open[system.column[k]] -= factor[i] * system.value[k];
        }
    }
    double worst = 0.0;
    for (int i = 0; i < system.size; ++i)
        worst = std::max(worst, std::abs(open[i]) / system.value[system.rowStart[i]]);
    return worst;
}

TEST(WellScale, IsTheSizeOfTheColumnOverThatOfTheRow) {
    LinearSystem system = test::fromFull({{4.0, -1.0, -3.0}, {-1.0, 3.0, -2.0}, {-60.0, -40.0, 100.0}}, {});
    system.cellRows = 2;
    std::vector<double> scale;
    formWellScale(system, scale);
    ASSERT_EQ(scale.size(), 1U);
    EXPECT_DOUBLE_EQ(scale[0], 5.0 / 100.0);
}

TEST(RowBalance, LeavesASymmetricMatrixAsItIs) {
    const test::Box box{8, 7, 3};
    const std::vector<double> field = test::lognormalField(box.cells(), 1.0, 8);
    const LinearSystem system = boxSystem(box, field, {1.0, 1.0, 9.0}, 1e-3, test::fiveSpotWells(box, field));
    for (const double factor : balanceOf(system)) EXPECT_DOUBLE_EQ(factor, 1.0);
}

TEST(RowBalance, NearsTheFactorsOfATwoCellMatrixSweepBySweep) {
    // The factors of the rows (2, -1) and (-4, 5) answer 2 s - 4 t = 1 and 5 t - s = 1: s = 3/2, t = 1/2.
    // Sweeps forward and backward in turn give s = 5/2, t = 7/10; s = 1.9; t = 0.58; s = 1.66; t = 0.532;
    // s = 1.564.
    const LinearSystem system = test::fromFull({{2.0, -1.0}, {-4.0, 5.0}}, {});
    const std::vector<double> factor = balanceOf(system);
    EXPECT_NEAR(factor[0], 1.564, 1e-12);
    EXPECT_NEAR(factor[1], 0.532, 1e-12);
}

TEST(RowBalance, BringsColumnSumsNearRowSumsUnderOneSidedMultipliers) {
    const test::Box box{20, 20, 4};
    LinearSystem system = boxSystem(box, test::lognormalField(box.cells(), 1.0, 8), {1.0, 1.0, 1.0}, 1e-3);
    test::oneSidedMultipliers(system, 0.02, 7);
    const double before = worstImbalance(system, std::vector<double>(system.size, 1.0));
    EXPECT_LT(worstImbalance(system, balanceOf(system)), 0.1 * before);
}

TEST(RowBalance, KeepsItsFactorsPositiveAndBounded) {
    // A row that all leave and none enters, and a negative sum.
    const LinearSystem system = test::fromFull({{1.0, -1e6, 0.0}, {-1e-9, 1.0, -5.0}, {0.0, 0.0, 1e-8}}, {});
    for (const double factor : balanceOf(system)) {
        EXPECT_GE(factor, 1.0 / LargestBalance);
        EXPECT_LE(factor, LargestBalance);
    }
}

}  // namespace
}  // namespace kvr
