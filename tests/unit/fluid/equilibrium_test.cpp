#include "fluid/equilibrium.hpp"

#include "fluid/black_oil.hpp"
#include "unit/fluid/column_bench.hpp"

#include <cmath>
#include <cstdio>
#include <gtest/gtest.h>
#include <string>

namespace kvr {
namespace {

TEST(DepthTable, HasTwentyRowsALayerAndOneMore) {
    ColumnBench three(8325, {20, 30, 50});
    three.contacts(8400, 4800, 8450, 8300);
    const InitDepthTable rows = three.rows();
    EXPECT_EQ(rows.Depth.size(), 61U);
    EXPECT_EQ(rows.Depth.front(), 8325.0);
    EXPECT_EQ(rows.Depth.back(), 8425.0);
    EXPECT_NEAR(rows.Depth[1] - rows.Depth[0], 100.0 / 60.0, 1e-9);
    ColumnBench one(8325, {20});
    one.contacts(8400, 4800, 8450, 8300);
    EXPECT_EQ(one.rows().Depth.size(), 21U);
}

TEST(DepthTable, OfAFlatGridHasEqualRows) {
    ColumnBench bench(8000, {0});
    bench.contacts(7900, 3000, 9000, 7000);
    const InitDepthTable rows = bench.rows();
    EXPECT_NEAR(rows.PressureO.front(), 3031.25, 1e-9);
    for (const double p : rows.PressureO) EXPECT_EQ(p, rows.PressureO.front());
    bench.run();
    EXPECT_NEAR(bench.state.Pressure[1], 3031.25, 1e-9);
}

TEST(DepthTable, AddsTheWeightOfEachPhaseFromItsContact) {
    ColumnBench bench(8000, {100});
    bench.useGas();
    bench.contacts(8000, 3000, 8100, 8000);
    const InitDepthTable rows = bench.rows();
    EXPECT_NEAR(rows.PressureO.back(), 3031.25, 1e-8);
    EXPECT_NEAR(rows.PressureW.back(), 3031.25, 1e-8) << "no capillary pressure at the contact";
    EXPECT_NEAR(rows.PressureW.front(), 3031.25 - 62.4 * 100.0 / 144.0, 1e-8);
    EXPECT_NEAR(rows.PressureG.front(), 3000.0, 1e-8);
    EXPECT_NEAR(rows.PressureG.back(), 3000.0 + 5.0 * 100.0 / 144.0, 1e-8);
}

TEST(DepthTable, GivesADatumInTheGasOrInTheWaterToThatPhase) {
    ColumnBench bench(8000, {100});
    bench.useGas();
    bench.contacts(8000, 3000, 8080, 8020);
    InitDepthTable rows = bench.rows();
    const double atGoc = 3000.0 + 5.0 * 20.0 / 144.0;
    EXPECT_NEAR(rows.PressureG.front(), 3000.0, 1e-8);
    EXPECT_NEAR(rows.PressureO.back(), atGoc + 45.0 * 80.0 / 144.0, 1e-8);
    EXPECT_NEAR(rows.PressureW.back(), atGoc + (45.0 * 60.0 + 62.4 * 20.0) / 144.0, 1e-8);
    bench.contacts(8100, 3000, 8080, 8020);
    rows = bench.rows();
    EXPECT_NEAR(rows.PressureW.back(), 3000.0, 1e-8);
    EXPECT_NEAR(rows.PressureO.front(), 3000.0 - (62.4 * 20.0 + 45.0 * 80.0) / 144.0, 1e-8);
}

TEST(DepthTable, SaturatesOilAtTheGasContactWithoutAnRsTable) {
    ColumnBench bench(8000, {100});
    bench.useGas();
    samples::fillOdehPvt(bench.tables);
    finishTables(bench.tables);
    bench.contacts(8000, 3014.7, 8100, 8000);
    const InitDepthTable rows = bench.rows();
    EXPECT_NEAR(rows.RsValue.front(), 0.93 / GasRatioFactor, 1e-6);
    EXPECT_EQ(rows.RsValue.front(), rows.RsValue.back());
    EXPECT_NEAR(bubblePointAtDepth(bench.tables, rows, 8050.0, 3500.0), 3014.7, 1e-6);
    EXPECT_NEAR(bubblePointAtDepth(bench.tables, rows, 8050.0, 2000.0), 2000.0, 1e-12);
}

TEST(DepthTable, TakesTheRsOfEachDepthWithoutCarryingACapDownward) {
    ColumnBench bench(8000, {100});
    bench.useGas();
    samples::fillOdehPvt(bench.tables);
    finishTables(bench.tables);
    bench.contacts(8000, 3000, 8200, 7000);
    bench.initial.regions[0].rsTableDepth = {8000, 8100};
    bench.initial.regions[0].rsTableRs = {0.93 / GasRatioFactor, 0.371 / GasRatioFactor};
    const InitDepthTable rows = bench.rows();
    EXPECT_NEAR(bubblePointAtDepth(bench.tables, rows, 8000, 3000.0), 3000.0, 1e-12);
    EXPECT_NEAR(bubblePointAtDepth(bench.tables, rows, 8100, 3025.0), 1014.7, 1e-6);
}

TEST(DepthTable, StopsTheRunWhenAColumnDoesNotSettle) {
    ColumnBench bench(8000, {10000});
    bench.tables.OilFvf = {1.0, 1e-3};  // density grows a hundredfold over each step's own weight
    bench.tables.oilDensity = 1e6;
    finishTables(bench.tables);
    bench.contacts(8000, 3000, 18000, 8000);
    std::fclose(bench.console.screen);
    bench.console.screen = stderr;
    EXPECT_EXIT(bench.run(), testing::ExitedWithCode(1),
                "Initialization Failed:\nCheck Capillary-Density-OWC/OGC Data.\nOil Pressure: .*\n"
                "Wat Pressure: .*\nGas Pressure: ");
}

TEST(Equilibrium, OfTheThreeLayerLightOilReservoirIsItsPublishedState) {
    ColumnBench bench(8325, {20, 30, 50});
    bench.useGas();
    samples::fillOdehPvt(bench.tables);
    finishTables(bench.tables);
    bench.contacts(8400, 4800, 8450, 8300);
    bench.initial.regions[0].rsTableDepth = {8300, 8450};
    bench.initial.regions[0].rsTableRs = {1.27 / GasRatioFactor, 1.27 / GasRatioFactor};
    const double rs = 1.27 / GasRatioFactor;
    EXPECT_NEAR(oilDensityAt(bench.tables, rs, OilFvf(bench.tables, 4800, 4014.7)), 36.4776, 5e-5);
    bench.run();
    EXPECT_NEAR(bench.state.Pressure[1], 4783.5, 0.2);
    EXPECT_NEAR(bench.state.Pressure[2], 4789.9, 0.2);
    EXPECT_NEAR(bench.state.Pressure[3], 4800.0, 0.2);
    for (CellId cell = 1; cell <= 3; ++cell) {
        EXPECT_NEAR(bench.state.Rs[cell], 226.196674, 226.196674e-8);
        EXPECT_NEAR(bench.state.Pb[cell], 4014.7, 4014.7e-8);
        EXPECT_DOUBLE_EQ(bench.state.Sw[cell], 0.2);
        EXPECT_EQ(bench.state.Sg[cell], 0.0);
    }
}

TEST(Equilibrium, WithoutCapillaryPressurePartsTheZonesAtTheContacts) {
    ColumnBench bench(8000, {20, 20, 20});
    bench.useGas();
    bench.contacts(8030, 3000, 8040, 8020);
    bench.run();
    EXPECT_NEAR(bench.state.Sg[1], 0.6, 1e-14) << "the last row of the gas table";
    EXPECT_NEAR(bench.state.Sw[1], 0.2, 1e-14);
    EXPECT_NEAR(bench.state.Sw[2], 0.2, 1e-14);
    EXPECT_NEAR(bench.state.So[2], 0.8, 1e-14);
    EXPECT_EQ(bench.state.Sg[2], 0.0);
    EXPECT_EQ(bench.state.Sw[3], 1.0) << "10 ft below the contact";
    EXPECT_EQ(bench.state.So[3], 0.0);
}

TEST(Equilibrium, WithACentreAtAContactIsTheZoneBelow) {
    ColumnBench bench(8000, {20, 20, 20});
    bench.useGas();
    bench.contacts(8030, 3000, 8050, 8010);
    bench.run();
    EXPECT_EQ(bench.state.Sg[1], 0.0);
    EXPECT_EQ(bench.state.Sw[3], 1.0);
}

TEST(Equilibrium, AveragesACellThatAContactCrossesOverItsSlices) {
    ColumnBench bench(100, {100, 100});
    bench.contacts(100, 3000, 130, 50);
    bench.run();
    EXPECT_NEAR(bench.state.Sw[1], 1.0, 1e-12) << "by its centre alone, 20 ft below the contact";
    bench.initial.regions[0].slices = {10, false};
    bench.run();
    EXPECT_NEAR(bench.state.Sw[1], 0.3 * 0.2 + 0.7 * 1.0, 1e-12) << "three of ten slices stand above it";
    EXPECT_NEAR(bench.state.Sw[2], 1.0, 1e-12);
}

TEST(Equilibrium, LeavesTheCellsOfAResolvedTransitionZoneAtTheirCentresUnlessToldOtherwise) {
    const auto waterOf = [](CellSlices slices) {
        ColumnBench bench(8000, {20, 20, 20});
        // Water 17.4 lb/ft3 heavier than oil: 0.5 psi is 4.138 ft, so that the zone is 41.4 ft high.
        bench.tables.regions.front().Pcow = {5.0, 1.0, 0.5, 0.0};
        finishTables(bench.tables);
        bench.contacts(8000, 3000, 8060, 7000);
        bench.initial.regions[0].slices = slices;
        bench.run();
        return bench.state.Sw[3];
    };
    const double centre = waterOf({0, true});
    EXPECT_EQ(waterOf({10, false}), centre) << "the zone goes on above the cell";
    EXPECT_GT(std::abs(waterOf({10, true}) - centre), 1e-3);
}

TEST(Equilibrium, HoldsTheColumnOfThePhaseThatMovesInBalance) {
    ColumnBench bench(8000, {20, 20, 20});
    bench.useGas();
    bench.contacts(8030, 3000, 8040, 8020);
    bench.run();
    const double goc = 3000.0 - 45.0 * 10.0 / 144.0;
    const double woc = 3000.0 + 45.0 * 10.0 / 144.0;
    EXPECT_NEAR(bench.state.Pressure[1], goc - 5.0 * 10.0 / 144.0, 1e-8);
    EXPECT_NEAR(bench.state.Pressure[2], 3000.0, 1e-8);
    EXPECT_NEAR(bench.state.Pressure[3], woc + 62.4 * 10.0 / 144.0, 1e-8);
}

TEST(Equilibrium, WithTheContactsOutsideTheGridIsOilAtConnateWater) {
    ColumnBench bench(8000, {20, 20, 20});
    bench.useGas();
    bench.contacts(8030, 3000, 9000, 7000);
    bench.run();
    for (CellId cell = 1; cell <= 3; ++cell) {
        EXPECT_DOUBLE_EQ(bench.state.Sw[cell], 0.2);
        EXPECT_EQ(bench.state.Sg[cell], 0.0);
    }
}

TEST(Equilibrium, InvertsTheCapillaryPressureOfWater) {
    ColumnBench bench(8000, {50, 50, 50});
    bench.tables.waterDensity = 59.4;  // 14.4 above the oil
    SaturationTable& table = bench.tables.regions.front();
    table.SwAxis = {0.2, 0.6, 0.8, 1.0};
    table.Pcow = {5.0, 2.5, 1.25, 0.0};
    finishTables(bench.tables);
    bench.contacts(8000, 3000, 8100, 0);
    bench.run();
    EXPECT_NEAR(bench.state.Sw[1], 0.2, 1e-9) << "75 ft above the contact, beyond the table";
    EXPECT_NEAR(bench.state.Sw[2], 0.6, 1e-8) << "25 ft above";
    EXPECT_NEAR(bench.state.Sw[3], 1.0, 1e-12) << "below";
}

TEST(Equilibrium, ScalesTheCapillaryCurveByTheCell) {
    ColumnBench bench(8000, {50, 50, 50});
    bench.tables.waterDensity = 59.4;
    SaturationTable& table = bench.tables.regions.front();
    table.SwAxis = {0.2, 0.6, 0.8, 1.0};
    table.Pcow = {0.5, 0.25, 0.125, 0.0};
    finishTables(bench.tables);
    bench.grid.JFactor.assign(3, 10.0);
    bench.grid.JFactor[3] = 0.0;
    bench.contacts(8000, 3000, 8100, 0);
    bench.run();
    EXPECT_NEAR(bench.state.Sw[2], 0.6, 1e-8);
    EXPECT_EQ(bench.state.Sw[3], 1.0) << "no capillary pressure here: by the contact";
}

TEST(Equilibrium, LeavesWaterAtItsConnateValueInARunWithoutWater) {
    ColumnBench bench(8000, {20, 20});
    bench.options.hasWater = false;
    bench.tables.regions.front().Pcow = {5.0, 2.5, 1.25, 0.0};
    finishTables(bench.tables);
    bench.contacts(8000, 3000, 0, 0);
    bench.run();
    EXPECT_DOUBLE_EQ(bench.state.Sw[2], 0.2);
    EXPECT_NEAR(bench.state.Pressure[2], 3000.0 + 45.0 * 30.0 / 144.0, 1e-8);
}

TEST(Equilibrium, InvertsTheCapillaryPressureOfGas) {
    ColumnBench bench(8000, {20, 20, 20});
    bench.useGas();
    SaturationTable& table = bench.tables.regions.front();
    table.SgAxis = {0.0, 0.1, 0.3, 0.8};
    table.Pcog = {0.0, 1.0, 40.0 * 10.0 / 144.0, 20.0};  // the third at 10 ft of 40 lb/ft3
    finishTables(bench.tables);
    bench.contacts(8040, 3000, 8060, 8040);
    bench.run();
    EXPECT_NEAR(bench.state.Sg[2], 0.3, 1e-8) << "10 ft above the contact";
    EXPECT_EQ(bench.state.Sg[3], 0.0);
}

TEST(Equilibrium, LeavesOilBesideFreeGasSaturated) {
    ColumnBench bench(8000, {20, 20});
    bench.useGas();
    samples::fillOdehPvt(bench.tables);
    finishTables(bench.tables);
    bench.contacts(8030, 3000, 9000, 8020);
    bench.initial.regions[0].rsTableDepth = {8000, 8100};
    bench.initial.regions[0].rsTableRs = {0.371 / GasRatioFactor, 0.371 / GasRatioFactor};
    bench.run();
    EXPECT_EQ(bench.state.Pb[1], bench.state.Pressure[1]);
    EXPECT_NEAR(bench.state.Pb[2], 1014.7, 1e-6);
}

TEST(Equilibrium, StopsAtACellWithoutASaturationTable) {
    ColumnBench bench(8000, {20, 20});
    bench.grid.SATNUM[2] = 2;
    bench.contacts(8000, 3000, 9000, 0);
    std::fclose(bench.console.screen);
    bench.console.screen = stderr;
    EXPECT_EXIT(bench.run(), testing::ExitedWithCode(1), "ERROR :: NO SATURATION TABLE 2 FOR SATNUM, GRID 2");
    bench.grid.Active[2] = 0;
    bench.run();
    EXPECT_GT(bench.state.Pressure[1], 3000.0);
}

TEST(Equilibrium, LeavesInactiveCellsAlone) {
    ColumnBench bench(8000, {20, 20});
    bench.grid.Active[2] = 0;
    bench.contacts(8000, 3000, 9000, 0);
    bench.run();
    EXPECT_GT(bench.state.Pressure[1], 3000.0);
    EXPECT_EQ(bench.state.Pressure[2], 0.0);
}

TEST(Equilibrium, SendsFewCellsToTheDirectSolver) {
    ColumnBench few(8000, {20, 20}, 13);
    few.contacts(8000, 3000, 9000, 0);
    few.run();
    EXPECT_EQ(few.options.pressureSolver, "dgesv");
    const std::string warning =
        "WARNING :: Due to small small number of unknown, direct solver(DGESV) is used";
    EXPECT_EQ(ColumnBench::timesIn(few.console.screen, warning), 1);
    EXPECT_EQ(ColumnBench::timesIn(few.console.log, warning), 1);
    ColumnBench enough(8000, {20, 20, 20}, 9);
    enough.contacts(8000, 3000, 9000, 0);
    enough.run();
    EXPECT_EQ(enough.options.pressureSolver, "amg");
    EXPECT_EQ(ColumnBench::timesIn(enough.console.screen, "WARNING"), 0);
}

TEST(Equilibrium, AnnouncesItselfOnScreenAndInTheLog) {
    ColumnBench bench(8000, {20});
    bench.contacts(8000, 3000, 9000, 0);
    bench.run();
    EXPECT_EQ(ColumnBench::timesIn(bench.console.screen, "Initializing..."), 1);
    EXPECT_EQ(ColumnBench::timesIn(bench.console.screen, "Initialize: Pc-Density-OWC/GOC, Accordingly"), 1);
    EXPECT_EQ(ColumnBench::timesIn(bench.console.log, "INITIALIZING..."), 1);
    EXPECT_EQ(ColumnBench::timesIn(bench.console.log, "INITIALIZE: PC-DENSITY-OWC/GOC, ACCORDINGLY"), 1);
}

TEST(InitialArrays, StandAsTheDeckGivesThem) {
    ColumnBench bench(8000, {20, 20});
    bench.useGas();
    samples::fillOdehPvt(bench.tables);
    finishTables(bench.tables);
    bench.initial.equilibrationMode = false;
    bench.initial.initialPressure.assign(2, 4000.0);
    bench.initial.initialSwat.assign(2, 0.3);
    bench.initial.initialSgas.assign(2, 0.0);
    bench.initial.initialSgas[2] = 0.1;
    bench.initial.initialRs.assign(2, 0.371 / GasRatioFactor);
    bench.initial.swatGiven = bench.initial.sgasGiven = bench.initial.rsGiven = true;
    bench.run();
    EXPECT_EQ(bench.state.Pressure[1], 4000.0);
    EXPECT_DOUBLE_EQ(bench.state.So[1], 0.7);
    EXPECT_NEAR(bench.state.Pb[1], 1014.7, 1e-8);
    EXPECT_NEAR(bench.state.Rs[1], 0.371 / GasRatioFactor, 1e-8);
    EXPECT_NEAR(bench.state.So[2], 0.6, 1e-14);
    EXPECT_EQ(bench.state.Pb[2], 4000.0) << "free gas: saturated";
    EXPECT_EQ(ColumnBench::timesIn(bench.console.screen, "Initialize: Explicitly Assigned By Input Data"), 1);
    EXPECT_EQ(ColumnBench::timesIn(bench.console.log, "INITIALIZE: EXPLICITLY ASSIGNED BY INPUT DATA"), 1);
}

TEST(InitialArrays, TellOfGasThatTheOilCannotHold) {
    ColumnBench bench(8000, {20, 20});
    bench.useGas();
    samples::fillOdehPvt(bench.tables);
    finishTables(bench.tables);
    bench.initial.equilibrationMode = false;
    bench.initial.initialPressure.assign(2, 1014.7);  // where the oil holds 0.371
    bench.initial.initialSwat.assign(2, 0.3);
    bench.initial.initialRs.assign(2, 0.371 / GasRatioFactor);
    bench.initial.initialRs[2] = 0.5 / GasRatioFactor;
    bench.initial.swatGiven = bench.initial.rsGiven = true;
    for (CellArray<int>* place : {&bench.grid.CellI, &bench.grid.CellJ, &bench.grid.CellK})
        place->assign(2, 1);
    bench.grid.CellK[2] = 2;
    bench.run();
    EXPECT_EQ(
        ColumnBench::timesIn(bench.console.screen, "WARNING :: RS OF 1 CELLS IS MORE THAN THEIR OIL HOLDS"),
        1);
    EXPECT_EQ(
        ColumnBench::timesIn(bench.console.screen, "FIRST: CELL 2 (I 1, J 1, K 2), 0.371 OF 0.5 MSCF/STB"),
        1);
    EXPECT_NEAR(bench.state.Rs[2], 0.371 / GasRatioFactor, 1e-8);
}

TEST(Equilibrium, StopsAtACellWhoseRegionHasNoRecordEvenIfItHasATable) {
    ColumnBench bench(8000, {20, 20});
    bench.contacts(8000, 4000, 9000, 7000);
    bench.initial.regions.resize(2);
    bench.initial.regions[1].rsTableDepth = {7000.0, 9000.0};
    bench.initial.regions[1].rsTableRs = {1.0, 1.0};
    bench.grid.EQLNUM.assign(2, 1);
    bench.grid.EQLNUM[2] = 2;
    bench.grid.CellK[2] = 2;
    bench.console.screen = stderr;
    EXPECT_EXIT(bench.run(), testing::ExitedWithCode(1),
                "ERROR :: NO EQUIL RECORD 2 FOR EQLNUM, GRID 2 .I 1, J 1, K 2.");
}

TEST(InitialArrays, TellOfOilInARunWithoutIt) {
    const auto told = [](double water) {
        ColumnBench bench(8000, {20});
        bench.options.hasOil = false;
        bench.initial.equilibrationMode = false;
        bench.initial.initialPressure.assign(1, 3000.0);
        bench.initial.initialSwat.assign(1, water);
        bench.initial.swatGiven = true;
        bench.run();
        return ColumnBench::timesIn(bench.console.screen,
                                    "WARNING :: THE RUN HAS NO OIL, BUT 1 CELLS START WITH IT");
    };
    EXPECT_EQ(told(0.7), 1);
    EXPECT_EQ(told(1.0), 0);
}

TEST(InitialArrays, NeedNoRecordOfEquilibriumForARegion) {
    ColumnBench bench(8000, {20, 20});
    bench.initial.equilibrationMode = false;
    bench.initial.regions[0].isGiven = false;
    bench.initial.initialPressure.assign(2, 3000.0);
    bench.initial.initialSwat.assign(2, 0.4);
    bench.initial.swatGiven = true;
    bench.grid.EQLNUM.assign(2, 3);
    bench.run();
    EXPECT_EQ(bench.state.Pressure[2], 3000.0);
    EXPECT_DOUBLE_EQ(bench.state.So[2], 0.6);
}

TEST(InitialArrays, FillWaterWhereOnlyOilIsGiven) {
    ColumnBench bench(8000, {20});
    bench.initial.equilibrationMode = false;
    bench.initial.initialPressure.assign(1, 3000.0);
    bench.initial.initialSoil.assign(1, 0.75);
    bench.initial.soilGiven = true;
    bench.run();
    EXPECT_DOUBLE_EQ(bench.state.Sw[1], 0.25);
    EXPECT_EQ(bench.state.Pb[1], 0.0);
    EXPECT_EQ(bench.state.Rs[1], 0.0);
}

}  // namespace
}  // namespace kvr
