#include "pressure/solubility_update.hpp"

#include "unit/pressure/small_run.hpp"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

namespace kvr {
namespace {

/// The reaction in steps so short that it hardly changes in one.
double gasBehindShortSteps(double gas, double saturated, double rate, double days) {
    constexpr int Steps = 2000000;
    for (int n = 0; n < Steps; ++n) gas -= rate * std::min(gas, saturated) * days / Steps;
    return gas;
}

TEST(GasBehindReaction, FollowsTheRateFromFreeGasToTheLastOfTheDissolved) {
    constexpr double Saturated = 40.0, Rate = 0.01;
    for (const double days : {10.0, 149.0, 151.0, 400.0})  // of 100 gas 60 are free: gone by 150 days
        EXPECT_NEAR(gasBehindReaction(100.0, Saturated, Rate, days),
                    gasBehindShortSteps(100.0, Saturated, Rate, days), 1e-4)
            << days;
    EXPECT_DOUBLE_EQ(gasBehindReaction(100.0, Saturated, Rate, 50.0), 100.0 - 0.01 * 40.0 * 50.0);
    EXPECT_DOUBLE_EQ(gasBehindReaction(30.0, Saturated, Rate, 50.0), 30.0 * std::exp(-0.5));
}

TEST(GasBehindReaction, IsTheSameInOneStepAndInTwo) {
    const double half = gasBehindReaction(100.0, 40.0, 0.01, 100.0);
    EXPECT_NEAR(gasBehindReaction(half, 40.0, 0.01, 100.0), gasBehindReaction(100.0, 40.0, 0.01, 200.0),
                1e-12);
}

TEST(GasBehindReaction, LeavesGasAloneWhereNothingReacts) {
    EXPECT_EQ(gasBehindReaction(7.0, 40.0, 0.0, 100.0), 7.0);
    EXPECT_EQ(gasBehindReaction(7.0, 0.0, 0.01, 100.0), 7.0) << "no oil to dissolve in";
    EXPECT_EQ(gasBehindReaction(0.0, 40.0, 0.01, 100.0), 0.0);
    EXPECT_NEAR(gasBehindReaction(7.0, 40.0, 1e10, 100.0), 0.0, 1e-300) << "at once";
}

/// Three cells of light oil with CO2 storage: free gas beside oil that could take more of it in the first, a
/// little of it in the second, none in the third.
struct ThreeCells {
    Simulation s;

