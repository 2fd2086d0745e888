#include "matching/minimise.hpp"

#include "matching/gauss_newton.hpp"
#include "matching/lsqr.hpp"
#include "unit/box_grid.hpp"
#include "unit/matching/dense_system.hpp"
#include "unit/quiet_console.hpp"

#include <cmath>
#include <gtest/gtest.h>
#include <random>

using namespace kvr;

namespace {

WellData dataOf(const GridModel& grid, const DenseRows& rows, const std::vector<double>& rightSide) {
    WellData data;
    for (const std::vector<double>& row : rows) {
        CellArray<double> sensitivity;
        sensitivity.assign(grid.NCELLS, 0.0);
        std::copy(row.begin(), row.end(), sensitivity.slots.begin() + 1);
        addRow(sensitivity, grid.Active, data.rows);
    }
    data.rightSide = rightSide;
    return data;
}

std::vector<double> lsqr(const GridModel& grid, const WellData& data, const ConstraintWeights& weights,
                         int limit, LsqrResult* result = nullptr) {
    const QuietConsole quiet;
    const MatchingSystem system = buildMatchingSystem(grid, weights, data);
    LsqrVectors vectors;
    allocateLsqr(quiet.console, system, vectors);
    const LsqrResult end = solveByLsqr(quiet.console, system, limit, vectors);
    if (result != nullptr) *result = end;
    return vectors.x;
}

std::vector<double> gaussNewton(const GridModel& grid, const WellData& data,
                                const ConstraintWeights& weights) {
    std::vector<double> x;
    EXPECT_TRUE(solveByGaussNewton(buildMatchingSystem(grid, weights, data), x));
    return x;
}

void expectNear(const std::vector<double>& got, const std::vector<double>& expected, double tolerance) {
    ASSERT_EQ(got.size(), expected.size());
    for (std::size_t n = 0; n < got.size(); ++n) EXPECT_NEAR(got[n], expected[n], tolerance) << "at " << n;
}

/// 4 x 3 x 2 cells, two of them inactive, three data: g(r, c) = sin(1.3 r c).
struct BoxOfSines {
    GridModel grid = boxGrid(4, 3, 2, {6, 19});
    WellData data;
    ConstraintWeights weights{0.3, 0.2, 0.4};
    std::vector<CellId> picked{1, 2, 5, 7, 12, 18, 20, 24};

    BoxOfSines() {
        DenseRows rows(3, std::vector<double>(24));
        for (int r = 1; r <= 3; ++r)
            for (int c = 1; c <= 24; ++c) rows[at(r)][at(c)] = std::sin(1.3 * r * c);
        data = dataOf(grid, rows, {5.0, -3.0, 8.0});
    }
    [[nodiscard]] std::vector<double> pick(const std::vector<double>& x) const {
        const MatchingSystem system = buildMatchingSystem(grid, weights, data);
        std::vector<double> values;
        for (const CellId cell : picked) values.push_back(x[static_cast<std::size_t>(system.columnOf[cell])]);
        return values;
    }

private:
    static std::size_t at(int n) { return static_cast<std::size_t>(n) - 1; }
};

}  // namespace

TEST(Lsqr, SolvesASquareSystemInAsManyIterationsAsItHasUnknowns) {
    const GridModel grid = boxGrid(2, 1, 1);
    const WellData data = dataOf(grid, {{2.0, 1.0}, {1.0, 3.0}}, {3.0, 5.0});
    LsqrResult result;
    expectNear(lsqr(grid, data, {}, 400, &result), {0.8, 1.4}, 1e-12);
    EXPECT_EQ(result.iterations, 2);
    expectNear(lsqr(grid, data, {}, 1, &result), {0.840343347, 1.375107296}, 1e-9);
    EXPECT_EQ(result.iterations, 1) << "exactly one rotation";
    expectNear(lsqr(grid, data, {0.5, 0.0, 0.0}, 400), {0.789587852, 1.370932755}, 1e-9);
}

TEST(Lsqr, TakesTheShortestOfManySolutions) {
    const GridModel grid = boxGrid(2, 1, 1);
    LsqrResult result;
    expectNear(lsqr(grid, dataOf(grid, {{3.0, 4.0}}, {10.0}), {}, 400, &result), {1.2, 1.6}, 1e-12);
    EXPECT_EQ(result.iterations, 1);
    EXPECT_LT(result.residualNorm, 1e-12);
}

TEST(Lsqr, SmoothnessSpreadsAChangeOverARowOfCells) {
    const GridModel grid = boxGrid(3, 1, 1);
    const WellData data = dataOf(grid, {{1.0, 2.0, 1.0}}, {4.0});
    const std::vector<double> expected{0.820512821, 1.172161172, 0.820512821};
    expectNear(lsqr(grid, data, {0.0, 0.5, 0.0}, 400), expected, 1e-9);
    expectNear(gaussNewton(grid, data, {0.0, 0.5, 0.0}), expected, 1e-9);
}

