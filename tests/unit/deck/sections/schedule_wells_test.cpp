#include "deck/sections/schedule_wells.hpp"

#include "base/constants.hpp"
#include "fluid/black_oil.hpp"
#include "fluid/table_checks.hpp"
#include "unit/deck/sections/schedule_bench.hpp"
#include "unit/fluid/table_samples.hpp"

#include <cmath>
#include <gtest/gtest.h>

namespace kvr {
namespace {

TEST(Welspecs, NamesTheWellsOfTheStep) {
    ScheduleBench run(TwoWells);
    run.read();
    ASSERT_EQ(run.step().wells.size(), 2U);
    EXPECT_EQ(run.well(0).name, "P1");
    EXPECT_EQ(run.well(0).headI, 10);
    EXPECT_EQ(run.well(0).refDepth, 8400.0);
    EXPECT_EQ(run.well(1).preferredPhase, "OIL");
    EXPECT_EQ(run.well(1).place.lineNumber, 3);
    EXPECT_FALSE(run.well(0).hasControl);
    EXPECT_TRUE(run.deck.printed("READ -> WELSPECS\n-> Num of Well = 2\n"));
}

TEST(Welspecs, AcceptsUnquotedNamesCommentsAndItemsBeyondTheSixth) {
    ScheduleBench run(
        "WELSPECS\n-- heads\nP1 G1 3 4 1* OIL 60 STD SHUT /\n\n-- more\nP2 G1 5 6 /\n/\nTSTEP\n1 /\n");
    run.read();
    ASSERT_EQ(run.step().wells.size(), 2U);
    EXPECT_EQ(run.well(1).headJ, 6);
    EXPECT_EQ(run.well(0).refDepth, NoDatum);
    EXPECT_EQ(run.well(1).refDepth, NoDatum);
    EXPECT_EQ(run.schedule.stepLength.size(), 1U);
}

TEST(Welspecs, AgainForAWellMovesItsHead) {
    ScheduleBench run(TwoWells + "WELSPECS\nP1 G2 7 8 /\n/\n");
    run.read();
    ASSERT_EQ(run.step().wells.size(), 2U);
    EXPECT_EQ(run.well(0).headI, 7);
    EXPECT_EQ(run.step().wellCount, 3) << "messages count rows";
}

TEST(Compdat, LeavesDefaultedItemsToTheirFixedValues) {
    ScheduleBench run(
        TwoWells +
        "COMPDAT\nP1 10 10 3 3 OPEN 1* 1* 0.5 /\n'P2' 2* 1 2 'SHUT' 1* 12.5 0.25 900 3 1* x /\n/\n");
    run.read();
    ASSERT_EQ(run.step().completions.size(), 2U);
    const ScheduleCompletion& first = run.step().completions[0];
    EXPECT_EQ(first.transFactor, -1.0);
    EXPECT_EQ(first.diameter, 0.5);
    EXPECT_EQ(first.kh, -1.0F);
    EXPECT_EQ(first.skin, 0.0F);
    EXPECT_EQ(first.direction, 'Z');
    EXPECT_EQ(first.status, "OPEN");
    const ScheduleCompletion& second = run.step().completions[1];
    EXPECT_EQ(second.i, 0);
    EXPECT_EQ(second.status, "SHUT");
    EXPECT_EQ(second.transFactor, 12.5);
    EXPECT_EQ(second.kh, 900.0F);
    EXPECT_EQ(second.skin, 3.0F);
    EXPECT_EQ(second.direction, 'X');
    EXPECT_EQ(second.place.lineNumber, 7);
    EXPECT_EQ(second.place.fileName, "TEST.DATA");
    EXPECT_TRUE(run.deck.printed("READ -> COMPDAT\n-> Num of COMPDAT = 2\n"));
}

TEST(Compdat, AgainForTheSameCellsReplacesTheRow) {
    ScheduleBench run(TwoWells + "COMPDAT\nP1 2* 1 2 OPEN 2* 0.5 /\nP1 2* 1 2 SHUT 2* 0.5 /\n/\n");
    run.read();
    ASSERT_EQ(run.step().completions.size(), 1U);
    EXPECT_EQ(run.step().completions[0].status, "SHUT");
    EXPECT_EQ(run.step().completionCount, 2);
}

TEST(Compdat, SkipsAWellThatIsNotKnown) {
    ScheduleBench run(TwoWells + "COMPDAT\nP9 2* 1 2 OPEN 2* 0.5 /\n/\n");
    run.read();
    EXPECT_TRUE(run.step().completions.empty());
    EXPECT_TRUE(run.deck.printed("WARNING :: UNKNOWN WELL, ROW SKIPPED :: P9\nFile TEST.DATA, line 6"));
}

TEST(Compdat, TakesMetricFactorsIntoInternalUnits) {
    ScheduleBench run(TwoWells + "COMPDAT\nP1 2* 1 2 OPEN 1* 10 0.2 /\n/\n");
    run.deck.units = metricUnits();
    run.read();
    EXPECT_NEAR(run.step().completions[0].transFactor, 10.0 * 6.289811 / 14.50377, 1e-12);
    EXPECT_NEAR(run.step().completions[0].diameter, 0.2 * 3.28084, 1e-12);
}

TEST(Wconprod, TakesRatesAndLimit) {
    ScheduleBench run(TwoWells + "WCONPROD\n'P1' 'OPEN' 'ORAT' 20000 4* 1000 /\nP2 OPEN BHP 5* 3500 /\n/\n");
    run.read();
    EXPECT_EQ(run.well(0).prodOil, 20000.0);
    EXPECT_EQ(run.well(0).prodBhp, 1000.0);
    EXPECT_EQ(run.well(0).control, "ORAT");
    EXPECT_TRUE(run.well(0).hasControl);
    EXPECT_EQ(run.well(1).prodBhp, 3500.0);
    EXPECT_EQ(run.well(1).prodOil, 0.0);
    EXPECT_TRUE(run.deck.printed("READ -> WCONPROD\n-> Num of Producer = 2\n"));
}

TEST(Wconprod, TakesGasIntoSurfaceBarrels) {
    ScheduleBench run(TwoWells + "WCONPROD\nP1 OPEN GRAT 2* 1 /\n/\n");
    run.read();
    EXPECT_NEAR(run.well(0).prodGas, 178.1076173, 178.0 * 1e-8);
    EXPECT_EQ(run.well(0).prodBhp, 14.6);
}

TEST(Wconprod, ReachesEveryWellOfATemplate) {
    ScheduleBench run(TwoWells + "WELSPECS\nQ1 G 1 1 /\n/\nWCONPROD\n'P*' OPEN ORAT 150 /\n/\n");
    run.read();
    EXPECT_EQ(run.well(0).prodOil, 150.0);
    EXPECT_EQ(run.well(1).prodOil, 150.0);
    EXPECT_FALSE(run.well(2).hasControl);
    EXPECT_EQ(run.step().producerCount, 1);
}

TEST(Wconprod, DoesNotKeepItemsOfAnEarlierRow) {
    ScheduleBench run(TwoWells + "WCONPROD\nP1 OPEN ORAT 150 4* 900 /\nP1 OPEN LRAT 3* 70 /\n/\n");
    run.read();
    EXPECT_EQ(run.well(0).prodOil, 0.0);
    EXPECT_EQ(run.well(0).prodLiquid, 70.0);
    EXPECT_EQ(run.well(0).prodBhp, 14.6);
}

TEST(Wconprod, ReplacesARateThatCannotBe) {
    ScheduleBench run(TwoWells + "WCONPROD\nP1 OPEN ORAT -5 /\nP2 OPEN ORAT 1e300 /\n/\n");
    run.read();
    EXPECT_EQ(run.well(0).prodOil, 0.0);
    EXPECT_EQ(run.well(1).prodOil, 0.0);
    EXPECT_TRUE(run.deck.printed("WARNING :: RATE -5 IS OUT OF RANGE, SET TO 0\nFile TEST.DATA, line 6"));
}

TEST(Wconinje, TakesRateAndLimitWithItsOwnSpelling) {
    ScheduleBench run(TwoWells + "WCONINJE\nP1 WATER OPEN RATE 400 1* 9014 /\nP2 GAS 2* 1 /\n/\n");
    run.read();
    EXPECT_TRUE(run.well(0).isInjector);
    EXPECT_EQ(run.well(0).injRate, 400.0);
    EXPECT_EQ(run.well(0).injBhp, 9014.0);
    EXPECT_EQ(run.well(1).control, "RATE");
    EXPECT_EQ(run.well(1).status, "OPEN");
    EXPECT_NEAR(run.well(1).injRate, 178.1076173, 178.0 * 1e-8);
    EXPECT_EQ(run.well(1).injBhp, 100000.0);
    EXPECT_TRUE(run.deck.printed("READ -> WCNINJE\n-> Num of Injector = 2\n"));
}

/// Constant properties between 1000 and 5000 psia: Bo 1.5, Rs 0.9 Mscf/stb, Bg 1.08 rb/Mscf.
FluidTables constantOil() {
    FluidTables tables;
    samples::fillOdehPvt(tables);
    tables.OilPressure = {1000.0, 3000.0, 5000.0, 6000.0};
    tables.OilRs = {0.5 / GasRatioFactor, 0.9 / GasRatioFactor, 1.3 / GasRatioFactor, 1.3 / GasRatioFactor};
    tables.OilFvf = {1.4, 1.5, 1.6, 1.59};
    tables.OilViscosity = {1.0, 1.0, 1.0, 1.0};
    tables.UnderRows = 1;
    tables.GasPressure = {1000.0, 3000.0, 5000.0};
    tables.GasFvf = {3.0 * GasRatioFactor, 1.08 * GasRatioFactor, 0.7 * GasRatioFactor};
    tables.GasViscosity = {0.02, 0.02, 0.02};
    tables.waterFvf = 1.03;
    tables.waterCompressibility = 3e-6;
    tables.referencePressureWater = 4000.0;
    tables.regions.push_back(samples::fourRowRegion());
    finishTables(tables);
    return tables;
}

TEST(Wconhist, FillsTheProductionItemsAndTheReservoirRate) {
    ScheduleBench run(TwoWells + "WCONHIST\nP1 OPEN ORAT 1000 200 1500 3* 3000 /\n/\n");
    run.tables = constantOil();
    run.read();
    EXPECT_EQ(run.well(0).histOil, 1000.0);
    EXPECT_EQ(run.well(0).histBhp, 3000.0);
    EXPECT_EQ(run.well(0).prodBhp, 3000.0);
    EXPECT_EQ(run.well(0).prodLiquid, 1200.0);
    EXPECT_NEAR(run.well(0).prodResv, 2678.61893, 2678.0 * 1e-8);
    EXPECT_TRUE(run.options.useHistoryControls);
    EXPECT_TRUE(run.deck.printed("READ -> WCONHIST\n-> Num of Producer = 1\n"));
}

TEST(Wconhist, TakesTheDatumPressureWhereNoBottomHolePressureWasObserved) {
    const std::string text = TwoWells + "WCONHIST\nP1 OPEN RESV 1000 200 1500 /\n/\n";
    ScheduleBench atDatum(text);
    atDatum.tables = constantOil();
    atDatum.initial.regions[0].datumPressure = 3000.0;
    atDatum.read();
    EXPECT_NEAR(atDatum.well(0).prodResv, 2678.61893, 2678.0 * 1e-8);
    EXPECT_EQ(atDatum.well(0).prodBhp, 14.6) << "no limit comes of it";
    ScheduleBench atSurface(text);
    atSurface.read();
    EXPECT_NEAR(atSurface.well(0).prodResv, 1000.0 + 1500.0 * 1000.0 / CubicFeetPerBarrel, 1e-6)
        << "without tables every factor is 1 and water has none";
}

TEST(Wconinjh, IsARateInjectorWithoutALimit) {
    ScheduleBench run(TwoWells + "WCONINJH\nP2 WATER OPEN 350 2800 /\n/\n");
    run.read();
    EXPECT_EQ(run.well(1).injRate, 350.0);
    EXPECT_EQ(run.well(1).histInjRate, 350.0);
    EXPECT_EQ(run.well(1).histInjBhp, 2800.0);
    EXPECT_EQ(run.well(1).injBhp, 100000.0);
    EXPECT_EQ(run.well(1).control, "RATE");
    EXPECT_TRUE(run.options.useHistoryControls);
    EXPECT_TRUE(run.deck.printed("READ -> WCONINJH\n-> Num of Injector = 1\n"));
}

TEST(ReservoirVoidage, IsOilWithTheGasThatItHoldsWaterAndTheFreeGas) {
    FluidTables tables;
    samples::fillOdehPvt(tables);
    finishTables(tables);
    // At 4014.7 psia 100 stb hold 127 of the 227 Mscf: 100 * 1.695 + 10 * 1.03801 + 100 Mscf * 0.811 rb.
    EXPECT_NEAR(reservoirVoidage(tables, 4014.7, 100.0, 10.0, 227.0 / GasRatioFactor), 260.980, 1e-3);
    EXPECT_NEAR(reservoirVoidage(tables, 4014.7, 0.0, 0.0, 100.0 / GasRatioFactor), 81.1, 1e-6);
    // Oil that came with 0.636 Mscf/stb has nothing free and is pressed together above its 2014.7 psia, where
    // it has 1.435.
    EXPECT_LT(reservoirVoidage(tables, 4014.7, 100.0, 0.0, 63.6 / GasRatioFactor), 143.5);
}

TEST(Welspec, DescribesAWholeWell) {
    ScheduleBench run(
        "WELSPEC\nP1 3 4 1 2 0.5 1.5 PRD 200 LRAT /\nI1 1 1 1 2 0.5 0 INJ 300 RATE /\nB1 2 2 1 1 0.5 0 PRD "
        "1500 BHP /\n/\n");
    run.read();
    ASSERT_EQ(run.step().wells.size(), 3U);
    EXPECT_EQ(run.well(0).prodLiquid, 200.0);
    EXPECT_EQ(run.well(0).control, "LRAT");
    EXPECT_TRUE(run.well(1).isInjector);
    EXPECT_EQ(run.well(1).injRate, 300.0);
    EXPECT_EQ(run.well(2).prodBhp, 1500.0);
    EXPECT_EQ(run.step().completions[0].k2, 2);
    EXPECT_EQ(run.step().completions[0].skin, 1.5F);
    EXPECT_TRUE(run.deck.printed("READ -> WELSPEC : Keyword only for KVR\n-> Num of Well = 3\n"));
}

TEST(WellKeywordsDeathTest, StopOnALetterWhereANumberBelongs) {
    EXPECT_EXIT(
        {
            ScheduleBench run(TwoWells + "WCONPROD\nP1 OPEN ORAT many /\n/\n");
            run.deck.speakToStandardError();
            run.read();
        },
        ::testing::ExitedWithCode(1),
        "ERROR: File reading error, code = .*\nReading error, in SCHEDULE Section\nFile TEST.DATA, line 6, "
        "keyword "
        "WCONPROD: \"many\"");
}

}  // namespace
}  // namespace kvr
