#include "matching/most_probable.hpp"

#include "matching/probable_update.hpp"
#include "unit/box_grid.hpp"

#include <cmath>
#include <gtest/gtest.h>
#include <random>

using namespace kvr;

namespace {

PriorCovariance priorOf(int nx, int ny, const PriorSettings& settings) {
    GridModel grid = boxGrid(nx, ny, 1);
    grid.DX.assign(grid.NCELLS, 10.0);
    grid.DY.assign(grid.NCELLS, 10.0);
    grid.DZ.assign(grid.NCELLS, 10.0);
    CellArray<std::uint8_t> region;
    region.assign(grid.NCELLS, 1);
    return buildPriorCovariance(grid, settings, region);
}

void putRow(const std::vector<double>& values, double misfit, double error, ErrorData& data) {
    CellArray<double> sensitivity;
    sensitivity.slots = {0.0};
    sensitivity.slots.insert(sensitivity.slots.end(), values.begin(), values.end());
    CellArray<std::uint8_t> active;
    active.assign(sensitivity.count(), 1);
    addRow(sensitivity, active, data.rows);
    data.misfit.push_back(misfit);
    data.error.push_back(error);
}

CellArray<double> zeros(CellId count) {
    CellArray<double> field;
    field.assign(count, 0.0);
    return field;
}

double rowTimes(const ErrorData& data, std::size_t row, const CellArray<double>& field) {
    return rowTimes(data.rows, row, field);
}

ProbableStep stepOf(const ErrorData& data, double pull) {
    return {data.error, {}, pull};
}

/// Twelve cells, five data.
ErrorData randomData() {
    std::mt19937 random(11);
    std::normal_distribution<double> normal;
    ErrorData data;
    for (int row = 0; row < 5; ++row) {
        std::vector<double> values(12);
        for (double& value : values) value = normal(random);
        putRow(values, normal(random), 0.1 + 0.1 * row, data);
    }
    return data;
}

}  // namespace

TEST(MostProbableChange, OfOneCellWeighsTheDatumAgainstWhatWasHeldBefore) {
    const PriorCovariance prior = priorOf(1, 1, {0.5, {10.0, 10.0, 10.0}, 0.0});
    ErrorData data;
    putRow({2.0}, 3.0, 0.4, data);
    CellArray<double> change;
    ASSERT_TRUE(mostProbableChange(prior, data, stepOf(data, 1.0), zeros(1), change));
    // Mean of two normal laws: s^2 g d / (g^2 s^2 + e^2).
    EXPECT_NEAR(change[1], 0.25 * 2.0 * 3.0 / (4.0 * 0.25 + 0.16), 1e-12);
}

TEST(MostProbableChange, IsWhereDataAndPriorPullEquallyHard) {
    // The gradient of the sum of squares vanishes: x = C G' (d - G x) / error^2.
    const PriorCovariance prior = priorOf(4, 3, {0.8, {15.0, 25.0, 10.0}, 0.3});
    const ErrorData data = randomData();
    CellArray<double> change;
    ASSERT_TRUE(mostProbableChange(prior, data, stepOf(data, 1.0), zeros(12), change));
    CellArray<double> pull = zeros(12);
    for (std::size_t row = 0; row < data.misfit.size(); ++row) {
        const double force =
            (data.misfit[row] - rowTimes(data, row, change)) / (data.error[row] * data.error[row]);
        for (std::size_t n = data.rows.start[row]; n < data.rows.start[row + 1]; ++n)
            pull[data.rows.cell[n]] += force * data.rows.value[n];
    }
    std::vector<double> scratch;
    applyPriorCovariance(prior, pull, scratch);
    for (CellId cell = 1; cell <= 12; ++cell) EXPECT_NEAR(change[cell], pull[cell], 1e-9);
}

TEST(MostProbableChange, OfLinearDataIsTheSameFromWhereverItIsSought) {
    const PriorCovariance prior = priorOf(4, 3, {0.8, {15.0, 25.0, 10.0}, 0.3});
    const ErrorData data = randomData();
    CellArray<double> first, second;
    ASSERT_TRUE(mostProbableChange(prior, data, stepOf(data, 1.0), zeros(12), first));
    CellArray<double> present = zeros(12);
    for (CellId cell = 1; cell <= 12; ++cell) present[cell] = 0.1 * cell - 0.5;
    ErrorData there = data;
    for (std::size_t row = 0; row < data.misfit.size(); ++row)
        there.misfit[row] -= rowTimes(data, row, present);
    ASSERT_TRUE(mostProbableChange(prior, there, stepOf(there, 1.0), present, second));
    for (CellId cell = 1; cell <= 12; ++cell) EXPECT_NEAR(second[cell], first[cell], 1e-10);
}

TEST(MostProbableChange, WithoutDataIsTheStartingField) {
    CellArray<double> present = zeros(4), change;
    present[2] = 1.0;
    ASSERT_TRUE(mostProbableChange(priorOf(2, 2, {}), {}, ProbableStep{}, present, change));
    for (const double value : change.cells()) EXPECT_EQ(value, 0.0);
}