    ThreeCells() {
        sample::makeRun(3, 1, 1, samples::lightOil(), s);
        s.options.method = "IMPES";
        s.options.co2Model = true;
        s.state.SolidGas.assign(3, 0.0);
        const double saturated = SolutionRs(s.fluids, 3000.0);
        const double free[] = {0.3, 0.001, 0.0};
        const double held[] = {0.6, 0.2, 0.5};
        for (CellId c = 1; c <= 3; ++c) {
            const auto n = static_cast<std::size_t>(c) - 1;
            s.state.Sg[c] = free[n];
            s.state.So[c] = 0.8 - free[n];
            s.state.Rs[c] = held[n] * saturated;
            s.state.Pb[c] = BubblePoint(s.fluids, s.state.Rs[c]);
        }
        refreshProperties(s.grid, s.fluids, s.state);
    }
    [[nodiscard]] CellAmounts whole() const {
        CellAmounts amounts;
        measureWholeAmounts(s.grid, s.state, s.pressure.carried, amounts);
        return amounts;
    }
};

TEST(SolubilityUpdate, BringsGasAndOilToEquilibriumAndKeepsEveryAmount) {
    ThreeCells cells;
    const CellAmounts before = cells.whole();
    const Co2Movement moved = UPDATE_SOLUBILITYRATIO(0, 10.0, cells.s);
    const CellAmounts after = cells.whole();
    const CellState& state = cells.s.state;
    const double saturated = SolutionRs(cells.s.fluids, 3000.0);
    EXPECT_GT(state.Sg[1], 0.0);
    EXPECT_NEAR(state.Rs[1], saturated, 1e-12 * saturated) << "oil beside free gas is saturated";
    EXPECT_EQ(state.Sg[2], 0.0) << "the little free gas is dissolved";
    EXPECT_GT(state.Rs[2], 0.2 * saturated);
    EXPECT_LT(state.Rs[2], saturated);
    EXPECT_EQ(state.Rs[3], 0.5 * saturated);
    for (CellId c = 1; c <= 3; ++c) {
        EXPECT_NEAR(after.water[c], before.water[c], 1e-12 * before.water[c]);
        EXPECT_NEAR(after.oil[c], before.oil[c], 1e-12 * before.oil[c]);
        EXPECT_NEAR(after.gas[c], before.gas[c], 1e-12 * before.gas[c]);
        EXPECT_NEAR(state.Sw[c] + state.So[c] + state.Sg[c], 1.0, 1e-12);
    }
    EXPECT_GT(moved.dissolved, 0.0);
    EXPECT_EQ(moved.solid, 0.0);
    EXPECT_NEAR(moved.free + moved.dissolved, 0.0, 1e-10 * moved.dissolved) << "what moves sums to nothing";
}

TEST(SolubilityUpdate, LeavesCellsInEquilibriumAsTheyAreToTheLastBit) {
    ThreeCells cells;
    UPDATE_SOLUBILITYRATIO(0, 10.0, cells.s);
    const CellState before = cells.s.state;
    const Co2Movement moved = UPDATE_SOLUBILITYRATIO(0, 10.0, cells.s);
    EXPECT_EQ(moved.dissolved, 0.0);
    EXPECT_EQ(before.Sg.slots, cells.s.state.Sg.slots);
    EXPECT_EQ(before.Rs.slots, cells.s.state.Rs.slots);
}

TEST(SolubilityUpdate, LeavesWhatIterationsHaveLeftOver) {
    ThreeCells cells;
    UPDATE_SOLUBILITYRATIO(0, 10.0, cells.s);
    cells.s.state.Rs[1] *= 1.0 + 1e-11;
    cells.s.state.Sg[3] = 1e-12;
    const CellState before = cells.s.state;
    UPDATE_SOLUBILITYRATIO(0, 10.0, cells.s);
    EXPECT_EQ(before.Rs.slots, cells.s.state.Rs.slots);
    EXPECT_EQ(before.Sg.slots, cells.s.state.Sg.slots);
}

TEST(SolubilityUpdate, TurnsDissolvedGasSolidAtTheGivenRate) {
    for (const char* method : {"IMPES", "FIM", "streamline"}) {
        ThreeCells cells;
        cells.s.options.method = method;
        cells.s.options.co2SolidRate = 0.001;
        const CellAmounts before = cells.whole();
        const Co2Movement moved = UPDATE_SOLUBILITYRATIO(0, 100.0, cells.s);
        const CellAmounts after = cells.whole();
        double solid = 0.0;
        for (CellId c = 1; c <= 3; ++c) {
            solid += cells.s.state.SolidGas[c];
            EXPECT_NEAR(after.gas[c] + cells.s.state.SolidGas[c], before.gas[c], 1e-12 * before.gas[c])
                << method;
            EXPECT_NEAR(after.oil[c], before.oil[c], 1e-12 * before.oil[c]) << method;
        }
        EXPECT_NEAR(cells.s.state.SolidGas[3], before.gas[3] * (1.0 - std::exp(-0.1)), 1e-12 * before.gas[3]);
        EXPECT_NEAR(moved.solid, solid, 1e-12 * solid);
        EXPECT_NEAR(moved.free + moved.dissolved + moved.solid, 0.0, 1e-10 * solid);
    }
}

TEST(SolubilityUpdate, DissolvesNoMoreThanTheBoundOfTheStepAllows) {
    ThreeCells cells;
    cells.s.state.RsStart = cells.s.state.Rs;
    cells.s.state.RsRise = 0.5;
    const double start = cells.s.state.Rs[1];
    UPDATE_SOLUBILITYRATIO(0, 10.0, cells.s);
    EXPECT_NEAR(cells.s.state.Rs[1], start + 0.5, 1e-9);
    EXPECT_GT(cells.s.state.Sg[1], 0.2);
}

TEST(SolubilityUpdate, DoesNothingInARunThatDoesNotAskForIt) {
    ThreeCells cells;
    cells.s.options.co2Model = false;
    const CellState before = cells.s.state;
    UPDATE_SOLUBILITYRATIO(0, 10.0, cells.s);
    EXPECT_EQ(before.Rs.slots, cells.s.state.Rs.slots);
}

TEST(SolubilityUpdate, TellsTheLogWhatHasMovedInTheLastIterationAlone) {
    for (const int left : {0, 1}) {
        ThreeCells cells;
        std::FILE* file = std::tmpfile();
        cells.s.console.log = file;
        UPDATE_SOLUBILITYRATIO(left, 10.0, cells.s);
        EXPECT_EQ(std::ftell(file) > 0, left == 0);
        cells.s.console.log = nullptr;
        std::fclose(file);
    }
}

}  // namespace
}  // namespace kvr
