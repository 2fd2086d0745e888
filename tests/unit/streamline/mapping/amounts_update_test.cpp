#include "streamline/mapping/amounts_update.hpp"

#include "fluid/black_oil.hpp"
#include "pressure/properties.hpp"
#include "streamline/mapping/mapping.hpp"
#include "unit/pressure/small_run.hpp"

#include <algorithm>
#include <gtest/gtest.h>

namespace kvr {
namespace {

/// Three cells of under-saturated oil in a row; 50 rb/day flow through, gas comes in at the low end.
struct Row {
    Simulation s;
    CellAmounts before, after;

    Row() {
        sample::makeRun(3, 1, 1, samples::lightOil(), s);
        s.options.method = "streamline";
        for (CellId c = 1; c <= 3; ++c) {
            s.state.Pressure[c] = 4800.0;
            s.state.Pb[c] = 4014.7;
            s.state.Rs[c] = SolutionRs(s.fluids, 4014.7);
        }
        refreshProperties(s.grid, s.fluids, s.state);
        for (CellId c = 1; c < 3; ++c)
            s.velocity.CellFaceFlux(c, 2) = s.velocity.CellFaceFlux(c + 1, 1) = 50.0;
        sample::addWell("inj", "rate", 50.0, 1e5, 1, s);
        s.wells.wells[0].connections[0].ConnQg = 900.0;
        sizeMapping(3, 0, true, s.state, s.mapping);
        clearTransfer(3, s.lines.transfer);
        s.clock.workDt = 10.0;
    }
    void line(CellId from, double flow, double oil, double gas) {
        s.lines.transfer.flow(from, 1) += flow;
        s.lines.transfer.told(from, 1) += flow;
        s.lines.transfer.oil(from, 1) += oil;
        s.lines.transfer.gas(from, 1) += gas;
    }
    void advance() {
        measureWholeAmounts(s.grid, s.state, s.pressure.carried, before);
        advanceByFaceTransfer(s);
        measureWholeAmounts(s.grid, s.state, s.pressure.carried, after);
    }
    [[nodiscard]] double gasGained(CellId c) const { return after.gas[c] - before.gas[c]; }
    [[nodiscard]] double oilGained(CellId c) const { return after.oil[c] - before.oil[c]; }
};

TEST(AdvanceByFaceTransfer, PassesTheWholeFlowOfAFaceAsTheLinesThroughItAreMadeUp) {
    Row row;
    row.line(1, 20.0, 100.0, 3000.0);  // 20 of the 50 rb/day in 10 days
    // 500 rb go, made as 100 stb with 3000 surface barrels of gas, of which the oil dissolves what it can.
    const double free = 3000.0 - std::min(3000.0, 100.0 * SolutionRs(row.s.fluids, 4800.0));
    const double barrels = 100.0 * row.s.state.Bo[1] + free * row.s.state.Bg[1];
    row.advance();
    EXPECT_NEAR(row.oilGained(1), -500.0 * 100.0 / barrels, 1e-6);
    EXPECT_NEAR(row.gasGained(1), 9000.0 - 500.0 * 3000.0 / barrels, 1e-6);
    // No line goes on to cell 3: what leaves cell 2 is what flows there.
    const double oil = 10.0 * 50.0 * row.s.state.LambdaO[3] /
                       (row.s.state.LambdaO[3] + row.s.state.LambdaW[3]) / row.s.state.Bo[3];
    EXPECT_NEAR(row.oilGained(3), oil, 0.02 * oil);
    EXPECT_NEAR(row.oilGained(1) + row.oilGained(2) + row.oilGained(3), 0.0, 1e-6);
    EXPECT_NEAR(row.gasGained(1) + row.gasGained(2) + row.gasGained(3), 9000.0, 1e-6);
}

TEST(AdvanceByFaceTransfer, LeavesAFaceToItsCellWhereTooLittleOfTheFlowTellsItsMakeUp) {
    Row told, silent;
    told.line(2, 40.0, 10.0, 0.0);
    silent.line(2, 40.0, 10.0, 0.0);
    silent.s.lines.transfer.told(2, 1) = 9.0;
    Row none;
    for (Row* row : {&told, &silent, &none}) row->advance();
    EXPECT_EQ(silent.gasGained(3), none.gasGained(3));
    EXPECT_GT(none.gasGained(3), 1000.0);
    EXPECT_NEAR(told.gasGained(3), 0.0, 1e-6);  // their oil holds no gas
}

TEST(AdvanceByFaceTransfer, LeavesOutLinesThatWouldTakeMoreThanACellHolds) {
    Row row;
    measureWholeAmounts(row.s.grid, row.s.state, row.s.pressure.carried, row.before);
    row.line(2, 50.0, 1.5 * row.before.oil[2], 0.0);
    row.advance();
    EXPECT_GT(row.after.oil[2], 0.9 * row.before.oil[2]);
    EXPECT_NEAR(row.oilGained(1) + row.oilGained(2) + row.oilGained(3), 0.0, 1e-6);
}

TEST(AdvanceByFaceTransfer, ReportsProducersAsTheMeanOfTheSubstepsSinceThePressureStep) {
    Row row;
    sample::addWell("prd", "rate", -50.0, 1000.0, 3, row.s);
    row.s.wells.wells[1].connections[0].reservoirRate = -50.0;
    clearOutlets(row.s.wells, row.s.lines.outlets);
    double oil = 0.0, gas = 0.0;
    for (int substep = 1; substep <= 3; ++substep) {
        row.advance();
        EXPECT_NEAR(row.gasGained(1) + row.gasGained(2) + row.gasGained(3),
                    9000.0 - (-row.s.wells.wells[1].WellQg * 10.0 * substep - gas), 1e-6);
        oil -= row.oilGained(1) + row.oilGained(2) + row.oilGained(3);
        gas += 9000.0 - (row.gasGained(1) + row.gasGained(2) + row.gasGained(3));
        EXPECT_NEAR(row.s.wells.wells[1].WellQo, -oil / (10.0 * substep), 1e-9) << substep;
        EXPECT_NEAR(row.s.wells.wells[1].WellQg, -gas / (10.0 * substep), 1e-6) << substep;
        EXPECT_NEAR(row.s.wells.wells[0].WellQg, 900.0, 1e-12) << substep;
    }
    EXPECT_GT(oil, 500.0);
}

TEST(AdvanceByFaceTransfer, DissolvesTheGasThatLinesBringIntoUndersaturatedOil) {
    Row row;
    row.line(1, 50.0, 0.0, 2000.0);
    row.line(2, 50.0, 0.0, 0.0);
    row.advance();
    EXPECT_EQ(row.s.state.Sg[2], 0.0);
    EXPECT_NEAR(row.s.state.Rs[2], row.after.gas[2] / row.after.oil[2], 1e-9 * row.s.state.Rs[2]);
    EXPECT_GT(row.s.state.Rs[2], SolutionRs(row.s.fluids, 4014.7));
    EXPECT_LT(row.s.state.Pb[2], 4800.0);
}

}  // namespace
}  // namespace kvr