TEST(MostProbableChange, ThatIsHeldBackIsWhereDataStartAndStepPullEquallyHard) {
    const PriorCovariance prior = priorOf(4, 3, {0.8, {15.0, 25.0, 10.0}, 0.3});
    const ErrorData data = randomData();
    CellArray<double> present = zeros(12), change;
    for (CellId cell = 1; cell <= 12; ++cell) present[cell] = 0.1 * cell - 0.5;
    const double pull = 0.2;
    ASSERT_TRUE(mostProbableChange(prior, data, stepOf(data, pull), present, change));
    // The gradient vanishes: s x + (1 - s) d = C G' (misfit - G d) s / (error of the histories)^2, and the
    // errors given are those over the root of s.
    CellArray<double> step = change, force = zeros(12);
    for (CellId cell = 1; cell <= 12; ++cell) step[cell] -= present[cell];
    for (std::size_t row = 0; row < data.misfit.size(); ++row)
        for (std::size_t n = data.rows.start[row]; n < data.rows.start[row + 1]; ++n)
            force[data.rows.cell[n]] += data.rows.value[n] * (data.misfit[row] - rowTimes(data, row, step)) /
                                        (data.error[row] * data.error[row]);
    std::vector<double> scratch;
    applyPriorCovariance(prior, force, scratch);
    for (CellId cell = 1; cell <= 12; ++cell)
        EXPECT_NEAR(pull * change[cell] + (1.0 - pull) * step[cell], force[cell], 1e-9);
}

TEST(MostProbableChange, ThatIsHeldBackFarStaysAtThePresentField) {
    const PriorCovariance prior = priorOf(4, 3, {0.8, {15.0, 25.0, 10.0}, 0.3});
    ErrorData data = randomData();
    for (double& error : data.error) error *= 1e4;
    CellArray<double> present = zeros(12), change;
    present[5] = 1.0;
    ASSERT_TRUE(mostProbableChange(prior, data, stepOf(data, 1e-8), present, change));
    for (CellId cell = 1; cell <= 12; ++cell) EXPECT_NEAR(change[cell], present[cell], 1e-5);
}

TEST(DampedErrors, GrowWithWhatIsLackingAndStayWhereLittleIs) {
    ErrorData data;
    putRow({1.0}, 30.0, 10.0, data);
    putRow({1.0}, -40.0, 10.0, data);
    putRow({1.0}, 0.0, 2.0, data);
    EXPECT_NEAR(dampErrors(0, 2, 3.0, data.misfit, data.error), std::sqrt(0.5 * (9.0 + 16.0)), 1e-12);
    EXPECT_NEAR(data.error[0], 10.0 * std::hypot(1.0, 3.0 * std::sqrt(12.5)), 1e-9);
    EXPECT_EQ(dampErrors(2, 3, 3.0, data.misfit, data.error), 0.0);
    EXPECT_EQ(data.error[2], 2.0) << "of the other kind";
}

TEST(MostProbableChange, GoesByWhatRunsHaveShownBesideTheRows) {
    // Terms that bring one set of rows to another give the step of the other.
    const PriorCovariance prior = priorOf(4, 3, {0.8, {15.0, 25.0, 10.0}, 0.3});
    const ErrorData data = randomData();
    CellArray<double> first = zeros(12), second = zeros(12), change, expected;
    for (CellId cell = 1; cell <= 12; ++cell) {
        first[cell] = 0.3 * cell - 1.0;
        second[cell] = cell % 3 == 0 ? 1.0 : -0.2;
    }
    ProbableStep step = stepOf(data, 0.4);
    step.shown.fields = {first, second};
    ErrorData sums;
    for (std::size_t row = 0; row < data.misfit.size(); ++row) {
        const double one = 0.1 * static_cast<double>(row) - 0.2, other = 0.5;
        step.shown.factor.insert(step.shown.factor.end(), {one, other});
        std::vector<double> values;
        for (CellId cell = 1; cell <= 12; ++cell)
            values.push_back(data.rows.value[row * 12 + static_cast<std::size_t>(cell) - 1] +
                             one * first[cell] + other * second[cell]);
        putRow(values, data.misfit[row], data.error[row], sums);
    }
    CellArray<double> present = zeros(12);
    present[4] = 0.7;
    ASSERT_TRUE(mostProbableChange(prior, data, step, present, change));
    ASSERT_TRUE(mostProbableChange(prior, sums, stepOf(sums, 0.4), present, expected));
    for (CellId cell = 1; cell <= 12; ++cell) EXPECT_NEAR(change[cell], expected[cell], 1e-9);
}

TEST(Damping, HalvesBehindAKeptRunAndDoublesBehindARefusedOneWithinItsBounds) {
    std::vector<RunMisfit> kept(1);
    EXPECT_EQ(dampingOf(kept, 0), MostDamping);
    EXPECT_EQ(dampingOf(kept, 2), 4.0 * MostDamping) << "nothing bounds it behind refused ones";
    kept.resize(3);
    EXPECT_EQ(dampingOf(kept, 0), 0.25 * MostDamping);
    EXPECT_EQ(dampingOf(kept, 1), 0.5 * MostDamping);
    kept.push_back({});
    kept.back().halvings = 2;
    EXPECT_EQ(dampingOf(kept, 0), 0.5 * MostDamping);
    kept.resize(30);
    EXPECT_EQ(dampingOf(kept, 0), LeastDamping);
    for (int n = 0; n < 10; ++n) {
        kept.push_back({});
        kept.back().halvings = 2;
    }
    EXPECT_EQ(dampingOf(kept, 0), MostDamping);
}
