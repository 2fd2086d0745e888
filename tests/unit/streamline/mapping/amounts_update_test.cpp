#include "streamline/mapping/amounts_update.hpp"

#include "fluid/black_oil.hpp"
#include "pressure/properties.hpp"
#include "streamline/mapping/mapping.hpp"
#include "unit/pressure/small_run.hpp"

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
        s.lines.transfer.oil(from, 1) += oil;
        s.lines.transfer.gas(from, 1) += gas;
    }
    void advance(int substep = 1) {
        measureWholeAmounts(s.grid, s.state, s.pressure.carried, before);
        advanceByFaceTransfer(substep, s);
        measureWholeAmounts(s.grid, s.state, s.pressure.carried, after);
    }
    [[nodiscard]] double gasGained(CellId c) const { return after.gas[c] - before.gas[c]; }
    [[nodiscard]] double oilGained(CellId c) const { return after.oil[c] - before.oil[c]; }
};

TEST(AdvanceByFaceTransfer, PassesTheWholeFlowOfAFaceAsTheLinesThroughItAreMadeUp) {
    Row row;
    row.line(1, 20.0, 100.0, 3000.0);  // 20 of the 50 rb/day in 10 days
    row.advance();
    EXPECT_NEAR(row.oilGained(1), -250.0, 1e-6);
    EXPECT_NEAR(row.gasGained(1), 9000.0 - 7500.0, 1e-6);
    // No line goes on to cell 3: what leaves cell 2 is what flows there.
    const double oil = 10.0 * 50.0 * row.s.state.LambdaO[3] /
                       (row.s.state.LambdaO[3] + row.s.state.LambdaW[3]) / row.s.state.Bo[3];
    EXPECT_NEAR(row.oilGained(3), oil, 0.02 * oil);
    EXPECT_NEAR(row.oilGained(1) + row.oilGained(2) + row.oilGained(3), 0.0, 1e-6);
    EXPECT_NEAR(row.gasGained(1) + row.gasGained(2) + row.gasGained(3), 9000.0, 1e-6);
}

TEST(AdvanceByFaceTransfer, LeavesOutLinesThatWouldTakeMoreThanACellHolds) {
    Row row;
    measureWholeAmounts(row.s.grid, row.s.state, row.s.pressure.carried, row.before);
    row.line(2, 50.0, 1.5 * row.before.oil[2], 0.0);
    row.advance();
    EXPECT_GT(row.after.oil[2], 0.9 * row.before.oil[2]);
    EXPECT_NEAR(row.oilGained(1) + row.oilGained(2) + row.oilGained(3), 0.0, 1e-6);
}

TEST(AdvanceByFaceTransfer, MovesByWellsWhatTheirMeanRatesMakeOverAllMappingSubsteps) {
    Row row;
    row.advance(1);
    EXPECT_NEAR(row.gasGained(1) + row.gasGained(2) + row.gasGained(3), 9000.0, 1e-6);
    row.s.wells.wells[0].connections[0].ConnQg = 1000.0;  // mean over two sub-steps
    row.advance(2);
    EXPECT_NEAR(row.gasGained(1) + row.gasGained(2) + row.gasGained(3), 20000.0 - 9000.0, 1e-6);
    row.advance(1);
    EXPECT_NEAR(row.gasGained(1) + row.gasGained(2) + row.gasGained(3), 10000.0, 1e-6);
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