TEST(Lsqr, ARightSideOrSensitivitiesOfZeroGiveNoChange) {
    const GridModel grid = boxGrid(2, 1, 1);
    LsqrResult result;
    expectNear(lsqr(grid, dataOf(grid, {{3.0, 4.0}}, {0.0}), {0.1, 0.0, 0.0}, 400, &result), {0.0, 0.0}, 0.0);
    EXPECT_EQ(result.iterations, 0);
    expectNear(lsqr(grid, dataOf(grid, {{0.0, 0.0}}, {10.0}), {0.1, 0.0, 0.0}, 400, &result), {0.0, 0.0},
               0.0);
    EXPECT_EQ(result.iterations, 0);
    EXPECT_EQ(result.residualNorm, 10.0);
}

TEST(Lsqr, EndsWithFiniteNumbersOnSystemsThatContradictThemselves) {
    const GridModel grid = boxGrid(2, 1, 1);
    const WellData data = dataOf(grid, {{3.0, 4.0}, {3.0, 4.0}, {6.0, 8.0}}, {10.0, 12.0, 0.0});
    LsqrResult result;
    // Along (3, 4): least squares of 5 s = 10, 5 s = 12, 10 s = 0 is s = 110 / 150.
    expectNear(lsqr(grid, data, {}, 400, &result), {0.6 * 11.0 / 15.0, 0.8 * 11.0 / 15.0}, 1e-12);
    EXPECT_LE(result.iterations, 2);
}

TEST(Lsqr, GoesTheWayOfTheReferenceImplementation) {
    // Values of another implementation of the method, after five iterations and of the exact solution.
    const BoxOfSines box;
    LsqrResult result;
    expectNear(box.pick(lsqr(box.grid, box.data, box.weights, 5, &result)),
               {-0.348933789465, 1.40947617116, 0.54749188315, 2.03322414458, 0.168792559581, 0.335946427508,
                0.435364945226, -0.455133773063},
               1e-11);
    EXPECT_NEAR(result.residualNorm, 2.104229582038421, 1e-11);
    const std::vector<double> exact{-0.297638660535, 1.43169851815,  0.532558432525, 2.06718580714,
                                    0.239655356505,  0.320286414149, 0.466231634143, -0.377204531117};
    expectNear(box.pick(lsqr(box.grid, box.data, box.weights, 400, &result)), exact, 1e-11);
    EXPECT_NEAR(result.residualNorm, 2.101859968572525, 1e-11);
    expectNear(box.pick(gaussNewton(box.grid, box.data, box.weights)), exact, 1e-11);
}

TEST(Minimisation, WithoutConstraintsBothMethodsTakeTheLeastNorm) {
    const BoxOfSines box;
    const std::vector<double> expected{-0.323653365475, 1.32337852362,  0.424450170026, 1.00617089641,
                                       0.374248286175,  0.176292210751, 0.382277512738, -0.422963913443};
    expectNear(box.pick(lsqr(box.grid, box.data, {}, 400)), expected, 1e-11);
    expectNear(box.pick(gaussNewton(box.grid, box.data, {})), expected, 1e-11);
}

TEST(Minimisation, EqualsDenseNormalEquationsOnRandomSystems) {
    std::mt19937 random(3);
    std::uniform_real_distribution<double> number(-1.0, 1.0), weight(0.2, 2.0);
    for (int n = 0; n < 40; ++n) {
        const GridModel grid =
            boxGrid(2 + n % 4, 2 + n % 3, 1 + n % 3,
                    n % 2 == 0 ? std::initializer_list<CellId>{2} : std::initializer_list<CellId>{});
        DenseRows rows(static_cast<std::size_t>(1 + n % 5),
                       std::vector<double>(static_cast<std::size_t>(grid.NCELLS)));
        std::vector<double> rightSide;
        for (std::vector<double>& row : rows) {
            for (double& value : row) value = number(random) > 0.3 ? 10.0 * number(random) : 0.0;
            rightSide.push_back(100.0 * number(random));
        }
        const WellData data = dataOf(grid, rows, rightSide);
        const ConstraintWeights weights = {weight(random), weight(random), weight(random)};
        const std::vector<double> dense = solveNormalEquations(denseRows(grid, data, weights), rightSide);
        const MatchingSystem system = buildMatchingSystem(grid, weights, data);
        std::vector<double> expected;
        for (const CellId cell : system.cells) expected.push_back(dense[static_cast<std::size_t>(cell) - 1]);
        expectNear(lsqr(grid, data, weights, 400), expected, 1e-8);
        expectNear(gaussNewton(grid, data, weights), expected, 1e-8);
    }
}

