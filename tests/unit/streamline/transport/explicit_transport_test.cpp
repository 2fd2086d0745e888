#include "streamline/transport/explicit_transport.hpp"

#include "unit/streamline/line_samples.hpp"

#include <cmath>
#include <gtest/gtest.h>
#include <numeric>

namespace kvr {
namespace {

using samples::plainFraction;
using samples::waterGained;

void advance(const FluidTables& tables, const ExplicitControl& control, double step, SolverLine& line) {
    ExplicitScratch scratch;
    advanceExplicit(tables, control, step, scratch, line);
}

TEST(AdvanceExplicit, IsPlainUpstreamTransportOnEvenNodes) {
    const FluidTables tables = samples::plainFlood();
    SolverLine line = samples::floodedLine(tables, std::vector<double>(10, 10.0));
    ExplicitControl control;
    control.firstStep = true;
    advance(tables, control, 30.0, line);
    EXPECT_EQ(line.substeps, 10);
    const double sw[] = {0.73186127, 0.69262267, 0.66576346, 0.6370056,  0.61129213,
                         0.58245908, 0.46498875, 0.21397785, 0.20002918, 0.2};
    for (std::size_t i = 0; i < 10; ++i) EXPECT_NEAR(line.nodes[i + 1].Sw, sw[i], 1e-8) << i;
    EXPECT_NEAR(waterGained(line), 30.0, 1e-10);
    EXPECT_NEAR(line.outletOil, 1.0, 1e-12);
}

/// The same loop written out plainly, from arrays of saturations, for any residence times.
std::vector<double> plainTwin(const std::vector<double>& deltaTof, double step, double cfl, double floor) {
    std::vector<double> s(deltaTof.size() + 1, 0.2);
    s[0] = 0.8;
    for (double t = 0.0; t < step;) {
        std::vector<double> f(s.size());
        for (std::size_t i = 0; i < s.size(); ++i) f[i] = plainFraction(s[i]);
        double speed = 0.0;
        for (std::size_t i = 1; i < s.size(); ++i)
            if (std::abs(s[i] - s[i - 1]) > 1e-6)
                speed = std::max(speed, std::abs((f[i] - f[i - 1]) / (s[i] - s[i - 1])) / deltaTof[i - 1]);
        double dt = std::max(cfl / (speed + 1e-10), floor);
        const bool last = dt >= step - t;
        dt = std::min(dt, step - t);
        for (std::size_t i = s.size() - 1; i >= 1; --i) s[i] -= dt / deltaTof[i - 1] * (f[i] - f[i - 1]);
        t = last ? step : t + dt;
    }
    return s;
}

TEST(AdvanceTogether, EqualsThePlainLoopOnUnevenNodes) {
    const FluidTables tables = samples::plainFlood();
    const std::vector<double> deltaTof = {10, 3, 8, 0.4, 12, 0.1, 9, 9, 1, 7, 7, 20};
    SolverLine line = samples::floodedLine(tables, deltaTof);
    advanceTogether(tables, {}, 40.0, line);
    const std::vector<double> twin = plainTwin(deltaTof, 40.0, 0.8, 0.01);
    for (std::size_t i = 1; i < twin.size(); ++i) EXPECT_NEAR(line.nodes[i].Sw, twin[i], 1e-9) << i;
    EXPECT_NEAR(waterGained(line), 40.0 - 40.0 * line.outletWater, 1e-9);
}

TEST(AdvanceExplicit, TakesAnEvenLineInOnePiece) {
    const FluidTables tables = samples::plainFlood();
    const std::vector<double> deltaTof = {10, 7, 12, 9, 6, 15, 11, 10, 8, 9};
    SolverLine stretched = samples::floodedLine(tables, deltaTof);
    SolverLine together = stretched;
    advance(tables, {}, 30.0, stretched);
    advanceTogether(tables, {}, 30.0, together);
    EXPECT_EQ(stretched.substeps, together.substeps);
    for (std::size_t i = 1; i <= 10; ++i)
        EXPECT_NEAR(stretched.nodes[i].Sw, together.nodes[i].Sw, 1e-12) << i;
}

/// Residence times as lines through cells have them: long ones, and some that only graze a corner.
std::vector<double> grazingTimes(std::size_t count) {
    std::vector<double> times;
    for (std::size_t i = 0; i < count; ++i) {
        const double wave = 1.0 + 0.6 * std::sin(1.7 * static_cast<double>(i));
        times.push_back(i % 7 == 3 ? 0.3 * wave : i % 11 == 5 ? 0.06 * wave : 8.0 * wave);
    }
    return times;
}

/// Difference of the water saturations of two cuts of one line, summed over the residence times of the finer.
double distanceFrom(const SolverLine& fine, const SolverLine& line) {
    double sum = 0.0;
    std::size_t k = 1;
    const auto count = static_cast<std::size_t>(line.nodeCount);
    for (std::size_t f = 1; f <= static_cast<std::size_t>(fine.nodeCount); ++f) {
        while (k < count && line.Tof[k] < fine.Tof[f]) ++k;
        sum += std::abs(line.nodes[k].Sw - fine.nodes[f].Sw) * fine.DeltaTof[f];
    }
    return sum;
}

TEST(AdvanceExplicit, ConservesWaterAcrossStretchesOfUnevenNodes) {
    const FluidTables tables = samples::plainFlood();
    SolverLine line = samples::floodedLine(tables, grazingTimes(60));
    for (int step = 0; step < 8; ++step) {
        const double before = waterGained(line);
        advance(tables, {}, 50.0, line);
        const double in = 50.0 - 50.0 * line.outletWater;
        EXPECT_NEAR(waterGained(line) - before, in, 1e-8) << step;
    }
    EXPECT_GT(line.outletWater, 0.5);
}

TEST(AdvanceExplicit, StaysAsCloseToTheExactFloodInStretchesAsInOnePiece) {
    // A line of 60 uneven nodes against the same line cut finely and evenly; before breakthrough, so that
    // both hold all the water.
    const FluidTables tables = samples::plainFlood();
    const std::vector<double> times = grazingTimes(60);
    const double total = std::accumulate(times.begin(), times.end(), 0.0);
    const std::size_t fineCount = 4000;
    SolverLine fine = samples::floodedLine(tables, std::vector<double>(fineCount, total / fineCount));
    SolverLine stretched = samples::floodedLine(tables, times);
    SolverLine together = stretched;
    advance(tables, {}, 80.0, stretched);
    advanceTogether(tables, {}, 80.0, together);
    advance(tables, {0.8, 1e-6}, 80.0, fine);
    const auto error = [&](const SolverLine& line) { return distanceFrom(fine, line); };
    EXPECT_LE(error(stretched), error(together));
    EXPECT_LT(error(stretched), 0.1 * 80.0);
    EXPECT_LT(stretched.substeps, 60 * together.substeps);
}

TEST(AdvanceExplicit, LeavesASteadyLineAsItIs) {
    const FluidTables tables = samples::plainFlood();
    SolverLine line = samples::floodedLine(tables, grazingTimes(20));
    line.nodes[0].Sw = 0.2;
    line.nodes[0].So = 0.8;
    setAmounts(false, line.nodes[0]);
    advance(tables, {}, 50.0, line);
    for (std::size_t i = 1; i <= 20; ++i) EXPECT_DOUBLE_EQ(line.nodes[i].Sw, 0.2);
    EXPECT_EQ(line.outletWater, 0.0);
}

TEST(AdvanceExplicit, LetsTheRemainingTimeWinOverTheMinimum) {
    const FluidTables tables = samples::plainFlood();
    SolverLine line = samples::floodedLine(tables, {10.0});
    ExplicitControl control;
    control.minimumStep = 1.0;
    advance(tables, control, 0.3, line);
    EXPECT_EQ(line.substeps, 1);
    EXPECT_NEAR(line.nodes[1].Sw, 0.2 + 0.3 / 10.0, 1e-12);
}

TEST(AdvanceExplicit, CutsTheVeryFirstSubstepOfARunByFive) {
    const FluidTables tables = samples::plainFlood();
    SolverLine line = samples::floodedLine(tables, {10.0});
    ExplicitControl control;
    // Speed of the first step: (1 - 0) / (0.8 - 0.2) / 10; CFL over it is 4.8 days.
    advance(tables, control, 4.7, line);
    EXPECT_EQ(line.substeps, 1);
    line = samples::floodedLine(tables, {10.0});
    control.firstStep = true;
    advance(tables, control, 4.7, line);
    EXPECT_EQ(line.substeps, 2);
}

TEST(AdvanceExplicit, DoesOneSubstepOnOneNodeWhereNothingMoves) {
    const FluidTables tables = samples::plainFlood();
    SolverLine line = samples::floodedLine(tables, {10.0});
    line.nodes[0].Sw = 0.2;
    line.nodes[0].So = 0.8;
    setAmounts(false, line.nodes[0]);
    advance(tables, {}, 50.0, line);
    EXPECT_EQ(line.substeps, 1);
}

TEST(AdvanceExplicit, SharpensTheFrontWithALimiterAndKeepsTheWater) {
    const FluidTables tables = samples::plainFlood();
    SolverLine upstream = samples::floodedLine(tables, std::vector<double>(100, 2.0));
    SolverLine limited = upstream;
    SolverLine fine = samples::floodedLine(tables, std::vector<double>(4000, 0.05));
    ExplicitControl control;
    advance(tables, control, 60.0, upstream);
    advance(tables, {0.8, 1e-6}, 60.0, fine);
    control.upwind = "2PU";
    advance(tables, control, 60.0, limited);
    EXPECT_NEAR(waterGained(limited), 60.0, 1e-8);
    const auto error = [&](const SolverLine& line) {
        double sum = 0.0;
        for (std::size_t f = 1; f <= 4000; ++f)
            sum += std::abs(line.nodes[(f - 1) / 40 + 1].Sw - fine.nodes[f].Sw) * 0.05;
        return sum;
    };
    EXPECT_LT(error(limited), error(upstream));
}

TEST(AdvanceExplicit, LimitsAnEvenLineInOnePiece) {
    const FluidTables tables = samples::plainFlood();
    ExplicitControl control;
    for (const char* scheme : {"2PU", "Leonard"}) {
        control.upwind = scheme;
        SolverLine stretched = samples::floodedLine(tables, {10, 7, 12, 9, 6, 15, 11, 10, 8, 9});
        SolverLine together = stretched;
        advance(tables, control, 30.0, stretched);
        advanceTogether(tables, control, 30.0, together);
        EXPECT_EQ(stretched.substeps, together.substeps);
        for (std::size_t i = 1; i <= 10; ++i) {
            EXPECT_NEAR(stretched.nodes[i].Sw, together.nodes[i].Sw, 1e-12) << scheme << " " << i;
            EXPECT_NEAR(stretched.nodes[i].passedW, together.nodes[i].passedW, 1e-11) << scheme << " " << i;
        }
    }
}

TEST(AdvanceExplicit, LimitsALineInStretchesAsWellAsInOnePieceAndKeepsTheWater) {
    const FluidTables tables = samples::plainFlood();
    const std::vector<double> times = grazingTimes(60);
    const std::size_t fineCount = 4000;
    const double total = std::accumulate(times.begin(), times.end(), 0.0);
    SolverLine fine = samples::floodedLine(tables, std::vector<double>(fineCount, total / fineCount));
    advance(tables, {0.8, 1e-6}, 80.0, fine);
    const auto error = [&](const SolverLine& line) { return distanceFrom(fine, line); };
    SolverLine upstream = samples::floodedLine(tables, times);
    SolverLine stretched = upstream, together = upstream;
    ExplicitControl control;
    control.minimumStep = 1e-6;
    advance(tables, control, 80.0, upstream);
    control.upwind = "2PU";
    advance(tables, control, 80.0, stretched);
    advanceTogether(tables, control, 80.0, together);
    EXPECT_NEAR(waterGained(stretched) + 80.0 * stretched.outletWater, 80.0, 1e-8);
    EXPECT_LE(error(stretched), 1.02 * error(together));
    EXPECT_LT(error(stretched), error(upstream));
}

/// Linear flux of a 1 cp water: the fraction of the flow is the saturation.
FluidTables linearFlood() {
    FluidTables tables = samples::plainFlood();
    SaturationTable& region = tables.regions[0];
    region.SwAxis = {0.0, 0.25, 0.5, 1.0};
    region.Krw = {0.0, 0.25, 0.5, 1.0};
    region.Krow = {1.0, 0.75, 0.5, 0.0};
    region.Pcow.assign(4, 0.0);
    finishTables(tables);
    return tables;
}

/// Mean error of a smooth hill that travels 20 days over 100, cut into nodes of one length but for five of a
/// hundredth of it; in stretches.
double hillError(std::size_t count, const char* scheme) {
    const FluidTables tables = linearFlood();
    const auto hill = [](double t) {
        const double x = (t - 40.0) / 30.0;
        return 0.2 + (std::abs(x) < 1.0 ? 0.5 * std::pow(std::cos(1.5707963267948966 * x), 4) : 0.0);
    };
    std::vector<double> times(count, 1.0);
    for (std::size_t i = 10; i < count; i += count / 5) times[i] = 0.01;
    const double scale = 100.0 / std::accumulate(times.begin(), times.end(), 0.0);
    for (double& time : times) time *= scale;
    SolverLine line = samples::floodedLine(tables, times);
    const auto mean = [&](std::size_t i, double shift) {
        double sum = 0.0;
        for (int n = 0; n < 50; ++n)
            sum += hill(line.Tof[i - 1] + line.DeltaTof[i] * (n + 0.5) / 50.0 - shift) / 50.0;
        return sum;
    };
    for (std::size_t i = 0; i <= count; ++i) {
        FlowNode& node = line.nodes[i];
        node.inverseMuW = node.inverseMuO = 1.0;
        node.Sw = i == 0 ? 0.2 : mean(i, 0.0);
        node.So = 1.0 - node.Sw;
        setAmounts(false, node);
    }
    ExplicitControl control;
    control.cfl = 0.5;
    control.minimumStep = 1e-9;
    control.upwind = scheme;
    advance(tables, control, 20.0, line);
    double sum = 0.0;
    for (std::size_t i = 1; i <= count; ++i)
        sum += std::abs(line.nodes[i].Sw - mean(i, 20.0)) * line.DeltaTof[i] / 100.0;
    return sum;
}

TEST(AdvanceExplicit, KeepsItsOrderOverFewCuts) {
    // Five cuts however many nodes: first order upstream, second with the limiter, down to what a quiet
    // stretch may leave out.
    const double first = std::log2(hillError(100, "SPU") / hillError(400, "SPU")) / 2.0;
    const double second = std::log2(hillError(100, "2PU") / hillError(400, "2PU")) / 2.0;
    EXPECT_GT(first, 0.85);
    EXPECT_GT(second, 1.8);
    EXPECT_LT(hillError(400, "2PU"), 0.1 * hillError(400, "SPU"));
}

TEST(AdvanceExplicit, ReplacesABadSaturationByThatOfTheNodeBefore) {
    const FluidTables tables = samples::plainFlood();
    SolverLine line = samples::floodedLine(tables, {10.0, 10.0, 10.0});
    line.nodes[2].Cw = std::nan("");
    advance(tables, {}, 1.0, line);
    for (std::size_t i = 1; i <= 3; ++i) EXPECT_TRUE(std::isfinite(line.nodes[i].Sw)) << i;
}

TEST(AdvanceExplicit, LetsAnExpandingCellGiveOilAndACompressedOneTakeIt) {
    const FluidTables tables = samples::plainFlood();
    SolverLine line = samples::floodedLine(tables, {10.0, 10.0});
    line.nodes[0].Sw = 0.2;
    line.nodes[0].So = 0.8;
    setAmounts(false, line.nodes[0]);
    line.nodes[1].expansion = 0.002;
    line.nodes[2].expansion = -0.002;
    line.nodes[1].Cw *= 1.02;  // what it holds at the start takes 2 % more room at the new pressure
    line.nodes[1].Co *= 1.02;
    line.nodes[2].Cw *= 0.98;
    line.nodes[2].Co *= 0.98;
    advance(tables, {}, 10.0, line);
    // At connate water oil alone moves: 0.02 of the pore volume leaves node 1, as much enters node 2.
    EXPECT_NEAR(line.nodes[1].Sw, 0.204, 1e-12);
    EXPECT_NEAR(line.nodes[1].So, 0.796, 1e-12);
    EXPECT_NEAR(line.nodes[2].Sw, 0.196, 1e-12);
    EXPECT_NEAR(line.nodes[2].So, 0.804, 1e-12);
}

TEST(AdvanceExplicit, CarriesATracerWithTheWater) {
    const FluidTables tables = samples::plainFlood();
    const std::vector<double> times(20, 5.0);
    SolverLine line = samples::floodedLine(tables, times);
    for (std::size_t i = 1; i <= 20; ++i) {  // all at residual oil: water alone flows
        line.nodes[i].Sw = 0.8;
        line.nodes[i].So = 0.2;
        setAmounts(false, line.nodes[i]);
    }
    line.tracer.assign(1, std::vector<double>(line.nodes.size(), 0.0));
    line.tracer[0][0] = 2.0;
    advance(tables, {}, 30.0, line);
    double held = 0.0;
    for (std::size_t i = 1; i <= 20; ++i) {
        held += line.tracer[0][i] * line.nodes[i].Cw * 5.0;
        EXPECT_LE(line.tracer[0][i], line.tracer[0][i - 1] + 1e-14);
    }
    EXPECT_NEAR(held, 2.0 * 30.0, 1e-3);
    EXPECT_GT(line.tracer[0][6], 1.0);
    EXPECT_LT(line.tracer[0][9], 1.0);
}

TEST(AdvanceExplicit, LosesNoTracerWhereItTakesManyStepsOfItsOwn) {
    // A tracer moves faster than the saturation front of a little water: several steps of its own in each
    // substep, while the water amounts change.
    const FluidTables tables = samples::plainFlood();
    SolverLine line = samples::floodedLine(tables, std::vector<double>(60, 5.0));
    line.tracer.assign(1, std::vector<double>(line.nodes.size(), 0.0));
    line.tracer[0][0] = 2.0;
    ExplicitControl control;
    control.minimumStep = 1e-6;
    advance(tables, control, 100.0, line);
    double held = 0.0;
    for (std::size_t i = 1; i <= 60; ++i) held += line.tracer[0][i] * line.nodes[i].Cw * 5.0;
    EXPECT_NEAR(held, 2.0 * 100.0, 1e-9);
}

}  // namespace
}  // namespace kvr
