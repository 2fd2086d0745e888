#include "streamline/transport/implicit_transport.hpp"

#include "streamline/transport/cut_steps.hpp"
#include "streamline/transport/explicit_transport.hpp"
#include "unit/streamline/line_samples.hpp"

#include <cmath>
#include <gtest/gtest.h>
#include <numeric>

namespace kvr {
namespace {

using samples::plainFraction;
using samples::waterGained;

/// One Newton step of dt on a line that begins a run of steps here.
int oneStep(const FluidTables& tables, const NewtonControl& control, double dt, SolverLine& line) {
    LineNewton newton;
    setRates(line);
    startOutlet(line);
    beginNewton(tables.hasGas, newton, line);
    return newtonStep(tables, control, 0.0, dt, newton, line);
}

NewtonCounts advance(const FluidTables& tables, const ImplicitControl& control, double step,
                     SolverLine& line) {
    LineNewton newton;
    NewtonCounts counts;
    advanceImplicit(tables, control, step, newton, counts, line);
    return counts;
}

void setWater(double sw, FlowNode& node) {
    node.Sw = sw;
    node.So = 1.0 - sw;
    setAmounts(false, node);
}

TEST(NewtonStep, SolvesTheBalanceOfOneNode) {
    const FluidTables tables = samples::plainFlood();
    SolverLine line = samples::floodedLine(tables, {10.0});
    EXPECT_GT(oneStep(tables, {}, 5.0, line), 0);
    EXPECT_NEAR(line.nodes[1].Sw, 0.46397516, 5e-9);
}

TEST(NewtonStep, TakesTwoIterationsWithinOneSegmentOfTheCurves) {
    const FluidTables tables = samples::plainFlood();
    SolverLine line = samples::floodedLine(tables, {10.0});
    setWater(0.4, line.nodes[1]);
    EXPECT_EQ(oneStep(tables, {}, 1.0, line), 2);
    EXPECT_NEAR(line.nodes[1].Sw, 0.45555556, 5e-9);
}

TEST(FirstImplicitStep, IsATenthOfTheStepUpToTheMaximum) {
    EXPECT_DOUBLE_EQ(firstImplicitStep({{}, 2.0}, 30.0), 2.0);
    EXPECT_DOUBLE_EQ(firstImplicitStep({{}, 100.0}, 30.0), 3.0);
}

TEST(NextImplicitStep, GrowsByFifteenPercentBehindFewerThanFourIterations) {
    EXPECT_DOUBLE_EQ(nextImplicitStep(2.0, 3), 2.3);
    EXPECT_DOUBLE_EQ(nextImplicitStep(2.0, 4), 2.0);
}

TEST(CutSteps, DoubleBackToTheLengthThatWasCutWhateverTheIterations) {
    constexpr int Many = 20;
    CutSteps cuts;
    double dt = cutStep(cutStep(8.0, cuts), cuts);
    EXPECT_EQ(dt, 2.0);
    dt = stepBehind(dt, Many, cuts);
    EXPECT_EQ(dt, 4.0);
    dt = stepBehind(dt, Many, cuts);
    EXPECT_EQ(dt, 8.0);
    EXPECT_EQ(stepBehind(dt, Many, cuts), 8.0);
    EXPECT_DOUBLE_EQ(stepBehind(dt, 2, cuts), 9.2);
}

TEST(CutSteps, WaitTwiceAsLongBehindAGrowthThatWasCut) {
    constexpr int Many = 20;
    CutSteps cuts;
    double dt = cutStep(8.0, cuts);
    for (const int waiting : {1, 2, 4}) {
        for (int k = 1; k < waiting; ++k) EXPECT_EQ(stepBehind(dt, Many, cuts), 4.0);
        dt = stepBehind(dt, Many, cuts);
        ASSERT_EQ(dt, 8.0);
        dt = cutStep(dt, cuts);
    }
}

TEST(AdvanceImplicit, GrowsItsStepsAndLandsOnTheEnd) {
    // Nothing moves, so every step takes one iteration: 0.1 (1 + 1.15 + ... + 1.15^5) = 0.875 of the step
    // lies behind six of them, and the seventh is trimmed.
    const FluidTables tables = samples::plainFlood();
    SolverLine line = samples::floodedLine(tables, {10.0, 10.0});
    setWater(0.2, line.nodes[0]);
    const NewtonCounts counts = advance(tables, {}, 50.0, line);
    EXPECT_EQ(counts.steps, 7);
    EXPECT_EQ(counts.iterations, 7);
    EXPECT_EQ(counts.halvings, 0);
    EXPECT_NEAR(line.outletOil, 1.0, 1e-12);
}

TEST(AdvanceImplicit, ConservesTheWaterOfAFloodBeforeBreakthrough) {
    const FluidTables tables = samples::plainFlood();
    SolverLine implicit = samples::floodedLine(tables, std::vector<double>(10, 10.0));
    SolverLine explicitly = implicit;
    advance(tables, {}, 30.0, implicit);
    EXPECT_NEAR(waterGained(implicit) + 30.0 * implicit.outletWater, 30.0, 1e-10);
    EXPECT_LT(implicit.outletWater, 0.01);  // backward Euler runs ahead of the front a little
    ExplicitScratch scratch;
    advanceExplicit(tables, {}, 30.0, scratch, explicitly);
    EXPECT_NEAR(waterGained(explicitly), 30.0, 1e-10);
}

TEST(AdvanceImplicit, ConservesWaterOnUnevenNodesWithALooseTolerance) {
    const FluidTables tables = samples::plainFlood();
    const std::vector<double> deltaTof = {10, 3, 8, 0.4, 12, 0.001, 9, 9, 1, 7, 7, 20};
    SolverLine line = samples::floodedLine(tables, deltaTof);
    ImplicitControl control;
    control.newton.tolerance = 1e-2;
    for (int step = 0; step < 5; ++step) {
        const double before = waterGained(line);
        advance(tables, control, 30.0, line);
        EXPECT_NEAR(waterGained(line) - before, 30.0 - 30.0 * line.outletWater, 1e-10) << step;
    }
    EXPECT_GT(line.outletWater, 0.5);
}

/// Backward Euler written out plainly: every node's balance by bisection, in flow order.
std::vector<double> bisectedTwin(const std::vector<double>& deltaTof, double step, double dt, double growth) {
    std::vector<double> s(deltaTof.size() + 1, 0.2);
    s[0] = 0.8;
    for (double t = 0.0; t < step;) {
        const bool last = dt >= step - t;
        const double h = last ? step - t : dt;
        for (std::size_t i = 1; i < s.size(); ++i) {
            double low = 0.0;
            double high = 1.0;
            for (int k = 0; k < 60; ++k) {
                const double middle = 0.5 * (low + high);
                const double balance =
                    middle - s[i] + h / deltaTof[i - 1] * (plainFraction(middle) - plainFraction(s[i - 1]));
                (balance < 0.0 ? low : high) = middle;
            }
            s[i] = 0.5 * (low + high);
        }
        t = last ? step : t + h;
        dt *= growth;
    }
    return s;
}

TEST(AdvanceImplicit, EqualsBackwardEulerByBisectionHoweverShortANode) {
    const FluidTables tables = samples::plainFlood();
    const std::vector<double> deltaTof = {10, 3, 8, 0.4, 12, 0.0001, 9, 9, 1e-7, 7, 7, 20};
    SolverLine line = samples::floodedLine(tables, deltaTof);
    ImplicitControl control;
    control.newton.tolerance = 1e-9;
    control.maximumStep = 4.0;
    LineNewton newton;
    setRates(line);
    startOutlet(line);
    beginNewton(false, newton, line);
    for (int k = 0; k < 10; ++k)
        ASSERT_GT(newtonStep(tables, control.newton, 0.0, 4.0, newton, line), 0) << k;
    const std::vector<double> twin = bisectedTwin(deltaTof, 40.0, 4.0, 1.0);
    for (std::size_t i = 1; i < twin.size(); ++i) EXPECT_NEAR(line.nodes[i].Sw, twin[i], 1e-8) << i;
}

TEST(AdvanceImplicit, NeedsNoHalvingAtLargeCourantNumbers) {
    const FluidTables tables = samples::plainFlood();
    SolverLine line = samples::floodedLine(tables, std::vector<double>(100, 0.5));
    const NewtonCounts counts = advance(tables, {}, 40.0, line);
    EXPECT_EQ(counts.halvings, 0);
    EXPECT_LE(counts.iterations, 4 * counts.steps);
}

TEST(AdvanceImplicit, HalvesAStepThatDoesNotConvergeAndKeepsTheWater) {
    const FluidTables tables = samples::plainFlood();
    SolverLine line = samples::floodedLine(tables, std::vector<double>(20, 2.0));
    ImplicitControl control;
    control.newton.maximumIterations = 1;
    control.newton.tolerance = 0.005;
    const NewtonCounts counts = advance(tables, control, 20.0, line);
    // The first node gains dt/2 while its outflow hardly carries water: from a dt of 2 eight halvings bring
    // that below 0.005, where one iteration is enough.
    EXPECT_GE(counts.halvings, 8);
    EXPECT_EQ(counts.iterations, counts.steps + counts.halvings);
    EXPECT_NEAR(waterGained(line) + 20.0 * line.outletWater, 20.0, 1e-10);
}

TEST(AdvanceImplicit, NeverUsesTheLimiter) {
    const FluidTables tables = samples::plainFlood();
    RunOptions options;
    options.SaturationTolerance = 1e-4;
    options.maxSaturationIterations = 30;
    SolverLine plain = samples::floodedLine(tables, std::vector<double>(10, 10.0));
    SolverLine limited = plain;
    advance(tables, implicitControl(options), 30.0, plain);
    options.upwindWord = "2PU";
    options.upwindName = {"gband"};
    advance(tables, implicitControl(options), 30.0, limited);
    for (std::size_t i = 1; i <= 10; ++i) EXPECT_EQ(plain.nodes[i].Sw, limited.nodes[i].Sw) << i;
}

TEST(AdvanceImplicit, KeepsTheEndPointsWhereAsked) {
    const FluidTables tables = samples::plainFlood();
    SolverLine line = samples::floodedLine(tables, std::vector<double>(5, 1.0));
    ImplicitControl control;
    control.newton.keepEndPoints = true;
    setWater(0.15, line.nodes[4]);
    advance(tables, control, 500.0, line);
    for (std::size_t i = 1; i <= 5; ++i) {
        EXPECT_GE(line.nodes[i].Sw, 0.2) << i;
        EXPECT_LE(line.nodes[i].Sw, 0.8) << i;
    }
    EXPECT_NEAR(line.nodes[1].Sw, 0.8, 0.02);
}

TEST(AdvanceImplicit, ReplacesABadSaturationByThatOfTheNodeBefore) {
    const FluidTables tables = samples::plainFlood();
    SolverLine line = samples::floodedLine(tables, {10.0, 10.0, 10.0});
    line.nodes[2].Cw = std::nan("");
    advance(tables, {}, 1.0, line);
    for (std::size_t i = 1; i <= 3; ++i) EXPECT_TRUE(std::isfinite(line.nodes[i].Sw)) << i;
}

TEST(AdvanceImplicit, LetsAnExpandingCellGiveOilAndACompressedOneTakeIt) {
    const FluidTables tables = samples::plainFlood();
    SolverLine line = samples::floodedLine(tables, {10.0, 10.0});
    for (FlowNode& node : line.nodes) setWater(0.15, node);  // below connate: water stays
    line.nodes[1].expansion = 0.002;
    line.nodes[2].expansion = -0.002;
    line.nodes[1].Cw *= 1.02;
    line.nodes[1].Co *= 1.02;
    line.nodes[2].Cw *= 0.98;
    line.nodes[2].Co *= 0.98;
    oneStep(tables, {}, 10.0, line);
    // Oil alone moves: 0.02 of the pore volume leaves node 1, as much enters node 2.
    EXPECT_NEAR(line.nodes[1].Sw, 0.153, 1e-12);
    EXPECT_NEAR(line.nodes[1].So, 0.847, 1e-12);
    EXPECT_NEAR(line.nodes[2].Sw, 0.147, 1e-12);
    EXPECT_NEAR(line.nodes[2].So, 0.853, 1e-12);
}

TEST(AdvanceImplicit, CarriesATracerWithTheWaterAndLosesNone) {
    const FluidTables tables = samples::plainFlood();
    SolverLine line = samples::floodedLine(tables, std::vector<double>(60, 5.0));
    line.tracer.assign(1, std::vector<double>(line.nodes.size(), 0.0));
    line.tracer[0][0] = 2.0;
    advance(tables, {}, 30.0, line);
    double held = 0.0;
    for (std::size_t i = 1; i <= 60; ++i) {
        held += line.tracer[0][i] * line.nodes[i].Cw * 5.0;
        EXPECT_LE(line.tracer[0][i], line.tracer[0][i - 1] + 1e-14);
    }
    EXPECT_NEAR(held, 2.0 * 30.0, 1e-9);
}

// --- gas -------------------------------------------------------------------------------------------

/// Oil at connate water, flooded by gas from position 0: dead oil, B 1, gas 0.1 cp.
FluidTables gasFlood() {
    FluidTables tables = samples::plainFlood();
    tables.hasGas = true;
    SaturationTable& region = tables.regions[0];
    region.SgAxis = {0.0, 0.1, 0.2, 0.3, 0.4, 0.6};
    region.Krg = {0.0, 0.01, 0.05, 0.12, 0.25, 0.6};
    region.Krog = {1.0, 0.7, 0.45, 0.25, 0.1, 0.0};
    region.Pcog.assign(6, 0.0);
    finishTables(tables);
    return tables;
}

SolverLine gasLine(const FluidTables& tables, const std::vector<double>& deltaTof, double water) {
    SolverLine line = samples::floodedLine(tables, deltaTof);
    for (std::size_t i = 0; i <= deltaTof.size(); ++i) {
        FlowNode& node = line.nodes[i];
        node.inverseMuG = 10.0;
        node.Sw = water;
        node.Sg = i == 0 ? 0.6 : 0.0;
        node.So = 1.0 - node.Sw - node.Sg;
        node.Bg = 0.5;
        node.inverseBg = 2.0;
        setAmounts(true, node);
    }
    return line;
}

double gasHeld(const SolverLine& line) {
    double sum = 0.0;
    for (std::size_t i = 1; i <= static_cast<std::size_t>(line.nodeCount); ++i)
        sum += line.nodes[i].Cg * line.DeltaTof[i];
    return sum;
}

TEST(AdvanceImplicit, FollowsTheExplicitSolutionOnAGasAndOilLine) {
    const FluidTables tables = gasFlood();
    const std::size_t count = 50;
    SolverLine implicit = gasLine(tables, std::vector<double>(count, 2.0), 0.2);
    SolverLine explicitly = implicit;
    // No distance separates the two but the time steps: a tenth of a node's residence time each.
    LineNewton newton;
    setRates(implicit);
    startOutlet(implicit);
    beginNewton(true, newton, implicit);
    for (int k = 0; k < 200; ++k) ASSERT_GT(newtonStep(tables, {}, 0.0, 0.1, newton, implicit), 0);
    ExplicitControl control;
    control.cfl = 0.1;
    ExplicitScratch scratch;
    advanceExplicit(tables, control, 20.0, scratch, explicitly);
    double difference = 0.0;
    for (std::size_t i = 1; i <= count; ++i) {
        difference += std::abs(implicit.nodes[i].Sg - explicitly.nodes[i].Sg) / count;
        EXPECT_NEAR(implicit.nodes[i].Sw, 0.2, 1e-9) << i;
    }
    EXPECT_LT(difference, 0.004);
    EXPECT_NEAR(gasHeld(implicit) + implicit.outletGas, 20.0 * 2.0, 1e-9);
}

FlowNode flowingInlet(SolverLine line) {
    evaluateFluxes(true, 0, 0, line);
    return line.nodes[0];
}

TEST(AdvanceImplicit, ConservesAllThreePhasesAtLargeSteps) {
    const FluidTables tables = gasFlood();
    SolverLine line = gasLine(tables, std::vector<double>(40, 2.0), 0.3);
    line.nodes[0].Sw = 0.4;  // water and gas go in together
    line.nodes[0].So = 0.0;
    setAmounts(true, line.nodes[0]);
    const auto held = [&](double FlowNode::*amount) {
        double sum = 0.0;
        for (std::size_t i = 1; i <= 40; ++i) sum += line.nodes[i].*amount * line.DeltaTof[i];
        return sum;
    };
    for (int step = 0; step < 4; ++step) {
        const double water = held(&FlowNode::Cw);
        const double oil = held(&FlowNode::Co);
        const double gas = held(&FlowNode::Cg);
        const NewtonCounts counts = advance(tables, {}, 15.0, line);
        EXPECT_LE(counts.halvings, 2);
        const FlowNode inlet = flowingInlet(line);
        EXPECT_NEAR(held(&FlowNode::Cw) - water, 15.0 * (inlet.Fw - line.outletWater), 1e-9) << step;
        EXPECT_NEAR(held(&FlowNode::Co) - oil, 15.0 * (inlet.Fo - line.outletOil), 1e-9) << step;
        EXPECT_NEAR(held(&FlowNode::Cg) - gas, 15.0 * (inlet.Fg - line.outletGas), 1e-9) << step;
    }
    EXPECT_GT(line.outletGas, 0.1);
}

// --- routes ----------------------------------------------------------------------------------------

TEST(AdvanceImplicit, GivesTheSameByEveryRouteOfTheLinearSystem) {
    const FluidTables two = samples::plainFlood();
    const FluidTables three = gasFlood();
    for (const FluidTables* tables : {&two, &three}) {
        const std::vector<double> times = {5, 3, 8, 0.4, 6, 1};
        const SolverLine start =
            tables->hasGas ? gasLine(*tables, times, 0.25) : samples::floodedLine(*tables, times);
        SolverLine forward = start;
        advance(*tables, {}, 12.0, forward);
        for (const LineRoute route : {LineRoute::Banded, LineRoute::Dense, LineRoute::Sparse}) {
            SolverLine other = start;
            ImplicitControl control;
            control.newton.route = route;
            advance(*tables, control, 12.0, other);
            for (std::size_t i = 1; i <= times.size(); ++i) {
                EXPECT_NEAR(other.nodes[i].Sw, forward.nodes[i].Sw, 1e-7) << i;
                EXPECT_NEAR(other.nodes[i].Sg, forward.nodes[i].Sg, 1e-7) << i;
            }
        }
    }
}

// --- hybrid ----------------------------------------------------------------------------------------

NewtonCounts advanceByHybrid(const FluidTables& tables, double step, SolverLine& line) {
    LineNewton newton;
    NewtonCounts counts;
    advanceHybrid(tables, {}, {}, step, newton, counts, line);
    return counts;
}

TEST(AdvanceHybrid, StaysExplicitWhileASubstepIsMoreThanATenthOfTheTimeLeft) {
    const FluidTables tables = samples::plainFlood();
    SolverLine hybrid = samples::floodedLine(tables, std::vector<double>(5, 20.0));
    SolverLine explicitly = hybrid;
    const NewtonCounts counts = advanceByHybrid(tables, 30.0, hybrid);
    EXPECT_EQ(counts.steps, 0);
    ExplicitScratch scratch;
    advanceExplicit(tables, {}, 30.0, scratch, explicitly);
    EXPECT_EQ(hybrid.substeps, explicitly.substeps);
    for (std::size_t i = 1; i <= 5; ++i) EXPECT_NEAR(hybrid.nodes[i].Sw, explicitly.nodes[i].Sw, 1e-6) << i;
}

TEST(AdvanceHybrid, TakesAllThatIsLeftInOneImplicitStepWhereSubstepsAreShort) {
    const FluidTables tables = samples::plainFlood();
    SolverLine hybrid = samples::floodedLine(tables, std::vector<double>(50, 1.0));
    SolverLine implicit = hybrid;
    const NewtonCounts counts = advanceByHybrid(tables, 20.0, hybrid);
    EXPECT_EQ(counts.steps, 1);
    EXPECT_EQ(counts.halvings, 0);
    oneStep(tables, {}, 20.0, implicit);
    for (std::size_t i = 1; i <= 50; ++i) EXPECT_EQ(hybrid.nodes[i].Sw, implicit.nodes[i].Sw) << i;
    EXPECT_NEAR(waterGained(hybrid) + 20.0 * hybrid.outletWater, 20.0, 1e-10);
}

TEST(AdvanceHybrid, DoesNothingOverNoTime) {
    const FluidTables tables = samples::plainFlood();
    SolverLine line = samples::floodedLine(tables, {10.0});
    advanceByHybrid(tables, 0.0, line);
    EXPECT_EQ(line.nodes[1].Sw, 0.2);
    EXPECT_EQ(line.substeps, 0);
}

}  // namespace
}  // namespace kvr
