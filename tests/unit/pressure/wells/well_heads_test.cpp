#include "pressure/wells/well_heads.hpp"

#include "pressure/wells/well_rates.hpp"
#include "unit/fluid/table_samples.hpp"
#include "unit/pressure/well_samples.hpp"

#include <cmath>
#include <gtest/gtest.h>

namespace kvr {
namespace {

using sample::expectNear;
using sample::OneWell;

/// Heads of a well whose first cell's centre lies `depth` below its datum.
void headsFrom(double depth, OneWell& run) {
    run.well().datumDepth = 5000.0;
    for (CellId c = 1; c <= run.grid.NCELLS; ++c) run.grid.CellCentre(c, 3) = 5000.0 + depth + 20.0 * (c - 1);
    WellHead(run.grid, sample::columnConnections(run.grid.NCELLS, 20.0), run.tables, run.state, run.wells);
}

/// Formation factor of water 1 and of dead oil 1.25, no compressibility.
FluidTables oilAndWater() {
    FluidTables tables = samples::constantFluids();
    tables.OilFvf = {1.25, 1.25};
    tables.oilDensity = 50.0;
    tables.waterDensity = 62.4;
    tables.regions.push_back(samples::fourRowRegion());
    finishTables(tables);
    return tables;
}

void setRates(double oil, double water, double gas, WellConnection& connection) {
    connection.ConnQo = oil;
    connection.ConnQw = water;
    connection.ConnQg = gas;
}

TEST(WellHead, AddsTheWeightOfTheInjectedPhase) {
    OneWell run(sample::well("inj", "bhp", 2), 2);
    run.state.RhoW.assign(2, 62.4);
    run.state.RhoO.assign(2, 1.0);
    WellHead(run.grid, sample::columnConnections(2, 20.0), run.tables, run.state, run.wells);
    EXPECT_EQ(run.well().connections[0].ConnHead, 0.0);
    expectNear(run.well().connections[1].ConnHead, 8.66666666666667);
}

TEST(WellHead, WeighsAProducersPhasesByMobility) {
    OneWell run(sample::well("prd", "bhp", 2), 2);
    run.state.LambdaO[1] = 0.5;
    run.state.LambdaW[1] = 0.2;
    run.state.RhoO[1] = 40.0;
    run.state.RhoW[1] = 62.0;
    run.state.LambdaO[2] = 0.3;
    run.state.LambdaW[2] = 0.4;
    run.state.RhoO[2] = 41.0;
    run.state.RhoW[2] = 62.0;
    WellHead(run.grid, sample::columnConnections(2, 20.0), run.tables, run.state, run.wells);
    expectNear(run.well().connections[1].ConnHead, 6.894841270);
}

TEST(WellHead, RunsUpwardsWithTheSignOfTheConnection) {
    OneWell run(sample::well("inj", "bhp", 2), 2);
    std::swap(run.well().connections[0], run.well().connections[1]);
    run.state.RhoW.assign(2, 62.4);
    WellHead(run.grid, sample::columnConnections(2, 20.0), run.tables, run.state, run.wells);
    expectNear(run.well().connections[1].ConnHead, -8.66666666666667);
}

TEST(WellHead, TakesHalfOfBothSizesBetweenCellsThatDoNotTouch) {
    OneWell run(sample::well("inj", "bhp", 3), 3);
    run.well().connections.erase(run.well().connections.begin() + 1);
    run.grid.DZ[3] = 40.0;
    run.state.RhoW.assign(3, 72.0);
    WellHead(run.grid, sample::columnConnections(3, 20.0), run.tables, run.state, run.wells);
    expectNear(run.well().connections[1].ConnHead, 72.0 * 30.0 / 144.0);
}

TEST(WellHead, KeepsTheBoresFluidAcrossAnInactiveCell) {
    OneWell run(sample::well("inj", "bhp", 3), 3);
    run.grid.Active[2] = 0;
    run.state.RhoW.assign(3, 72.0);
    run.state.RhoW[2] = 0.0;
    WellHead(run.grid, sample::columnConnections(3, 20.0), run.tables, run.state, run.wells);
    expectNear(run.well().connections[2].ConnHead, 72.0 * 40.0 / 144.0);
}

TEST(WellHead, OfAnInjectorWithADatumHasItsWaterAbove) {
    OneWell run(sample::well("inj", "bhp", 2), 2);
    run.tables = oilAndWater();
    run.state.RhoW.assign(2, 62.4);
    headsFrom(720.0, run);
    expectNear(run.well().connections[0].ConnHead, 312.0);  // 62.4 * 720 / 144
    expectNear(run.well().connections[1].ConnHead, 312.0 + 62.4 * 20.0 / 144.0);
    headsFrom(-144.0, run);
    expectNear(run.well().connections[0].ConnHead, -62.4);
}

TEST(WellHead, OfAProducerWithADatumHasAllThatItGivesAbove) {
    OneWell run(sample::well("prd", "bhp", 2), 2);
    run.tables = oilAndWater();
    setRates(-200.0, -50.0, 0.0, run.well().connections[0]);
    setRates(-100.0, -100.0, 0.0, run.well().connections[1]);
    headsFrom(288.0, run);
    // 300 stb of oil are 375 rb; (300 * 50 + 150 * 62.4) / 525 = 46.4
    expectNear(run.well().connections[0].ConnHead, 92.8);
}

TEST(WellHead, OfAProducerThatHasGivenNothingYetGoesByMobility) {
    OneWell run(sample::well("prd", "bhp", 2), 2);
    run.tables = oilAndWater();
    run.state.LambdaO.assign(2, 0.3);
    run.state.LambdaW.assign(2, 0.1);
    run.state.Bo.assign(2, 1.25);
    headsFrom(144.0, run);
    // 0.24 of oil against 0.1 of water at the surface, 0.3 and 0.1 in the bore
    expectNear(run.well().connections[0].ConnHead, (0.24 * 50.0 + 0.1 * 62.4) / 0.4);
}

TEST(WellHead, WithoutADatumStartsAtTheFirstConnection) {
    OneWell run(sample::well("inj", "bhp", 1), 1);
    run.tables = oilAndWater();
    run.grid.CellCentre(1, 3) = 5000.0;
    WellHead(run.grid, sample::columnConnections(1, 20.0), run.tables, run.state, run.wells);
    EXPECT_EQ(run.well().connections[0].ConnHead, 0.0);
}

TEST(RestingBhp, StandsAtTheDatum) {
    OneWell run(sample::well("inj", "bhp", 2), 2);
    run.tables = oilAndWater();
    run.state.RhoW.assign(2, 62.4);
    headsFrom(720.0, run);
    expectNear(restingBhp(run.state, run.well()), 3000.0 - 312.0);
}

TEST(BoreMixtureDensity, FreesTheGasThatTheOilDoesNotDissolve) {
    // A row of the table, 2014.7 psia: Rs 0.636 Mscf/stb, Bo 1.435 rb/stb, Bg 1.614 rb/Mscf.
    OneWell run(sample::well("prd", "bhp", 1), 1);
    run.tables = samples::lightOil();
    const double oil = 49.1 * CubicFeetPerBarrel;  // lb/stb
    setRates(-100.0, 0.0, -100.0 * 0.936 / GasRatioFactor, run.well().connections[0]);
    expectNear(boreMixtureDensity(run.tables, run.state, run.well(), 2014.7),
               (oil + 936.0 * 0.0533) / ((1.435 + 0.3 * 1.614) * CubicFeetPerBarrel));
    // All that it has dissolved stays in it.
    setRates(-100.0, 0.0, -100.0 * 0.636 / GasRatioFactor, run.well().connections[0]);
    expectNear(boreMixtureDensity(run.tables, run.state, run.well(), 2014.7),
               (oil + 636.0 * 0.0533) / (1.435 * CubicFeetPerBarrel));
}

TEST(BoreMixtureDensity, OfAGasInjectorIsThatOfItsGas) {
    OneWell run(sample::well("inj", "bhp", 1), 1);
    run.well().InjectFluid = "gas";
    run.tables = samples::lightOil();
    run.tables.gasDensity = 0.06;
    expectNear(boreMixtureDensity(run.tables, run.state, run.well(), 3014.7), 0.06 / (1.08 * GasRatioFactor));
}

}  // namespace
}  // namespace kvr
