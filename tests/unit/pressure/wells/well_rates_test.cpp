#include "pressure/wells/well_rates.hpp"

#include "base/constants.hpp"
#include "unit/pressure/well_samples.hpp"

#include <cmath>
#include <gtest/gtest.h>

namespace kvr {
namespace {

using sample::expectNear;
using sample::OneWell;

void update(OneWell& run) {
    UpdateWellRates(run.units, run.grid, run.tables, run.state, run.wells, run.stage);
}

TEST(ConnectionRates, OfAProducerAreInSurfaceVolumesWithTheDissolvedGas) {
    OneWell run(sample::well("prd", "bhp", 1), 1);
    run.well().connections[0].ConnWI = 10.61592612;
    run.well().Bhp = 2500.0;
    run.state.LambdaO[1] = 1.6;
    run.state.Bo[1] = 1.6;
    run.state.Rs[1] = 1.27 / GasRatioFactor;  // 1.27 Mscf/stb
    update(run);
    const WellConnection& connection = run.well().connections[0];
    expectNear(connection.ConnQo, -5307.96306);
    EXPECT_NEAR(connection.ConnQg, -1200643.6, 0.05);
    expectNear(toMscf(run.units, connection.ConnQg), -5307.96306 * 1.27);
    expectNear(connection.reservoirRate, -500.0 * 10.61592612 * 1.6);
    EXPECT_EQ(run.well().WellQo, connection.ConnQo);
    EXPECT_EQ(run.well().WellQw, 0.0);
}

TEST(ConnectionRates, OfAProducerDoNotFlowBack) {
    OneWell run(sample::well("prd", "bhp", 1), 1);
    run.well().Bhp = 3005.0;
    update(run);
    EXPECT_EQ(run.well().WellQo, 0.0);
    const ConnectionCoefficients c = connectionCoefficients(run.units, run.tables, run.state, 3000.0,
                                                            run.well(), run.well().connections[0]);
    EXPECT_EQ(c.dp, 0.0);
    EXPECT_EQ(c.reservoir, 0.0);
    EXPECT_EQ(c.surfaceOil, 0.0);
}

TEST(ConnectionRates, OfAnInjectorAreZeroOnlyInTheLayerThatWouldFlowBack) {
    OneWell run(sample::well("inj", "bhp", 2), 2);
    run.well().Bhp = 3100.0;
    run.state.Pressure[2] = 3200.0;
    run.state.Bw[1] = 1.25;
    run.state.LambdaW[1] = 0.5;
    update(run);
    EXPECT_NEAR(run.well().connections[0].ConnQw, 100.0 * (1.0 + 0.5) / 1.25, 1e-9);
    EXPECT_EQ(run.well().connections[1].ConnQw, 0.0);
    EXPECT_EQ(run.well().WellQo, 0.0) << "the injected phase takes the total mobility";
}

TEST(ConnectionRates, TakeTheFlowUnitOfTheDeckSystem) {
    OneWell run(sample::well("inj", "bhp", 1), 1);
    run.units = metricUnits();
    run.well().Bhp = 3010.0;
    update(run);
    EXPECT_NEAR(run.well().WellQw, 10.0 * CubicFeetPerBarrel, 1e-9);
}

TEST(ConnectionRates, OfAReservoirRateInjectorUseTheAveragePressure) {
    Well well = sample::well("inj", "resv", 1);
    OneWell run(well, 1);
    run.tables.waterFvf = 1.1;
    run.tables.referencePressureWater = 3000.0;
    run.well().Bhp = 3011.0;
    run.state.Bw[1] = 9.0;
    const ConnectionCoefficients c = connectionCoefficients(run.units, run.tables, run.state, 3000.0,
                                                            run.well(), run.well().connections[0]);
    EXPECT_NEAR(c.surfaceWater, 1.0 / 1.1, 1e-12);
    EXPECT_EQ(rowTerm(run.well(), c), 1.0) << "the row counts reservoir volume";
}

TEST(UpdateWellRates, AveragesPressureOverTheBulkOfActiveCells) {
    OneWell run(sample::well("prd", "bhp", 1), 3);
    run.state.Pressure[1] = 1000.0;
    run.state.Pressure[2] = 3000.0;
    run.state.Pressure[3] = 0.0;
    run.grid.BulkVolume[2] = 3.0;
    run.grid.Active[3] = 0;
    update(run);
    EXPECT_EQ(run.stage.AveragePressure, 2500.0);
}

TEST(UpdateWellRates, GivesAShutWellTheMeanPressureOfItsCells) {
    OneWell run(sample::well("prd", "orat", 2), 2);
    run.well().shut = true;
    run.well().Bhp = 100.0;
    run.state.Pressure[2] = 3100.0;
    update(run);
    EXPECT_EQ(run.well().Bhp, 3050.0);
    EXPECT_EQ(run.well().WellQo, 0.0);
}

TEST(UpdateWellRates, BringsARateWellBackWhenEveryConnectionWouldFlowBack) {
    OneWell run(sample::well("prd", "orat", 2), 2);
    run.well().TargetRate = -100.0;
    run.well().Bhp = 3500.0;
    run.state.Pressure[2] = 3008.0;
    run.well().connections[1].ConnHead = 8.0;
    update(run);
    EXPECT_LT(run.well().Bhp, 3000.0);
    EXPECT_LT(run.well().connections[0].ConnQo, 0.0);
    EXPECT_LT(run.well().connections[1].ConnQo, 0.0);
}

TEST(RowTarget, OfAnOilRateWellAddsTheOtherPhases) {
    Well well = sample::well("prd", "orat", 0);
    well.TargetRate = -1000.0;
    well.WellQo = -1000.0;
    well.WellQw = -200.0;
    well.WellQg = -5000.0;
    EXPECT_DOUBLE_EQ(rowTarget(well), -6200.0);
    well.WellControl = "wrat";
    EXPECT_EQ(rowTarget(well), -1000.0);
    well.WellControl = "resv";
    EXPECT_EQ(rowTarget(well), -1000.0);
}

TEST(RowTarget, ScalesTheOtherPhasesToTheTargetOfTheNamedOne) {
    Well well = sample::well("prd", "orat", 0);
    well.TargetRate = -1000.0;
    well.WellQo = -500.0;
    well.WellQw = -100.0;
    well.WellQg = -2500.0;
    EXPECT_DOUBLE_EQ(rowTarget(well), -6200.0);
    well.WellControl = "lrat";
    EXPECT_DOUBLE_EQ(rowTarget(well), -1000.0 - 2500.0 * 1000.0 / 600.0);
    well.WellControl = "grat";
    EXPECT_DOUBLE_EQ(rowTarget(well), -1000.0 - 600.0 * 1000.0 / 2500.0);
}

TEST(RowTarget, LeavesTheOtherPhasesAsTheyAreWhenTheNamedOneDoesNotFlow) {
    Well well = sample::well("prd", "orat", 0);
    well.TargetRate = -1000.0;
    well.WellQw = -200.0;
    EXPECT_DOUBLE_EQ(rowTarget(well), -1200.0);
}

TEST(RowTarget, OfAnInjectorIsItsTarget) {
    Well well = sample::well("inj", "rate", 0);
    well.TargetRate = 400.0;
    well.WellQw = 123.0;
    EXPECT_EQ(rowTarget(well), 400.0);
}

TEST(RowTarget, IsReachedInOneStepAtFixedFractions) {
    // Linear well: every phase in proportion to the drawdown. One solve of the row must meet the target.
    OneWell run(sample::well("prd", "orat", 1), 1);
    run.state.LambdaG[1] = 3.0;
    run.state.LambdaW[1] = 0.5;
    run.state.Bg[1] = 0.004;
    run.well().TargetRate = -200.0;
    run.well().Bhp = 2990.0;
    update(run);
    const ConnectionCoefficients c =
        connectionCoefficients(run.units, run.tables, run.state, 0.0, run.well(), run.well().connections[0]);
    const double present = rowTerm(run.well(), c) * c.dp;
    run.well().Bhp += (rowTarget(run.well()) - present) / rowTerm(run.well(), c);
    update(run);
    expectNear(run.well().WellQo, -200.0);
}

}  // namespace
}  // namespace kvr
