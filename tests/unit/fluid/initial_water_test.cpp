#include "fluid/initial_water.hpp"

#include "fluid/saturation_functions.hpp"
#include "fluid/table_checks.hpp"
#include "unit/fluid/column_bench.hpp"

#include <gtest/gtest.h>
#include <limits>

namespace kvr {
namespace {

/// Four layers, oil 14.4 lb/ft3 lighter than water: 0.1 psi a foot above the contact at 8150 ft.
struct WaterBench : ColumnBench {
    WaterBench() : ColumnBench(8000, {50, 50, 50, 50}) {
        tables.waterDensity = 59.4;
        SaturationTable& table = tables.regions.front();
        table.SwAxis = {0.2, 0.6, 0.8, 1.0};
        table.Pcow = {5.0, 2.5, 1.25, 0.0};
        finishTables(tables);
        contacts(8000, 3000, 8150, 0);
        tables.scaling.isSet = true;
        tables.scaling.initialWater.assign(4, std::numeric_limits<double>::quiet_NaN());
    }
    void give(CellId cell, double water) { tables.scaling.initialWater[cell] = water; }
    void scaleAndRun() {
        scaleToInitialWater(console, initial, options, grid, tables);
        run();
    }
};

TEST(InitialWater, IsWhatTheCapillaryPressureOfTheCellIsScaledTo) {
    WaterBench bench;
    bench.give(1, 0.6);
    bench.give(2, 0.4);
    bench.scaleAndRun();
    EXPECT_NEAR(bench.state.Sw[1], 0.6, 1e-7);
    EXPECT_NEAR(bench.state.Sw[2], 0.4, 1e-7);
    EXPECT_NEAR(bench.state.Sw[3], 0.6, 1e-7) << "of the table, 25 ft above the contact";
    EXPECT_NEAR(PcowFn(bench.tables, 0.6, bench.grid.SATNUM[1]), 12.5, 1e-4) << "125 ft above the contact";
    EXPECT_NEAR(PcowFn(bench.tables, 0.2, bench.grid.SATNUM[2]), 7.5 * 5.0 / 3.75, 1e-4);
    EXPECT_EQ(bench.grid.SATNUM[3], 1);
    EXPECT_EQ(bench.tables.scaledRegions, 2U);
}

TEST(InitialWater, IsNotBelowTheLeastOfTheTable) {
    WaterBench bench;
    bench.give(2, 0.05);
    bench.scaleAndRun();
    EXPECT_NEAR(bench.state.Sw[2], 0.2, 1e-7);
    EXPECT_NEAR(PcowFn(bench.tables, 0.2, bench.grid.SATNUM[2]), 7.5, 1e-4);
}

TEST(InitialWater, BelowTheContactIsToldAndLeft) {
    WaterBench bench;
    bench.give(4, 0.5);
    bench.scaleAndRun();
    EXPECT_EQ(bench.state.Sw[4], 1.0);
    EXPECT_EQ(bench.grid.SATNUM[4], 1);
    EXPECT_EQ(ColumnBench::timesIn(bench.console.log, "SWATINIT OF 1 CELLS HAS NO EFFECT"), 1);
}

TEST(InitialWater, NeedsCapillaryPressure) {
    WaterBench bench;
    bench.tables.regions.front().Pcow = {0.0, 0.0, 0.0, 0.0};
    finishTables(bench.tables);
    bench.give(1, 0.6);
    bench.scaleAndRun();
    EXPECT_EQ(bench.tables.scaledRegions, 0U);
    EXPECT_EQ(ColumnBench::timesIn(bench.console.log, "SWATINIT HAS NO EFFECT WITHOUT CAPILLARY PRESSURE"),
              1);
}

}  // namespace
}  // namespace kvr
