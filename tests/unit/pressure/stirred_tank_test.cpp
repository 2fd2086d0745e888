#include "pressure/stirred_tank.hpp"

#include "fluid/black_oil.hpp"
#include "unit/fluid/table_samples.hpp"

#include <cmath>
#include <gtest/gtest.h>

namespace kvr {
namespace {

/// Immobile water 0.2, residual oil 0.2, water 0.5 cp, oil 2 cp, all factors 1.
FluidTables fourRows() {
    FluidTables tables = samples::constantFluids();
    tables.regions.push_back(samples::fourRowRegion());
    finishTables(tables);
    return tables;
}

TankFluid tankOf(double poreVolume, double muW, double muO) {
    TankFluid fluid;
    fluid.cell = 1;
    fluid.poreVolume = poreVolume;
    fluid.MuW = muW;
    fluid.MuO = muO;
    return fluid;
}

/// What a tank of 100 full of oil lets out in the mean while one pore volume of water runs in.
double meanWater(double slope) {
    TankFlows flows;
    flows.inflow.water = 10.0;
    flows.rest = 10.0;
    return emptyTank(samples::sharesFlow(), tankOf(100.0, 1.0, 1.0), flows, 10.0, {slope, {}},
                     {0.0, 100.0, 0.0})
        .own.water;
}

TEST(StirredTank, FollowsTheExponentialOfALinearFraction) {
    // dS/dt = q (1 - S): S = 1 - exp(-t/10 d), in the mean of 10 days 1/e. N even substeps h by the state
    // at their start give h sum (1 - (1 - h)^n) = (1 - h)^N; 0.8 pore volumes over `slope` make a substep.
    const auto bySubsteps = [](double n) { return std::pow(1.0 - 1.0 / n, n); };
    EXPECT_NEAR(meanWater(8.0), bySubsteps(10.0), 1e-12);
    EXPECT_NEAR(meanWater(80.0), bySubsteps(100.0), 1e-12);
    const double coarse = std::exp(-1.0) - meanWater(80.0), fine = std::exp(-1.0) - meanWater(160.0);
    EXPECT_LT(std::abs(coarse), 0.005) << "half a substep";
    EXPECT_NEAR(coarse / fine, 2.0, 0.02) << "first order";
}

TEST(StirredTank, LetsOutAChangeOfItsInflowDelayedByItsContent) {
    // Water comes at x = t/10 d of the flow into a tank that is turned over once in 10 days: S = x - 1 +
    // e^-x, in the mean 1/2 - 1/e; the line of the same first moment rises by 12 (int x S dx - mean / 2) with
    // int x S dx = 5/6 - 2/e.
    TankFlows flows;
    flows.inflow = {5.0, 5.0, 0.0};
    flows.tilt = 10.0;
    flows.rest = 10.0;
    const TankOutflow out = emptyTank(samples::sharesFlow(), tankOf(100.0, 1.0, 1.0), flows, 10.0,
                                      {1600.0, {}}, {0.0, 100.0, 0.0});
    const double mean = 0.5 - std::exp(-1.0);
    EXPECT_NEAR(out.own.water, mean, 1e-4);
    EXPECT_NEAR(out.tilt, 12.0 * (5.0 / 6.0 - 2.0 * std::exp(-1.0) - 0.5 * mean), 1e-3);
}

TEST(StirredTank, ThatGivesWithoutAnInflowIsEmptiedHoweverMuchIsAsked) {
    // Pressures that have left all bounds ask for 1e17 pore volumes: the tank gives what it holds and is
    // done.
    TankFlows flows;
    flows.rest = 1e19;
    const TankOutflow out =
        emptyTank(samples::sharesFlow(), tankOf(100.0, 1.0, 1.0), flows, 1.0, {200.0, {}}, {40.0, 60.0, 0.0});
    EXPECT_NEAR(out.deficit / 1e19, 1.0, 1e-12);
    EXPECT_NEAR(out.own.water + out.own.oil, 1.0, 1e-9);
    EXPECT_LT(out.given.water, 1e-16);
}

TEST(StirredTank, WhatIsImmobileIsThatOfTheVolumeThatItHolds) {
    // All but the immobile fifth is oil, and it holds a thousandth less than its pores: gravity pulls water
    // that does not move. One substep takes the step, not thousands, and nothing but oil leaves.
    TankFlows flows;
    flows.inflow.oil = 1.0;
    flows.rest = 1.0;
    std::array<BuoyantFlow, 1> buoyant;
    buoyant[0].flow = 1.0;
    buoyant[0].pull = 1e6;
    const TankOutflow out = emptyTank(fourRows(), tankOf(100.0, 0.5, 2.0), flows, 1.0, {5.0, {}},
                                      {0.2 * 99.9, 0.8 * 99.9, 0.0}, buoyant);
    EXPECT_NEAR(out.own.oil, 1.0, 1e-9);
    EXPECT_NEAR(buoyant[0].own, 0.0, 1e-9);
}

TEST(StirredTank, TakesTheRestOfTheStepAtOnceWhereItStandsStill) {
    TankFlows flows;
    flows.inflow = {4.0, 6.0, 0.0};
    flows.rest = 10.0;
    const TankOutflow out =
        emptyTank(samples::sharesFlow(), tankOf(100.0, 1.0, 1.0), flows, 1e6, {1.0, {}}, {40.0, 60.0, 0.0});
    EXPECT_NEAR(out.own.water, 0.4, 1e-12);
    EXPECT_NEAR(out.own.oil, 0.6, 1e-12);
    EXPECT_EQ(out.deficit, 0.0);
}

TEST(StirredTank, OfManyContentsThroughputLetsOutWhatComesIn) {
    // A ten-millionth of the throughput: what it held at first is no more than that of the outflow.
    TankFlows flows;
    flows.inflow = {6.0, 4.0, 0.0};
    flows.rest = 10.0;
    const TankOutflow out =
        emptyTank(fourRows(), tankOf(1e-6, 0.5, 2.0), flows, 1.0, {5.0, {}}, {0.0, 1e-6, 0.0});
    const double water = 6.0 - 10.0 * out.own.water * out.given.water;
    const double oil = 1e-6 + 4.0 - 10.0 * out.own.oil * out.given.oil;
    EXPECT_NEAR(out.own.water, 0.6, 2e-7);
    EXPECT_NEAR(out.own.oil, 0.4, 2e-7);
    EXPECT_GE(water, -1e-12);
    EXPECT_GE(oil, -1e-12);
    EXPECT_NEAR(water + oil, 1e-6, 1e-12) << "it stays full";
    EXPECT_LT(out.deficit, 1e-12);
}

TEST(StirredTank, LeavesAsAskedWhileNothingRunsShort) {
    TankFlows flows;
    flows.inflow.water = 10.0;
    flows.ask(10.0, {0.3, 0.7, 0.0});
    const TankOutflow out =
        emptyTank(fourRows(), tankOf(100.0, 0.5, 2.0), flows, 1.0, {5.0, {}}, {30.0, 70.0, 0.0});
    EXPECT_EQ(out.followed, 1.0);
    EXPECT_EQ(out.own.water + out.own.oil + out.apart.water + out.apart.oil, 0.0);
    EXPECT_EQ(out.deficit, 0.0);
}

TEST(StirredTank, GivesNoImmobileWaterToAKnownMakeUp) {
    // 25 of water less 10 would leave 15 of the 20 that do not move. At Sw 0.25 water has 0.0125 / 0.5 cp,
    // oil 0.8 / 2 cp.
    TankFlows flows;
    flows.inflow.oil = 10.0;
    flows.ask(10.0, {1.0, 0.0, 0.0});
    const TankOutflow out =
        emptyTank(fourRows(), tankOf(100.0, 0.5, 2.0), flows, 1.0, {1.0, {}}, {25.0, 75.0, 0.0});
    EXPECT_EQ(out.followed, 0.0);
    EXPECT_NEAR(out.apart.water, 0.025 / 0.425, 1e-12);
    EXPECT_NEAR(out.apart.oil, 0.4 / 0.425, 1e-12);
}

TEST(StirredTank, FollowsAKnownMakeUpAsLongAsItCan) {
    // Two substeps of half a day (1.25 by the slope): 26 to 21, then the next 5 would be immobile. At Sw
    // 0.21 water has 0.0025 / 0.5 cp, oil 0.88 / 2 cp.
    TankFlows flows;
    flows.inflow.oil = 10.0;
    flows.ask(10.0, {1.0, 0.0, 0.0});
    const TankOutflow out =
        emptyTank(fourRows(), tankOf(100.0, 0.5, 2.0), flows, 1.0, {10.0, {}}, {26.0, 74.0, 0.0});
    EXPECT_EQ(out.followed, 0.5);
    EXPECT_NEAR(out.apart.water, 0.5 * 0.005 / 0.445, 1e-12);
    EXPECT_NEAR(out.apart.oil, 0.5 * 0.44 / 0.445, 1e-12);
}

TEST(StirredTank, BelowTheImmobilePartStillGivesWhatIsAskedOfTheOther) {
    TankFlows flows;
    flows.inflow.oil = 10.0;
    flows.ask(10.0, {0.0, 1.0, 0.0});
    const TankOutflow out =
        emptyTank(fourRows(), tankOf(100.0, 0.5, 2.0), flows, 1.0, {5.0, {}}, {10.0, 90.0, 0.0});
    EXPECT_EQ(out.followed, 1.0);
}

TEST(StirredTank, GivesNothingThatIsNotThere) {
    // One pore volume of oil, ten are asked for and nothing comes in.
    TankFlows flows;
    flows.rest = 10.0;
    const TankOutflow out =
        emptyTank(fourRows(), tankOf(1.0, 0.5, 2.0), flows, 1.0, {5.0, {}}, {0.0, 1.0, 0.0});
    EXPECT_NEAR(10.0 * out.own.oil * out.given.oil, 1.0, 1e-12);
    EXPECT_NEAR(10.0 * out.own.water * out.given.water, 0.0, 1e-12);
    EXPECT_NEAR(out.deficit, 9.0, 1e-12);
}

TEST(StirredTank, CountsALackByReservoirVolume) {
    // A known make-up of 5 stb/day where there are 2 and no other phase; Bo 1.25.
    TankFlows flows;
    flows.ask(6.25, {0.0, 0.8, 0.0});
    TankFluid fluid = tankOf(2.5, 0.5, 2.0);
    fluid.factors.Bo = 1.25;
    const TankOutflow out = emptyTank(fourRows(), fluid, flows, 1.0, {1.0, {}}, {0.0, 2.0, 0.0});
    const double given = out.given.oil * (out.followed * flows.request.oil + flows.asked * out.apart.oil);
    EXPECT_NEAR(given, 2.0, 1e-12);
    EXPECT_NEAR(out.deficit, 6.25 - 2.5, 1e-12);
}

TEST(StirredTank, TakesSolutionGasAlongWithItsOil) {
    const FluidTables tables = samples::lightOil();
    TankFluid fluid = tankOf(100.0, 0.3, 0.5);
    fluid.MuG = 0.02;
    fluid.factors = {4800.0, 1.04, 1.6, 0.7 * GasRatioFactor};
    fluid.saturatedRs = SolutionRs(tables, 4800.0);
    const double rs = 0.5 * fluid.saturatedRs;
    const ConservedAmounts start{20.0 / 1.04, 80.0 / 1.6, rs * 80.0 / 1.6};
    TankFlows flows;
    flows.rest = 1.0;
    flows.inflow = {0.0, 1.0 / 1.6, rs / 1.6};
    const TankOutflow out = emptyTank(tables, fluid, flows, 1.0, {1.0, {}}, start);
    EXPECT_NEAR(out.own.oil, 1.0 / 1.6, 1e-12) << "connate water stays";
    EXPECT_NEAR(out.own.gas, rs / 1.6, 1e-9 * rs);
}

TEST(StirredTank, WithoutFlowLetsNothingOut) {
    TankFlows flows;
    flows.inflow.water = 5.0;
    const TankOutflow out =
        emptyTank(fourRows(), tankOf(100.0, 0.5, 2.0), flows, 1.0, {5.0, {}}, {20.0, 80.0, 0.0});
    EXPECT_EQ(out.own.water + out.own.oil + out.own.gas, 0.0);
    EXPECT_EQ(out.deficit, 0.0);
}

/// Slopes of a region that are the same everywhere.
FractionSlopes evenSlopes(double flow, double exchange) {
    RegionSlopes region;
    region.binsPerSaturation = RegionSlopes::Bins;
    region.flow.fill(flow);
    region.exchange.fill(exchange);
    return {flow, {region}};
}

TEST(StirredTank, FollowsTheExponentialInOneSubstepWhereItsSlopesAreKnown) {
    // As above, half a pore volume: S = 1 - exp(-x), in the mean of 0 to 1/2 2 exp(-1/2) - 1.
    TankFlows flows;
    flows.inflow.water = 10.0;
    flows.rest = 10.0;
    const TankOutflow out = emptyTank(samples::sharesFlow(), tankOf(100.0, 1.0, 1.0), flows, 5.0,
                                      evenSlopes(1.0, 0.0), {0.0, 100.0, 0.0});
    EXPECT_NEAR(out.own.water, 2.0 * std::exp(-0.5) - 1.0, 2e-4);
}

/// Mean water that leaves a tank of 100 at Sw 0.25 whose oil a pore volume of water displaces, slopes taken
/// `steeper` than they are.
double meanOfCurves(double steeper) {
    TankFlows flows;
    flows.inflow.water = 10.0;
    flows.rest = 10.0;
    constexpr double SteepestFraction = 3.7;
    return emptyTank(fourRows(), tankOf(100.0, 0.5, 2.0), flows, 10.0,
                     evenSlopes(steeper * SteepestFraction, 0.0), {25.0, 75.0, 0.0})
        .own.water;
}

TEST(StirredTank, HasAnErrorOfSecondOrderInItsSubsteps) {
    // dS/dx = 1 - fw of the rows of relative permeabilities, 40,000 steps of a Runge-Kutta script.
    const double exact = 0.604031218;
    const double coarse = meanOfCurves(1.0) - exact, fine = meanOfCurves(8.0) - exact;
    EXPECT_LT(std::abs(coarse), 0.01);
    EXPECT_LT(std::abs(fine), std::abs(coarse) / 16.0) << "corners of the curves allow no more";
}

/// Water left per pore volume in a tank of 100 at half water, from which ten a day run out downward, m =
/// `pull`, while ten of oil run in.
double waterLeftBehind(double pull, double days, const FractionSlopes& slopes) {
    TankFlows flows;
    flows.inflow.oil = 10.0;
    flows.rest = 10.0;
    BuoyantFlow down;
    down.flow = 10.0;
    down.pull = pull;
    const TankOutflow out =
        emptyTank(fourRows(), tankOf(100.0, 0.5, 2.0), flows, days, slopes, {50.0, 50.0, 0.0}, {&down, 1});
    return 0.5 - days * 0.1 * (out.own.water + down.own);
}

TEST(StirredTank, DrainsToImmobileWaterByGravityAndNotBelow) {
    // dS/dt = -q/V (fw + min(1, m lw) fo) in 200,000 steps by a script of its own: 0.3, 0.23519, 0.21184 with
    // m = 20 cp behind 2, 3, 4 days; 0.3, 0.20366, 0.2 with m = 200.
    // Slopes of the curves by a script: of fw 3.673 at most, of lw lo / (lw + lo) 0.704 per cp.
    for (const FractionSlopes& slopes : {FractionSlopes{3.7, {}}, evenSlopes(3.7, 0.71)}) {
        EXPECT_NEAR(waterLeftBehind(20.0, 2.0, slopes), 0.3, 0.01);
        EXPECT_NEAR(waterLeftBehind(20.0, 3.0, slopes), 0.23519, 0.01);
        EXPECT_NEAR(waterLeftBehind(20.0, 4.0, slopes), 0.21184, 0.005);
        EXPECT_NEAR(waterLeftBehind(200.0, 2.0, slopes), 0.3, 0.01);
        EXPECT_NEAR(waterLeftBehind(200.0, 3.0, slopes), 0.20366, 0.005);
        for (const double days : {2.5, 4.0, 6.0, 20.0, 1000.0}) {
            EXPECT_GE(waterLeftBehind(200.0, days, slopes), 0.2 - 1e-9) << days;
            EXPECT_LE(waterLeftBehind(200.0, days, slopes), 0.5 - std::min(0.3, 0.095 * days) + 0.01) << days;
        }
    }
}

}  // namespace
}  // namespace kvr
