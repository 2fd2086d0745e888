#include "streamline/transport/line_gravity.hpp"

#include "streamline/transport/explicit_transport.hpp"
#include "streamline/transport/implicit_transport.hpp"
#include "unit/streamline/flow_samples.hpp"
#include "unit/streamline/line_samples.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

/// Four nodes of 10 ft going straight down, porosity 0.2, 100 md, water over oil.
struct Descent {
    FluidTables tables = samples::plainFlood();
    samples::Flow flow = samples::emptyFlow(4, 1, 1, 10.0, 10.0, 10.0);
    SolverLine line = samples::floodedLine(tables, {5.0, 5.0, 5.0, 5.0});

    Descent() {
        for (CellId cell = 1; cell <= 4; ++cell) {
            flow.state.RhoW[cell] = 64.0;
            flow.state.RhoO[cell] = 50.0;
        }
        for (std::size_t n = 1; n <= 4; ++n) {
            line.tracedCell[n] = static_cast<CellId>(n);
            line.tracedStepLength[n] = 10.0;
            line.tracedDepth[n] = 10.0 * static_cast<double>(n);
        }
        loadLineGravity(flow.grid, flow.state, line);
        line.hasGravity = true;
        set(1, 0.6);
        set(2, 0.4);
    }
    void set(std::size_t i, double sw) {
        line.nodes[i].Sw = sw;
        line.nodes[i].So = 1.0 - sw;
        setAmounts(false, line.nodes[i]);
    }
};

TEST(SetGravitySources, SendsTheHeavierPhaseDownTheLine) {
    Descent d;
    setGravitySources(d.tables.hasGas, d.line);
    // Node 1 to 2: water from above at Sw .6 (.18/.5), oil from below at Sw .4 (.45/2);
    // 0.00112771 * 5.614583 / 144 * 100 md * 14 lb/ft3, over 0.2 * 10 ft.
    const double lw = 0.36, lo = 0.225;
    const double q = 0.00112771 * 5.614583 / 144.0 * 100.0 * 14.0 * lw * lo / (lw + lo);
    EXPECT_NEAR(d.line.gravityW[1], q / 2.0, 1e-12);
    EXPECT_NEAR(d.line.gravityO[1], -q / 2.0, 1e-12);
    EXPECT_GT(d.line.gravityW[1], 0.0);
}

TEST(SetGravitySources, GivesToOneNodeWhatItTakesFromAnother) {
    Descent d;
    setGravitySources(d.tables.hasGas, d.line);
    double water = 0.0;
    double oil = 0.0;
    for (std::size_t i = 1; i <= 4; ++i) {
        water += d.line.gravityW[i] * d.line.DeltaTof[i];
        oil += d.line.gravityO[i] * d.line.DeltaTof[i];
        EXPECT_NEAR(d.line.gravityW[i] + d.line.gravityO[i], 0.0, 1e-15);
    }
    EXPECT_NEAR(water, 0.0, 1e-15);
    EXPECT_NEAR(oil, 0.0, 1e-15);
}

TEST(SetGravitySources, AreNoneOnALevelLineAndAtTheEndPoints) {
    Descent level;
    for (std::size_t n = 1; n <= 4; ++n) level.line.tracedDepth[n] = 0.0;
    loadLineGravity(level.flow.grid, level.flow.state, level.line);
    setGravitySources(level.tables.hasGas, level.line);
    for (std::size_t i = 1; i <= 4; ++i) EXPECT_EQ(level.line.gravityW[i], 0.0);
    Descent dry;
    dry.set(1, 0.2);
    dry.set(2, 0.2);
    setGravitySources(dry.tables.hasGas, dry.line);
    for (std::size_t i = 1; i <= 4; ++i) EXPECT_EQ(dry.line.gravityW[i], 0.0);
}

/// What came in at the head less what the nodes up to each position have gained, volume factors being 1.
void expectPassageOfGain(const Descent& start, const SolverLine& line, double days) {
    double water = days, oil = 0.0;
    for (std::size_t i = 1; i <= 4; ++i) {
        water -= line.DeltaTof[i] * (line.nodes[i].Cw - start.line.nodes[i].Cw);
        oil -= line.DeltaTof[i] * (line.nodes[i].Co - start.line.nodes[i].Co);
        EXPECT_NEAR(line.nodes[i].passedW, water, 1e-9) << i;
        EXPECT_NEAR(line.nodes[i].passedO, oil, 1e-9) << i;
    }
    EXPECT_NEAR(line.nodes[4].passedW, days * line.outletWater, 1e-9) << "no exchange over the end";
}

