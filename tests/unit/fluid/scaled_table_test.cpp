#include "fluid/scaled_table.hpp"

#include "fluid/saturation_functions.hpp"
#include "fluid/table_checks.hpp"

#include <cmath>
#include <gtest/gtest.h>

namespace kvr {
namespace {

/// Water does not flow up to 0.25 nor oil from 0.7 on, gas not up to 0.05 nor oil beside it from 0.6 on.
FluidTables givenTables() {
    FluidTables tables;
    tables.hasGas = true;
    tables.regions.resize(1);
    SaturationTable& table = tables.regions[0];
    table.SwAxis = {0.2, 0.25, 0.4, 0.55, 0.7, 0.85, 1.0};
    table.Krw = {0.0, 0.0, 0.08, 0.2, 0.42, 0.65, 1.0};
    table.Krow = {0.9, 0.7, 0.35, 0.12, 0.0, 0.0, 0.0};
    table.Pcow = {5.0, 3.5, 1.5, 0.8, 0.3, 0.1, 0.0};
    table.SgAxis = {0.0, 0.05, 0.25, 0.45, 0.6, 0.8};
    table.Krg = {0.0, 0.0, 0.1, 0.3, 0.5, 0.8};
    table.Krog = {0.9, 0.75, 0.4, 0.12, 0.0, 0.0};
    table.Pcog = {0.0, 0.2, 0.5, 1.0, 1.6, 2.5};
    finishTables(tables);
    tables.PcowSpan = tables.PcogSpan = 1.0;
    return tables;
}

template <class Change>
FluidTables scaledBy(bool threePoint, const Change& change, FluidTables tables = givenTables()) {
    const EndPoints from = endPointsOf(tables.regions[0]);
    EndPoints to = from;
    change(to);
    tables.regions[0] = scaledTable(tables.regions[0], from, to, threePoint, true);
    return tables;
}

constexpr double Same = 1e-12;

TEST(EndPoints, OfATableAreReadFromItsRows) {
    const EndPoints points = endPointsOf(givenTables().regions[0]);
    EXPECT_DOUBLE_EQ(points.SWL, 0.2);
    EXPECT_DOUBLE_EQ(points.SWCR, 0.25);
    EXPECT_DOUBLE_EQ(points.SWU, 1.0);
    EXPECT_NEAR(points.SOWCR, 0.3, Same);
    EXPECT_DOUBLE_EQ(points.SGCR, 0.05);
    EXPECT_DOUBLE_EQ(points.SGU, 0.8);
    EXPECT_NEAR(points.SOGCR, 0.2, Same);  // 1 - 0.2 - 0.6
    EXPECT_DOUBLE_EQ(points.KROG, 0.9);
    EXPECT_DOUBLE_EQ(points.PCW, 5.0);
    EXPECT_DOUBLE_EQ(points.PCG, 2.5);
}

TEST(ScaledTable, WithTheEndPointsOfItsTableIsThatTable) {
    const FluidTables before = givenTables(), after = scaledBy(true, [](EndPoints&) {});
    ASSERT_EQ(after.regions[0].SwAxis.size(), before.regions[0].SwAxis.size());
    for (double s = 0.0; s <= 1.0; s += 0.01) {
        const RelPerms a = relPerms(before.regions[0], true, s, 0.3 * s);
        const RelPerms b = relPerms(after.regions[0], true, s, 0.3 * s);
        EXPECT_NEAR(a.w, b.w, Same);
        EXPECT_NEAR(a.o, b.o, Same);
        EXPECT_NEAR(a.g, b.g, Same);
        EXPECT_NEAR(PcowFn(before, s, 1), PcowFn(after, s, 1), Same);
    }
}

TEST(ScaledTable, MovesSaturationsBetweenTwoPoints) {
    const FluidTables t = scaledBy(false, [](EndPoints& p) {
        p.SWCR = 0.32;
        p.SOWCR = 0.2;
        p.SGCR = 0.1;
        p.SGU = 0.7;
        p.SOGCR = 0.1;
    });
    const double inWater = 0.25 + (0.6 - 0.32) * (1.0 - 0.25) / (1.0 - 0.32);
    EXPECT_NEAR(KrwFn(t, 0.6, 1), 0.2 + 0.22 * (inWater - 0.55) / 0.15, Same);
    EXPECT_DOUBLE_EQ(KrwFn(t, 0.32, 1), 0.0);
    EXPECT_DOUBLE_EQ(KrwFn(t, 1.0, 1), 1.0);
    const double besideWater = 0.2 + (0.5 - 0.2) * (0.7 - 0.2) / (0.8 - 0.2);  // 0.45
    EXPECT_NEAR(KrowFn(t, 0.5, 1), 0.35 - 0.23 * (besideWater - 0.4) / 0.15, Same);
    EXPECT_NEAR(KrowFn(t, 0.8, 1), 0.0, Same);
    const double inGas = 0.05 + (0.4 - 0.1) * (0.8 - 0.05) / (0.7 - 0.1);  // 0.425
    EXPECT_NEAR(KrgFn(t, 0.4, 1), 0.1 + 0.2 * (inGas - 0.25) / 0.2, Same);
    const double besideGas = 0.35 * 0.6 / 0.7;  // 0.3
    EXPECT_NEAR(KrogFn(t, 0.35, 1), 0.4 - 0.28 * (besideGas - 0.25) / 0.2, Same);
    EXPECT_NEAR(PcowFn(t, 0.6, 1), 0.8 - 0.5 * 0.05 / 0.15, Same);  // of SWL and SWU, which stay
    EXPECT_NEAR(PcogFn(t, 0.35, 1), 0.5 + 0.5 * (0.35 * 0.8 / 0.7 - 0.25) / 0.2, Same);
    EXPECT_NEAR(t.regions[0].ConnateSw, 0.32, Same);
    EXPECT_NEAR(t.regions[0].ResidualSo, 0.2, Same);
    EXPECT_NEAR(t.regions[0].CriticalSg, 0.1, Same);
}

TEST(ScaledTable, MovesTheOilBesideGasWithTheLeastWater) {
    const FluidTables t = scaledBy(false, [](EndPoints& p) { p.SWL = 0.1; });
    // So from 1 - 0.1 down to 0.2 is So from 1 - 0.2 down to 0.2 of the table: Sg 0.35 is 0.3
    EXPECT_NEAR(KrogFn(t, 0.35, 1), 0.4 - 0.28 * 0.05 / 0.2, Same);
    EXPECT_DOUBLE_EQ(t.regions[0].SwAxis.front(), 0.1);
    EXPECT_NEAR(PcowFn(t, 0.1, 1), 5.0, Same);
    EXPECT_NEAR(PcowFn(t, 0.46, 1), 1.5 - 0.7 * (0.2 + 0.36 * 0.8 / 0.9 - 0.4) / 0.15, Same);
}

TEST(ScaledTable, MovesSaturationsBetweenThreePoints) {
    const FluidTables t = scaledBy(true, [](EndPoints& p) {
        p.SWCR = 0.3;
        p.SOWCR = 0.2;
        p.SGCR = 0.1;
    });
    // Oil stops at Sw 0.7 in the table, at 0.8 here.
    EXPECT_NEAR(KrwFn(t, 0.55, 1), 0.08 + 0.12 * (0.25 + 0.25 * 0.45 / 0.5 - 0.4) / 0.15, Same);
    EXPECT_NEAR(KrwFn(t, 0.8, 1), 0.42, Same);
    EXPECT_NEAR(KrwFn(t, 0.9, 1), 0.65, Same);   // 0.7 + 0.1 * 0.3 / 0.2 = 0.85
    EXPECT_NEAR(KrowFn(t, 0.25, 1), 0.8, Same);  // half way from 0.2 to 0.25
    EXPECT_NEAR(KrowFn(t, 0.55, 1), 0.235, Same);
    EXPECT_NEAR(KrogFn(t, 0.05, 1), 0.825, Same);  // half way from 0 to 0.05
    EXPECT_NEAR(KrogFn(t, 0.35, 1), 0.4 - 0.28 * (0.05 + 0.25 * 0.55 / 0.5 - 0.25) / 0.2, Same);
}

/// A table in which water flows from its first row on: up to SWCR oil is not displaced.
TEST(ScaledTable, HoldsOilWhereTheTableHasNoStretch) {
    FluidTables tables = givenTables();
    tables.regions[0].Krw[1] = 0.02;
    finishTables(tables);
    const FluidTables t = scaledBy(
        true, [](EndPoints& p) { p.SWCR = 0.3; }, tables);
    EXPECT_NEAR(KrowFn(t, 0.25, 1), 0.9, Same);
    EXPECT_NEAR(KrowFn(t, 0.34, 1), 0.7, Same);  // 0.2 + 0.04 * 0.5 / 0.4 = 0.25
}

TEST(ScaledTable, MultipliesValuesByTheRatioOfTheGreatest) {
    const FluidTables t = scaledBy(false, [](EndPoints& p) {
        p.KRW = 0.6;
        p.KROW = p.KROG = 0.45;
        p.KRG = 0.4;
        p.PCW = 10.0;
        p.PCG = 5.0;
    });
    EXPECT_NEAR(KrwFn(t, 0.55, 1), 0.12, Same);
    EXPECT_NEAR(KrowFn(t, 0.4, 1), 0.175, Same);
    EXPECT_NEAR(KrgFn(t, 0.45, 1), 0.15, Same);
    EXPECT_NEAR(KrogFn(t, 0.25, 1), 0.2, Same);
    EXPECT_NEAR(PcowFn(t, 0.4, 1), 3.0, Same);
    EXPECT_NEAR(PcogFn(t, 0.45, 1), 2.0, Same);
}

TEST(ScaledTable, GoesThroughTheValueWhereTheOtherPhaseStops) {
    const FluidTables t = scaledBy(false, [](EndPoints& p) {
        p.KRW = 0.8;
        p.KRWR = 0.3;  // at Sw 0.7, where the table has 0.42
        p.KROW = 1.0;
        p.KRORW = 0.6;  // at Sw 0.25, 0.7
        p.KRGR = 0.4;   // at Sg 0.6, 0.5
        p.KROG = 1.0;
        p.KRORG = 0.5;  // at Sg 0.05, 0.75
    });
    EXPECT_NEAR(KrwFn(t, 0.4, 1), 0.08 * 0.3 / 0.42, Same);
    EXPECT_NEAR(KrwFn(t, 0.85, 1), 0.3 + 0.5 * (0.65 - 0.42) / 0.58, Same);
    EXPECT_NEAR(KrwFn(t, 1.0, 1), 0.8, Same);
    EXPECT_NEAR(KrowFn(t, 0.4, 1), 0.35 * 0.6 / 0.7, Same);
    EXPECT_NEAR(KrowFn(t, 0.225, 1), 0.8, Same);  // half way from 0.6 to 1
    EXPECT_NEAR(KrgFn(t, 0.45, 1), 0.24, Same);
    EXPECT_NEAR(KrgFn(t, 0.7, 1), 0.6, Same);  // half way from 0.4 to 0.8
    EXPECT_NEAR(KrogFn(t, 0.25, 1), 0.4 * 0.5 / 0.75, Same);
    EXPECT_NEAR(KrogFn(t, 0.025, 1), 0.75, Same);
}

TEST(ScaledTable, RisesBySaturationWhereTheTableIsLevel) {
    FluidTables tables = givenTables();
    tables.regions[0].Krw = {0.0, 0.0, 0.08, 0.2, 0.42, 0.42, 0.42};
    finishTables(tables);
    const FluidTables t = scaledBy(
        false,
        [](EndPoints& p) {
            p.KRWR = 0.2;
            p.KRW = 0.5;
        },
        tables);
    EXPECT_NEAR(KrwFn(t, 0.7, 1), 0.2, Same);
    EXPECT_NEAR(KrwFn(t, 0.85, 1), 0.35, Same);
}

TEST(EndPoints, ThatNoTableCanHaveAreNamed) {
    EndPoints points = endPointsOf(givenTables().regions[0]);
    EXPECT_EQ(endPointFault(points, true, true), "");
    points.SWCR = 1.0;
    EXPECT_EQ(endPointFault(points, true, true), "SWCR IS NOT BELOW SWU");
    EXPECT_EQ(endPointFault(points, false, true), "");
}

}  // namespace
}  // namespace kvr
