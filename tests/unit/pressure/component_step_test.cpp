#include "pressure/component_step.hpp"

#include "pressure/component_properties.hpp"
#include "unit/pressure/component_row.hpp"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

namespace kvr {
namespace {

TEST(ComponentStage, FillsItsPoresWithTheMixture) {
    Row row(threeComponents(), 3, 300.0, 0.0);
    row.fill({0.4, 0.2, 0.4}, 1000.0);
    for (CellId c = 1; c <= 3; ++c)
        EXPECT_NEAR(row.stage.FluidVolume[c] / row.state.PoreVolume[c], 1.0, 1e-12);
    EXPECT_GT(row.state.Sg[2], 0.05);
    EXPECT_GT(row.state.So[2], 0.05);
}

TEST(ComponentStep, LeavesAClosedColumnAtRest) {
    Row row(threeComponents(), 20, 200.0, 200.0);
    row.fill({0.2, 0.2, 0.6}, 2000.0);
    // The first steps hang the pressures; behind them nothing moves in a thousand days.
    for (int n = 0; n < 20; ++n) ASSERT_TRUE(row.step(50.0));
    const CellArray<double> before = row.state.Pressure;
    for (int n = 0; n < 10; ++n) ASSERT_TRUE(row.step(100.0));
    for (CellId c = 1; c <= 20; ++c) EXPECT_NEAR(row.state.Pressure[c], before[c], 1e-6);
    for (CellId c = 1; c < 20; ++c)
        EXPECT_NEAR(row.state.Pressure[c + 1] - row.state.Pressure[c],
                    0.5 * (row.state.RhoO[c] + row.state.RhoO[c + 1]) * 10.0 / 144.0, 1e-6);
}

TEST(ComponentStep, KeepsPureGasPureBehindItsOwnInjection) {
    Row row(methaneDecaneTables(), 10, 500.0, 0.0);
    row.fill({1.0, 0.0}, 1500.0);
    row.drive({1.0, 0.0}, 0.01, 1500.0);
    for (int n = 0; n < 20; ++n) ASSERT_TRUE(row.step(5.0));
    for (CellId c = 1; c <= 10; ++c) EXPECT_EQ(row.stage.cells.z(c, 1), 1.0);
}

TEST(ComponentStep, LosesNothingOfAnyComponent) {
    Row row(threeComponents(), 40, 1000.0, 50.0);
    row.fill({0.2, 0.3, 0.5}, 1500.0);
    row.drive({0.9, 0.1, 0.0}, 0.002, 1500.0);
    Composition before{}, brought{};
    for (int i = 0; i < 3; ++i) before[i] = row.molesOf(i);
    for (int n = 0; n < 40; ++n) {
        ASSERT_TRUE(row.step(5.0));
        for (std::size_t i = 0; i < 3; ++i) brought[i] += row.brought(i);
    }
    const double given = row.given * 200.0;
    for (int i = 0; i < 3; ++i)
        EXPECT_NEAR(row.molesOf(i) - before[i], brought[i], 1e-12 * (before[i] + given)) << i;
    const std::vector<double>& moles = row.stage.amounts.moles.slots;
    EXPECT_GE(*std::min_element(moles.begin(), moles.end()), 0.0);
    EXPECT_GT(row.state.Sg[1], 0.3);
    EXPECT_EQ(row.state.Sg[40], 0.0);
}

/// Largest part of a cell's pores that fluids lack or exceed behind 200 days of gas, and the mean over the
/// row.
struct Misfit {
    double largest = 0.0, mean = 0.0;
};
Misfit misfitOfVolumes(double dt) {
    Row row(threeComponents(), 20, 1000.0, 0.0);
    row.fill({0.2, 0.3, 0.5}, 1500.0);
    row.drive({0.9, 0.1, 0.0}, 0.002, 1500.0);
    for (double time = 0.0; time < 200.0 - 1e-9; time += dt) EXPECT_TRUE(row.step(dt));
    Misfit misfit;
    for (CellId c = 1; c <= 20; ++c) {
        const double off = std::abs(row.stage.FluidVolume[c] / row.state.PoreVolume[c] - 1.0);
        misfit.largest = std::max(misfit.largest, off);
        misfit.mean += off / 20.0;
    }
    return misfit;
}

TEST(ComponentStep, LeavesLittleOfTheVolumeBalanceToTheNextStepAndLessWithAShorterOne) {
    // Where gas comes out of its first liquid in a step the volumes of the step's start do not hold.
    const Misfit coarse = misfitOfVolumes(5.0), fine = misfitOfVolumes(1.0);
    EXPECT_LT(coarse.mean, 2e-3);
    EXPECT_LT(fine.mean, 0.5 * coarse.mean);
    EXPECT_LT(fine.largest, 0.5 * coarse.largest);
}

/// Methane fraction over a row of `cells`, averaged over ten parts, behind 0.4 pore volumes of gas.
std::vector<double> gasDrive(CellId cells, double dt) {
    Row row(threeComponents(), cells, 1000.0, 0.0);
    row.fill({0.2, 0.3, 0.5}, 1500.0);
    row.drive({0.9, 0.1, 0.0}, 0.002, 1500.0);
    for (double time = 0.0; time < 200.0 - 1e-9; time += dt) EXPECT_TRUE(row.step(dt));
    std::vector<double> parts(10, 0.0);
    for (CellId c = 1; c <= cells; ++c)
        parts[static_cast<std::size_t>((c - 1) * 10 / cells)] += row.stage.cells.z(c, 1) * 10.0 / cells;
    return parts;
}

double apart(const std::vector<double>& a, const std::vector<double>& b) {
    double sum = 0.0;
    for (std::size_t k = 0; k < a.size(); ++k) sum += std::abs(a[k] - b[k]) / static_cast<double>(a.size());
    return sum;
}

TEST(ComponentStep, ConvergesWithTheGridAndWithTheStep) {
    const std::vector<double> coarse = gasDrive(20, 5.0), middle = gasDrive(40, 5.0),
                              fine = gasDrive(80, 5.0);
    EXPECT_LT(apart(middle, fine), 0.75 * apart(coarse, middle));
    EXPECT_LT(apart(middle, fine), 0.02);
    EXPECT_LT(apart(coarse, gasDrive(20, 1.0)), 0.005);
}

}  // namespace
}  // namespace kvr