TEST(LinePassage, CountsWhatGravityMovesBesideTheFlux) {
    const Descent start;
    Descent explicitly, implicit, level;
    level.line.hasGravity = false;
    ExplicitScratch scratch;
    advanceExplicit(explicitly.tables, {}, 3.0, scratch, explicitly.line);
    expectPassageOfGain(start, explicitly.line, 3.0);
    LineNewton newton;
    NewtonCounts counts;
    advanceImplicit(implicit.tables, {}, 3.0, newton, counts, implicit.line);
    expectPassageOfGain(start, implicit.line, 3.0);
    advanceExplicit(level.tables, {}, 3.0, scratch, level.line);
    EXPECT_GT(explicitly.line.nodes[2].passedW, level.line.nodes[2].passedW + 0.01);
    EXPECT_GT(implicit.line.nodes[2].passedW, level.line.nodes[2].passedW + 0.01);
}

TEST(AdvanceExplicit, FloodsADescendingLineFasterWithGravity) {
    Descent with;
    Descent without;
    without.line.hasGravity = false;
    ExplicitScratch scratch;
    advanceExplicit(with.tables, {}, 3.0, scratch, with.line);
    advanceExplicit(without.tables, {}, 3.0, scratch, without.line);
    const auto centre = [](const SolverLine& line) {
        double sum = 0.0;
        for (std::size_t i = 1; i <= 4; ++i) sum += static_cast<double>(i) * line.nodes[i].Sw;
        return sum;
    };
    EXPECT_GT(centre(with.line), centre(without.line));
}

TEST(AdvanceImplicit, MeetsTheExplicitSolutionOnADescendingLineAndKeepsTheWater) {
    Descent explicitly;
    Descent implicit;
    const auto held = [](const SolverLine& line) {
        double sum = 0.0;
        for (std::size_t i = 1; i <= 4; ++i) sum += line.nodes[i].Sw * line.DeltaTof[i];
        return sum;
    };
    const double before = held(implicit.line);
    ExplicitControl control;
    control.cfl = 0.002;
    control.minimumStep = 1e-4;
    advanceTogether(explicitly.tables, control, 2.0, explicitly.line);
    LineNewton newton;
    setRates(implicit.line);
    startOutlet(implicit.line);
    beginNewton(false, newton, implicit.line);
    for (int k = 0; k < 1000; ++k)
        ASSERT_GT(newtonStep(implicit.tables, {}, 0.0, 0.002, newton, implicit.line), 0);
    for (std::size_t i = 1; i <= 4; ++i)
        EXPECT_NEAR(implicit.line.nodes[i].Sw, explicitly.line.nodes[i].Sw, 2e-3) << i;
    EXPECT_NEAR(held(implicit.line) + implicit.line.outletWater, before + 2.0, 1e-10);
}

TEST(AdvanceImplicit, KeepsTheWaterOnADescendingLineAtLargeSteps) {
    Descent d;
    const double before = 5.0 * (0.6 + 0.4 + 0.2 + 0.2);
    LineNewton newton;
    NewtonCounts counts;
    advanceImplicit(d.tables, {}, 10.0, newton, counts, d.line);
    double held = 0.0;
    for (std::size_t i = 1; i <= 4; ++i) held += d.line.nodes[i].Sw * 5.0;
    EXPECT_NEAR(held - before, 10.0 * (1.0 - d.line.outletWater), 1e-9);
}

TEST(AdvanceImplicit, EndsOnADescendingLineWhoseNodesStandBeyondTheEndPoints) {
    // Residual oil is 0.2 and water fills the nodes, as it does below a contact.
    Descent d;
    for (std::size_t i = 1; i <= 4; ++i) d.set(i, 1.0);
    ImplicitControl control;
    control.newton.keepEndPoints = true;
    LineNewton newton;
    NewtonCounts counts;
    advanceImplicit(d.tables, control, 10.0, newton, counts, d.line);
    EXPECT_LE(counts.halvings, 5);
    EXPECT_NEAR(d.line.outletWater, 1.0, 1e-6);
    for (std::size_t i = 1; i <= 4; ++i) EXPECT_LE(d.line.nodes[i].Sw, 0.8) << i;
}

TEST(AdvanceImplicit, PassesOnWhatTheNodesHoldWhereNoStepConverges) {
    Descent d;
    const double water = d.line.nodes[2].Sw;
    ImplicitControl control;
    control.newton.maximumIterations = 0;
    LineNewton newton;
    NewtonCounts counts;
    advanceImplicit(d.tables, control, 10.0, newton, counts, d.line);
    // From a tenth of the step to 1e-9 of it: the 27th halving is the first below.
    EXPECT_EQ(counts.halvings, 27);
    EXPECT_EQ(d.line.nodes[2].Sw, water);
    EXPECT_NEAR(d.line.nodes[2].passedW, 10.0 * samples::plainFraction(0.4), 1e-12);
    EXPECT_NEAR(d.line.nodes[2].passedW + d.line.nodes[2].passedO, 10.0, 1e-12);
    EXPECT_NEAR(d.line.outletOil, 1.0, 1e-12) << "connate water at the end";
}

}  // namespace
}  // namespace kvr
