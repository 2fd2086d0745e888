#include "pressure/pair_tank.hpp"

#include "unit/pressure/small_run.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace kvr {
namespace {

PairSide sideOf(CellId cell, double poreVolume) {
    PairSide side;
    side.fluid.cell = cell;
    side.fluid.poreVolume = poreVolume;
    side.fluid.MuW = 0.5;
    side.fluid.MuO = 2.0;
    side.fluid.MuG = 0.02;
    return side;
}

/// Fractures of 30 and matrix of 100 of pore volume; heads of 5 psi where water fills the height.
TransferPair pairOf(const FluidTables& tables, double conductance, double total) {
    TransferPair pair{sideOf(1, 30.0), sideOf(2, 100.0), conductance, total};
    for (PairSide* side : {&pair.fracture, &pair.matrix}) {
        side->fullWater = 5.0;
        side->waterShare = waterHeight(tables.regions[0]);
        side->gasShare = gasHeight(tables.regions[0]);
    }
    return pair;
}

PhaseState water(double Sw) {
    PhaseState state;
    state.Sw = Sw;
    state.So = 1.0 - Sw;
    return state;
}

ConservedAmounts filled(double poreVolume, double Sw) {
    return {Sw * poreVolume, (1.0 - Sw) * poreVolume, 0.0};
}

double rowOf(const std::array<double, 4>& values, double sw) {
    const double at = std::clamp((sw - 0.2) / 0.2, 0.0, 3.0);
    const auto low = static_cast<std::size_t>(std::min(at, 2.0));
    return values[low] + (at - static_cast<double>(low)) * (values[low + 1] - values[low]);
}

double waterMobility(double sw) {
    return rowOf({0.0, 0.05, 0.2, 0.45}, sw) / 0.5;
}
double oilMobility(double sw) {
    return rowOf({0.9, 0.5, 0.2, 0.0}, sw) / 2.0;
}

TEST(TransferRate, WithoutATotalIsWaterAgainstOilWithTheMobilitiesOfTheirSides) {
    const FluidTables tables = sample::waterAndOil(0.0);
    const TransferPair pair = pairOf(tables, 7.0, 0.0);
    // Water comes out of the fractures at 0.7, oil out of the matrix at 0.35; shares of the height 5/6 and
    // 1/4.
    const double head = 5.0 * (5.0 / 6.0 - 0.25);
    const double lw = waterMobility(0.7), lo = oilMobility(0.35);
    const ConservedAmounts rate = transferRate(tables, pair, water(0.7), water(0.35));
    EXPECT_NEAR(rate.water, -7.0 * lw * lo / (lw + lo) * head, 1e-12);
    EXPECT_NEAR(rate.oil, 7.0 * lw * lo / (lw + lo) * head, 1e-12);
}

/// Flows of the phases at a difference d of pressures, each with the mobility of where it comes from.
std::array<double, 3> flowsAt(double d, const std::array<double, 3>& h, const std::array<double, 3>& fracture,
                              const std::array<double, 3>& matrix) {
    std::array<double, 3> flow{};
    for (std::size_t p = 0; p < 3; ++p) flow[p] = (d + h[p]) * (d + h[p] > 0.0 ? matrix[p] : fracture[p]);
    return flow;
}

TEST(TransferRate, OfThreePhasesIsTheOneThatBisectionFinds) {
    FluidTables tables = samples::lightOil();
    tables.regions[0].Pcow = {12.0, 6.0, 2.0, 0.0};
    tables.regions[0].Pcog = {0.0, 0.5, 2.0, 6.0};
    tables.PcowSpan = 12.0;
    tables.PcogSpan = 6.0;
    std::mt19937 random(11);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    for (int n = 0; n < 200; ++n) {
        TransferPair pair = pairOf(tables, 3.0, 20.0 * (unit(random) - 0.5));
        pair.fracture.fullGas = pair.matrix.fullGas = 8.0;
        std::array<PhaseState, 2> state{};
        std::array<std::array<double, 3>, 2> mobility{}, added{};
        const std::array<const PairSide*, 2> sides = {&pair.fracture, &pair.matrix};
        for (std::size_t s = 0; s < 2; ++s) {
            state[s].Sw = 0.25 + 0.3 * unit(random);
            state[s].Sg = 0.3 * unit(random);
            state[s].So = 1.0 - state[s].Sw - state[s].Sg;
            const RelPerms kr = relPermsAtCell(tables, 1, 1, state[s].Sw, state[s].Sg);
            mobility[s] = {kr.w / 0.5, kr.o / 2.0, kr.g / 0.02};
            added[s] = {5.0 * shareAt(sides[s]->waterShare, state[s].Sw) - PcowFn(tables, state[s].Sw, 1),
                        0.0, 8.0 * shareAt(sides[s]->gasShare, state[s].Sg) + PcogFn(tables, state[s].Sg, 1)};
        }
        std::array<double, 3> h{};
        for (std::size_t p = 0; p < 3; ++p) h[p] = added[1][p] - added[0][p];
        double low = -1e6, high = 1e6;
        for (int k = 0; k < 200; ++k) {
            const double middle = 0.5 * (low + high);
            const std::array<double, 3> flow = flowsAt(middle, h, mobility[0], mobility[1]);
            (3.0 * (flow[0] + flow[1] + flow[2]) < pair.total ? low : high) = middle;
        }
        const std::array<double, 3> flow = flowsAt(0.5 * (low + high), h, mobility[0], mobility[1]);
        const ConservedAmounts rate = transferRate(tables, pair, state[0], state[1]);
        EXPECT_NEAR(rate.water, 3.0 * flow[0], 1e-6) << n;
        EXPECT_NEAR(rate.oil, 3.0 * flow[1], 1e-6) << n;
        EXPECT_NEAR(rate.gas, 3.0 * flow[2], 1e-6) << n;
    }
}

TEST(TransferRate, WithoutAMobilePhaseTakesTheGiverAsItStands) {
    FluidTables tables = sample::waterAndOil(0.0);
    tables.regions[0].Krw = tables.regions[0].Krow = {0.0, 0.0, 0.0, 0.0};
    const ConservedAmounts rate = transferRate(tables, pairOf(tables, 2.0, 10.0), water(0.7), water(0.4));
    EXPECT_NEAR(rate.water, 4.0, 1e-12);
    EXPECT_NEAR(rate.oil, 6.0, 1e-12);
}

/// Water of the matrix behind so many days without any flow: the midpoint rule of the exchange in short
/// steps.
double matrixWaterByItsEquation(double conductance, double days, double Sm, double Sf) {
    constexpr int Steps = 20000;
    const double dt = days / Steps;
    const auto rate = [&](double m, double f) {
        const double lw = waterMobility(f), lo = oilMobility(m);
        return conductance * lw * lo / (lw + lo) * 5.0 * (f - m) / 0.6;
    };
    for (int n = 0; n < Steps; ++n) {
        const double half = 0.5 * dt * rate(Sm, Sf);
        const double moved = dt * rate(Sm + half / 100.0, Sf - half / 30.0);
        Sm += moved / 100.0;
        Sf -= moved / 30.0;
    }
    return Sm;
}

TEST(EmptyPair, ExchangesWaterAndOilAsTheirEquationAsks) {
    const FluidTables tables = sample::waterAndOil(0.0);
    const TransferPair pair = pairOf(tables, 0.4, 0.0);
    const auto behind = [&](double days) {
        const PairOutflow out = emptyPair(tables, pair, {}, days, filled(30.0, 0.78), filled(100.0, 0.25));
        return 0.25 - days * out.transferred.water / 100.0;
    };
    for (const double days : {1.0, 10.0, 100.0}) {
        const double exact = matrixWaterByItsEquation(0.4, days, 0.25, 0.78);
        EXPECT_NEAR(behind(days), exact, 1e-3) << days;
        EXPECT_GT(exact, 0.25 + 1e-3);
    }
}

TEST(EmptyPair, EndsWhereBothSidesAreFilledAlikeInAnyStep) {
    const FluidTables tables = sample::waterAndOil(0.0);
    for (const double conductance : {10.0, 1e5, 1e12}) {
        const TransferPair pair = pairOf(tables, conductance, 0.0);
        const PairOutflow out = emptyPair(tables, pair, {}, 1e4, filled(30.0, 0.7), filled(100.0, 0.3));
        const double end = (0.7 * 30.0 + 0.3 * 100.0) / 130.0;
        EXPECT_NEAR(0.3 - 1e4 * out.transferred.water / 100.0, end, 1e-4) << conductance;
    }
}

TEST(EmptyPair, WithoutAnExchangeFollowsTheExponentialOfALinearFraction) {
    // dS/dt = q (1 - S)/V over one and over a hundred pore volumes.
    const FluidTables tables = samples::sharesFlow();
    TransferPair pair{sideOf(1, 100.0), sideOf(2, 100.0), 0.0, 0.0};
    pair.fracture.fluid.MuW = pair.fracture.fluid.MuO = 1.0;
    TankFlows flows;
    flows.inflow.water = 10.0;
    flows.rest = 10.0;
    for (const double volumes : {1.0, 100.0}) {
        const PairOutflow out =
            emptyPair(tables, pair, flows, 10.0 * volumes, {0.0, 100.0, 0.0}, {0.0, 100.0, 0.0});
        EXPECT_NEAR(out.outflow.own.water, 1.0 - (1.0 - std::exp(-volumes)) / volumes, 2e-3) << volumes;
    }
}

/// A flow out of the fractures along which gravity drives water, or against it.
std::vector<BuoyantFlow> buoyantFlow(double flow, double pull) {
    std::vector<BuoyantFlow> faces(1);
    faces[0].cell = 1;
    faces[0].flow = flow;
    faces[0].pull = pull;
    return faces;
}

TEST(EmptyPair, WithoutAGasPhaseIsThePairOfThreeComponentsThatHoldsNoGas) {
    FluidTables live = samples::lightOil();
    live.regions[0].Pcow = {12.0, 6.0, 2.0, 0.0};
    live.PcowSpan = 12.0;
    FluidTables liquid = live;
    liquid.hasGas = false;
    std::mt19937 random(5);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    for (int n = 0; n < 200; ++n) {
        const TransferPair pair =
            pairOf(live, std::pow(10.0, 6.0 * unit(random) - 3.0), 4.0 * (unit(random) - 0.5));
        TankFlows flows;
        flows.inflow.water = 8.0 * unit(random);
        flows.inflow.oil = 2.0 + 3.0 * unit(random);
        flows.rest = flows.inflow.water + flows.inflow.oil + pair.total;
        const ConservedAmounts fracture = filled(30.0, 0.2 + 0.5 * unit(random));
        const ConservedAmounts matrix = filled(100.0, 0.2 + 0.5 * unit(random));
        const double pull = n % 3 == 0 ? 0.0 : 4.0 * (unit(random) - 0.5);
        std::vector<BuoyantFlow> one = buoyantFlow(flows.rest, pull), other = one;
        const double days = 10.0 * unit(random);
        const PairOutflow two = emptyPair(liquid, pair, flows, days, fracture, matrix, one);
        const PairOutflow three = emptyPair(live, pair, flows, days, fracture, matrix, other);
        EXPECT_NEAR(two.outflow.own.water, three.outflow.own.water, 1e-5) << n;
        EXPECT_NEAR(two.outflow.own.oil, three.outflow.own.oil, 1e-5) << n;
        EXPECT_NEAR(days * two.transferred.water, days * three.transferred.water, 1e-4) << n;
        EXPECT_NEAR(days * two.transferred.oil, days * three.transferred.oil, 1e-4) << n;
        EXPECT_NEAR(one[0].own, other[0].own, 1e-5) << n;
    }
}

TEST(EmptyPair, KeepsAmountsAndAsksForNoneThatIsNotThere) {
    std::mt19937 random(3);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    const FluidTables liquid = sample::waterAndOil(0.0), live = samples::lightOil();
    for (int n = 0; n < 300; ++n) {
        const FluidTables& tables = n % 2 == 0 ? liquid : live;
        TransferPair pair =
            pairOf(tables, std::pow(10.0, 12.0 * unit(random) - 4.0), 4.0 * (unit(random) - 0.5));
        pair.fracture.fluid.saturatedRs = pair.matrix.fluid.saturatedRs = 0.5;
        const auto start = [&](double pores) {
            ConservedAmounts held = filled(pores, 0.2 + 0.6 * unit(random));
            if (tables.hasGas) held.gas = held.oil * unit(random);
            return held;
        };
        const ConservedAmounts fracture = start(30.0), matrix = start(100.0);
        TankFlows flows;
        flows.inflow.water = 8.0 * unit(random);
        flows.inflow.oil = 3.0 * unit(random);
        flows.rest = std::max(0.0, volumeOf(pair.fracture.fluid, flows.inflow) + pair.total);
        const double days = 30.0 * unit(random);
        const PairOutflow out = emptyPair(tables, pair, flows, days, fracture, matrix);
        const ConservedAmounts left = {
            fracture.water + days * (flows.inflow.water + out.transferred.water -
                                     flows.rest * out.outflow.own.water * out.outflow.given.water),
            fracture.oil + days * (flows.inflow.oil + out.transferred.oil -
                                   flows.rest * out.outflow.own.oil * out.outflow.given.oil),
            fracture.gas + days * (flows.inflow.gas + out.transferred.gas -
                                   flows.rest * out.outflow.own.gas * out.outflow.given.gas)};
        for (const double amount :
             {left.water, left.oil, left.gas, matrix.water - days * out.transferred.water,
              matrix.oil - days * out.transferred.oil, matrix.gas - days * out.transferred.gas})
            EXPECT_GE(amount, -1e-9) << n;
        EXPECT_LE(out.outflow.deficit, 2e-3 * days * flows.rest + 1e-6) << n;
    }
}

}  // namespace
}  // namespace kvr
