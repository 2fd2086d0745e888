#include "fluid/state_recovery.hpp"

#include "fluid/black_oil.hpp"
#include "unit/fluid/table_samples.hpp"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace kvr {
namespace {

/// Rs = p/10 on the saturated curve, so that 1000 psia dissolve 100.
FluidTables straightOil() {
    FluidTables tables;
    tables.hasGas = true;
    tables.OilRs = {0, 500, 500};
    tables.OilPressure = {0, 5000, 6000};
    tables.OilFvf = {1.0, 1.5, 1.45};
    tables.OilViscosity = {1.0, 1.0, 1.0};
    tables.UnderRows = 1;
    tables.GasPressure = {0, 5000};
    tables.GasFvf = {0.01, 0.01};
    tables.GasViscosity = {0.02, 0.02};
    tables.regions.push_back(samples::fourRowRegion());
    finishTables(tables);
    return tables;
}

constexpr RecoveryFactors Factors{1000.0, 1.0, 1.5, 0.01};

TEST(RecoverState, KeepsSaturatedOilWhereGasIsLeftOver) {
    const PhaseState state = recoverState(straightOil(), 1, false, Factors, {0.3, 0.4, 60.0});
    EXPECT_NEAR(state.So, 0.6 / 1.1, 1e-14);
    EXPECT_NEAR(state.Sg, 0.2 / 1.1, 1e-14);
    EXPECT_NEAR(state.Sw, 0.3 / 1.1, 1e-14);
    EXPECT_DOUBLE_EQ(state.Rs, 100.0);
    EXPECT_EQ(state.Pb, 1000.0);
}

TEST(RecoverState, DissolvesAllTheGasThatTheOilTakes) {
    const PhaseState state = recoverState(straightOil(), 1, false, Factors, {0.3, 0.4, 30.0});
    EXPECT_EQ(state.Sg, 0.0);
    EXPECT_NEAR(state.Rs, 75.0, 1e-12);
    EXPECT_NEAR(state.Pb, 750.0, 1e-10);
    EXPECT_NEAR(state.So, 0.6 / 0.9, 1e-14);
}

TEST(RecoverState, LeavesNoGasDissolvedWithoutOil) {
    const PhaseState state = recoverState(straightOil(), 1, false, Factors, {0.3, -1e-3, 60.0});
    EXPECT_EQ(state.So, 0.0);
    EXPECT_EQ(state.Rs, 0.0);
    EXPECT_EQ(state.Pb, 0.0);
    EXPECT_NEAR(state.Sg, 0.6 / 0.9, 1e-14);
}

TEST(RecoverState, HoldsTheEndPointsWhenAsked) {
    const PhaseState state = recoverState(straightOil(), 1, true, Factors, {0.1, 0.5, 0.0});
    EXPECT_NEAR(state.Sw, 0.2 / 0.95, 1e-14);
    EXPECT_NEAR(state.So, 0.75 / 0.95, 1e-14);
}

TEST(RecoverState, WithoutGasOnlyScalesWaterAndOil) {
    FluidTables tables = straightOil();
    tables.hasGas = false;
    const PhaseState state = recoverState(tables, 1, true, Factors, {0.1, 0.5, 60.0});
    EXPECT_NEAR(state.Sw, 0.1 / 0.85, 1e-14);
    EXPECT_NEAR(state.So, 0.75 / 0.85, 1e-14);
    EXPECT_EQ(state.Sg, 0.0);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(std::isnan(recoverState(tables, 1, false, Factors, {nan, 0.5, 0.0}).Sw));
}

TEST(RecoverState, IsTheSameWithTheSaturatedRsLookedUpBefore) {
    const FluidTables tables = straightOil();
    const PhaseState a = recoverState(tables, 1, true, Factors, {0.3, 0.4, 47.0});
    const PhaseState b = recoverState(tables, tables.regions.front(), true, Factors,
                                      SolutionRs(tables, Factors.pressure), {0.3, 0.4, 47.0});
    EXPECT_EQ(a.Sg, b.Sg);
    EXPECT_EQ(a.Rs, b.Rs);
    EXPECT_EQ(a.Pb, b.Pb);
}

TEST(RecoverButBubblePoint, LeavesOnlyTheSearchOfAnUndersaturatedStateOpen) {
    const FluidTables tables = straightOil();
    const auto open = [&](const ConservedAmounts& amounts) {
        return recoverButBubblePoint(tables, tables.regions[0], false, Factors, 100.0, amounts);
    };
    PhaseState dissolved = open({0.3, 0.4, 30.0});
    EXPECT_EQ(dissolved.Pb, OpenBubblePoint);
    EXPECT_NEAR(dissolved.Rs, 75.0, 1e-12);
    completeBubblePoint(tables, Factors.pressure, dissolved.Rs, dissolved.Pb);
    EXPECT_NEAR(dissolved.Pb, 750.0, 1e-10);
    PhaseState saturated = open({0.3, 0.4, 60.0});
    completeBubblePoint(tables, Factors.pressure, saturated.Rs, saturated.Pb);
    EXPECT_EQ(saturated.Pb, 1000.0);
    EXPECT_EQ(open({0.3, -1e-3, 60.0}).Pb, 0.0);
}

TEST(LimitSaturations, ClampsAndScalesToOne) {
    const SaturationTable table = straightOil().regions.front();
    PhaseState state;
    state.Sw = 0.5;
    state.So = 0.5;
    state.Sg = 0.2;
    limitSaturations(table, false, state);
    EXPECT_NEAR(state.Sw, 0.5 / 1.2, 1e-14);
    EXPECT_NEAR(state.Sg, 0.2 / 1.2, 1e-14);
    state = {};
    limitSaturations(table, false, state);
    EXPECT_EQ(state.Sw, 0.0);
    state.Sw = 1.3;
    limitSaturations(table, false, state);
    EXPECT_EQ(state.Sw, 1.0);
}

}  // namespace
}  // namespace kvr