TEST(Minimisation, TakesTheLeastNormOfDataThatDependOnEachOther) {
    std::mt19937 random(5);
    std::uniform_real_distribution<double> number(-1.0, 1.0);
    for (int n = 0; n < 40; ++n) {
        const GridModel grid = boxGrid(6, 5, 2);
        DenseRows rows(static_cast<std::size_t>(2 + n % 7), std::vector<double>(60));
        for (std::vector<double>& row : rows)
            for (double& value : row) value = 10.0 * number(random);
        for (int extra = 0; extra < 1 + n % 4;
             ++extra) {  // rows between others, with right sides of their own
            std::vector<double> mean = rows[0];
            for (std::size_t c = 0; c < mean.size(); ++c) mean[c] = 0.3 * rows[0][c] + 0.7 * rows[1][c];
            rows.push_back(mean);
        }
        std::vector<double> rightSide(rows.size());
        for (double& value : rightSide) value = 100.0 * number(random);
        const WellData data = dataOf(grid, rows, rightSide);
        expectNear(lsqr(grid, data, {}, 400), gaussNewton(grid, data, {}), 1e-8);
    }
}

TEST(Minimisation, ACellThatOnlyDataHoldGetsTheSameByBothMethods) {
    const GridModel grid = boxGrid(5, 1, 1, {4});
    const WellData data = dataOf(grid, {{1.0, 2.0, 1.0, 0.0, 3.0}}, {4.0});
    const ConstraintWeights weights = {0.0, 0.5, 0.0};
    expectNear(gaussNewton(grid, data, weights), lsqr(grid, data, weights, 400), 1e-9);
}

TEST(Minimisation, ChangesActiveCellsOnlyAndSaysThatItIsCalled) {
    const GridModel grid = boxGrid(3, 1, 1, {2});
    const WellData data = dataOf(grid, {{3.0, 9.0, 4.0}}, {10.0});
    CellArray<double> lnk, new_lnk;
    lnk.assign(3, 2.0);
    for (const MinimisationMethod method : {MinimisationMethod::Lsqr, MinimisationMethod::GaussNewton}) {
        const QuietConsole quiet;
        minimise(quiet.console, {method, 400, {}}, grid, data, lnk, new_lnk);
        EXPECT_NEAR(new_lnk[1], 3.2, 1e-12);
        EXPECT_EQ(new_lnk[2], 2.0);
        EXPECT_NEAR(new_lnk[3], 3.6, 1e-12);
        const std::string head =
            "------------------------------------------------------------\n"
            "Calling Minimization Module\n"
            "============================================================\n";
        EXPECT_EQ(quiet.screenText().substr(0, head.size()), head);
        EXPECT_EQ(quiet.logText(), quiet.screenText());
    }
}

TEST(Minimisation, WithoutActiveCellsOrDataNothingChanges) {
    const GridModel nothing = boxGrid(2, 1, 1, {1, 2}), grid = boxGrid(2, 1, 1);
    CellArray<double> lnk, new_lnk;
    lnk.assign(2, 2.0);
    const QuietConsole quiet;
    for (const MinimisationMethod method : {MinimisationMethod::Lsqr, MinimisationMethod::GaussNewton}) {
        const MinimisationSettings settings{method, 400, {0.1, 0.1, 0.1}};
        minimise(quiet.console, settings, nothing, dataOf(nothing, {{3.0, 4.0}}, {10.0}), lnk, new_lnk);
        EXPECT_EQ(new_lnk.slots, lnk.slots);
        minimise(quiet.console, settings, grid, {}, lnk, new_lnk);
        EXPECT_EQ(new_lnk.slots, lnk.slots);
    }
}

TEST(Minimisation, TellsTheFirstNineIterationsAndEveryTenth) {
    const GridModel grid = boxGrid(40, 1, 1);
    DenseRows rows(40, std::vector<double>(40, 0.0));
    std::vector<double> rightSide(40, 1.0);
    for (std::size_t n = 0; n < 40; ++n) rows[n][n] = static_cast<double>(n + 1);
    const WellData data = dataOf(grid, rows, rightSide);
    CellArray<double> lnk, new_lnk;
    lnk.assign(40, 0.0);
    const QuietConsole quiet;
    minimise(quiet.console, {MinimisationMethod::Lsqr, 25, {}}, grid, data, lnk, new_lnk);
    const std::string text = quiet.screenText();
    for (const int told : {1, 2, 9, 10, 20})
        EXPECT_NE(text.find(fmt::format("LSQR iteration : {:5} ", told)), std::string::npos) << told;
    for (const int untold : {11, 15, 19, 21, 25})
        EXPECT_EQ(text.find(fmt::format("LSQR iteration : {:5} ", untold)), std::string::npos) << untold;
}

TEST(Minimisation, TakesMethodLimitAndWeightsFromTheOptions) {
    RunOptions options;
    EXPECT_EQ(minimisationSettings(options).method, MinimisationMethod::Lsqr);
    options.gaussNewton = true;
    options.lsqrIterations = 17;
    options.lsqrNorm = 0.1;
    options.lsqrSmoothHorizontal = 0.2;
    options.lsqrSmoothVertical = 0.3;
    const MinimisationSettings settings = minimisationSettings(options);
    EXPECT_EQ(settings.method, MinimisationMethod::GaussNewton);
    EXPECT_EQ(settings.iterationLimit, 17);
    EXPECT_EQ(settings.weights, (ConstraintWeights{0.1, 0.2, 0.3}));
}
