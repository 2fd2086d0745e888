#include "fluid/saturation_functions.hpp"

#include "unit/fluid/table_samples.hpp"

#include <algorithm>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace kvr {
namespace {

FluidTables withRegion(const SaturationTable& table) {
    FluidTables tables;
    samples::fillOdehPvt(tables);
    tables.regions = {table};
    finishTables(tables);
    return tables;
}

TEST(EndPoints, ComeFromTheRowsWhereAPhaseStops) {
    const SaturationTable table = samples::lightOil().regions.front();
    EXPECT_DOUBLE_EQ(table.ConnateSw, 0.2);
    EXPECT_DOUBLE_EQ(table.ResidualSo, 1.0 - 0.8);
    EXPECT_DOUBLE_EQ(table.CriticalSg, 0.0);
}

TEST(EndPoints, TakeTheHighestImmobileRowAndTheLowestRowWithoutOil) {
    SaturationTable table = samples::fourRowRegion();
    table.Krw = {0.0, 1e-16, 0.2, 0.45};
    table.Krg = {0.0, 0.0, 0.2, 0.6};
    table.Krow = {0.9, 0.5, 0.0, 0.0};
    const FluidTables tables = withRegion(table);
    EXPECT_DOUBLE_EQ(tables.regions.front().ConnateSw, 0.4);
    EXPECT_DOUBLE_EQ(tables.regions.front().CriticalSg, 0.1);
    EXPECT_DOUBLE_EQ(tables.regions.front().ResidualSo, 0.4);
}

TEST(EndPoints, OfAPhaseThatNeverFlowsAreTheFirstRows) {
    SaturationTable table = samples::fourRowRegion();
    table.Krg = {0.0, 0.0, 0.0, 0.0};
    EXPECT_EQ(withRegion(table).regions.front().CriticalSg, 0.0);
    table.Krow = {0.9, 0.5, 0.2, 0.1};
    EXPECT_DOUBLE_EQ(withRegion(table).regions.front().ResidualSo, 1.0 - 0.8);
}

TEST(RelativePermeability, IsInterpolatedExtendedAndClipped) {
    const FluidTables tables = samples::lightOil();
    EXPECT_DOUBLE_EQ(KrwFn(tables, 0.5, 1), 0.125);
    EXPECT_DOUBLE_EQ(KrwFn(tables, 0.9, 1), 0.575);
    EXPECT_EQ(KrgFn(tables, -0.05, 1), 0.0);
    EXPECT_EQ(KrowFn(tables, 0.9, 1), 0.0);
    EXPECT_DOUBLE_EQ(KrowFn(tables, 0.1, 1), 1.1);
    EXPECT_DOUBLE_EQ(KrogFn(tables, 0.2, 1), 0.4);
}

TEST(RelativePermeability, AndCapillaryPressureKeepTheEndValueWhereATableHoldsItsEnds) {
    FluidTables tables = samples::lightOil();
    tables.regions[0].Pcow = {5.0, 3.0, 2.0, 0.0};
    tables.regions[0].holdsEnds = true;
    finishTables(tables);
    EXPECT_DOUBLE_EQ(KrwFn(tables, 0.5, 1), 0.125);
    EXPECT_DOUBLE_EQ(KrwFn(tables, 0.9, 1), 0.45);
    EXPECT_DOUBLE_EQ(KrowFn(tables, 0.1, 1), 0.9);
    EXPECT_DOUBLE_EQ(PcowFn(tables, 0.1, 1), 5.0);
    EXPECT_DOUBLE_EQ(PcowFn(tables, 0.95, 1), 0.0);
    const RelPermSlopes beyond = relPermSlopes(tables.regions[0], false, 0.9, 0.0);
    EXPECT_EQ(beyond.wBySw, 0.0);
    EXPECT_EQ(relPermSlopes(tables.regions[0], false, 0.1, 0.0).oBySw, 0.0);
    EXPECT_DOUBLE_EQ(relPermSlopes(tables.regions[0], false, 0.2, 0.0).oBySw, -2.0);
}

TEST(WaterCurves, AreThoseOfTheSingleFunctions) {
    FluidTables tables = samples::lightOil();
    tables.hasGas = false;
    tables.regions[0].Pcow = {5.0, 3.0, 2.0, 0.0};
    finishTables(tables);
    for (const bool byRegion : {true, false}) {
        tables.RegionTableCell.assign(1, byRegion ? 1 : 0);
        for (const double sw : {0.1, 0.2, 0.35, 0.5, 0.79, 0.9}) {
            const WaterCurves curves = waterCurvesAtCell(tables, 1, 1, sw);
            const RelPerms kr = relPermsAtCell(tables, 1, 1, sw, 0.0);
            const RelPermSlopes slopes = relPermSlopesAtCell(tables, 1, 1, sw, 0.0);
            EXPECT_EQ(curves.krw, kr.w) << sw;
            EXPECT_EQ(curves.kro, kr.o) << sw;
            EXPECT_EQ(curves.krwSlope, slopes.wBySw) << sw;
            EXPECT_EQ(curves.kroSlope, slopes.oBySw) << sw;
            EXPECT_EQ(curves.pcow, PcowFn(tables, sw, 1)) << sw;
            const double rise = PcowFn(tables, sw + 1e-6, 1) - PcowFn(tables, sw, 1);
            EXPECT_NEAR(curves.pcowSlope, 1e6 * rise, 1e-6) << sw;
        }
    }
}

TEST(RelativePermeability, WorksOnTwoRows) {
    SaturationTable table = samples::fourRowRegion();
    table.SwAxis = {0.2, 0.8};
    table.Krw = {0.0, 0.6};
    table.Krow = {1.0, 0.0};
    table.Pcow = {0.0, 0.0};
    const FluidTables tables = withRegion(table);
    EXPECT_DOUBLE_EQ(KrwFn(tables, 0.5, 1), 0.3);
    EXPECT_DOUBLE_EQ(KrowFn(tables, 0.1, 1), 7.0 / 6.0);
}

TEST(ThreePhaseOil, FollowsStonesSecondModel) {
    const FluidTables tables = samples::lightOil();
    EXPECT_NEAR(Kro3Fn(tables, 0.2, 0.0, 1), 0.9, 1e-14);
    EXPECT_NEAR(Kro3Fn(tables, 0.4, 0.0, 1), 0.5, 1e-14);
    EXPECT_NEAR(Kro3Fn(tables, 0.2, 0.1, 1), 0.6, 1e-14);
    EXPECT_NEAR(Kro3Fn(tables, 0.3, 0.2, 1), 0.2790861111, 1e-10);
    EXPECT_NEAR(Kro3Fn(tables, 0.4, 0.1, 1), 0.3112333333, 1e-10);
    EXPECT_NEAR(Kro3Fn(tables, 0.5, 0.2, 1), 0.0449305556, 1e-10);
    EXPECT_NEAR(Kro3Fn(tables, 0.2, 0.3, 1), 0.2, 1e-14);
}

FluidTables weightedLightOil() {
    FluidTables tables = samples::lightOil();
    tables.regions[0].oilRule = OilRule::Weighted;
    return tables;
}

TEST(ThreePhaseOil, IsWeighedByTheTwoPartsOfThePores) {
    const FluidTables tables = weightedLightOil();
    EXPECT_NEAR(Kro3Fn(tables, 0.2, 0.0, 1), 0.9, 1e-14);
    EXPECT_NEAR(Kro3Fn(tables, 0.4, 0.0, 1), 0.5, 1e-14);
    EXPECT_NEAR(Kro3Fn(tables, 0.2, 0.1, 1), 0.6, 1e-14);
    EXPECT_NEAR(Kro3Fn(tables, 0.3, 0.2, 1), (0.2 * 0.2 + 0.1 * 0.35) / 0.3, 1e-14);
    EXPECT_NEAR(Kro3Fn(tables, 0.4, 0.1, 1), (0.1 * 0.2 + 0.2 * 0.35) / 0.3, 1e-14);
    EXPECT_NEAR(Kro3Fn(tables, 0.5, 0.2, 1), (0.2 * 0.2 / 3.0 + 0.3 * 0.1) / 0.5, 1e-14);
    EXPECT_NEAR(Kro3Fn(tables, 0.1, 0.1, 1), 0.6, 1e-14) << "less than connate water weighs nothing";
    EXPECT_EQ(Kro3Fn(tables, 0.6, 0.2, 1), 0.0) << "neither table lets oil flow";
}

TEST(ThreePhaseOil, OfTheRegionFreeSetFollowsTheRuleOfTheFirstRegion) {
    const FluidTables tables = weightedLightOil();
    for (const double sw : {0.15, 0.2, 0.3, 0.45})
        for (const double sg : {0.0, 0.05, 0.2})
            EXPECT_NEAR(relPermsSingle(tables, sw, sg).o, Kro3Fn(tables, sw, sg, 1), 1e-14)
                << sw << ' ' << sg;
}

TEST(ThreePhaseOil, WeighedHasTheSlopesOfItsValues) {
    const FluidTables tables = weightedLightOil();
    constexpr double step = 1e-7;
    const auto kro = [&](double sw, double sg) { return Kro3Fn(tables, sw, sg, 1); };
    const std::pair<double, double> places[] = {
        {0.23, 0.05}, {0.3, 0.17}, {0.47, 0.05}, {0.25, 0.33}, {0.5, 0.22}};
    for (const auto& [sw, sg] : places) {
        const RelPermSlopes slopes = relPermSlopes(tables.regions[0], true, sw, sg);
        EXPECT_NEAR(slopes.oBySw, (kro(sw + step, sg) - kro(sw - step, sg)) / (2.0 * step), 1e-6)
            << sw << ' ' << sg;
        EXPECT_NEAR(slopes.oBySg, (kro(sw, sg + step) - kro(sw, sg - step)) / (2.0 * step), 1e-6)
            << sw << ' ' << sg;
    }
    EXPECT_EQ(relPermSlopes(tables.regions[0], true, 0.1, 0.1).oBySw, 0.0);
    EXPECT_NEAR(relPermSlopes(tables.regions[0], true, 0.4, 0.0).oBySw, -1.5, 1e-9) << "krow alone";
}

TEST(ThreePhaseOil, IsClippedToOneAndEndsAtResidualOil) {
    const FluidTables tables = samples::lightOil();
    EXPECT_EQ(Kro3Fn(tables, 0.1, 0.0, 1), 1.0);
    EXPECT_EQ(Kro3Fn(tables, 0.5, 0.3, 1), 0.0);
    EXPECT_EQ(Kro3Fn(tables, 0.8, 0.0, 1), 0.0);
    EXPECT_EQ(Kro3Fn(tables, 0.6, 0.2, 1), 0.0);
}

TEST(ThreePhaseOil, IsZeroWhereOilDoesNotFlowAtConnateWater) {
    SaturationTable table = samples::fourRowRegion();
    table.Krow = {0.0, 0.0, 0.0, 0.0};
    EXPECT_EQ(stoneOil(0.0, std::numeric_limits<double>::infinity(), 0.1, 0.0, 0.1, 0.5), 0.0);
    EXPECT_EQ(Kro3Fn(withRegion(table), 0.1, 0.05, 1), 0.0);
}

TEST(ThreePhaseOil, IsTheWaterTableInARunWithoutGas) {
    FluidTables tables = samples::lightOil();
    tables.hasGas = false;
    EXPECT_DOUBLE_EQ(Kro3Fn(tables, 0.3, 0.4, 1), 0.7);
    EXPECT_DOUBLE_EQ(Kro3Fn(tables, 0.1, 0.0, 1), 1.1);
}

TEST(RelPerms, GiveTheBitsOfTheSingleFunctions) {
    const FluidTables tables = samples::lightOil();
    std::mt19937 random(7);
    std::uniform_real_distribution<double> saturation(-0.1, 1.1);
    for (int i = 0; i < 1000; ++i) {
        const double sw = saturation(random);
        const double sg = saturation(random);
        const RelPerms all = relPerms(tables.regions.front(), true, sw, sg);
        EXPECT_EQ(all.w, KrwFn(tables, sw, 1));
        EXPECT_EQ(all.o, Kro3Fn(tables, sw, sg, 1));
        EXPECT_EQ(all.g, KrgFn(tables, sg, 1));
    }
}

/// The row that bisection finds: the last, the end excepted, at or below the value.
std::size_t bisectedRow(const Column& axis, double v) {
    std::size_t low = 0;
    std::size_t high = axis.size() - 1;
    while (high - low > 1) {
        const std::size_t middle = (low + high) / 2;
        (axis[middle] <= v ? low : high) = middle;
    }
    return low;
}

TEST(PlaceOnAxis, FindsTheRowThatBisectionFinds) {
    std::mt19937 random(11);
    std::uniform_real_distribution<double> value(-0.1, 1.1);
    for (int rows = 2; rows < 60; rows += 3) {
        SaturationTable table = samples::fourRowRegion();
        table.SwAxis = {0.0, 1.0};
        while (static_cast<int>(table.SwAxis.size()) < rows) {
            const double v = 0.5 * (value(random) + 0.1);
            table.SwAxis.push_back(table.SwAxis.size() % 5 == 4 ? 0.3 + 1e-9 * v : v);  // some crowd together
        }
        std::sort(table.SwAxis.begin(), table.SwAxis.end());
        table.Krw = table.Krow = table.Pcow = Column(table.SwAxis.size(), 0.5);
        const FluidTables tables = withRegion(table);
        const SaturationTable& done = tables.regions.front();
        for (int i = 0; i < 500; ++i) {
            const double v = i < rows ? done.SwAxis[static_cast<std::size_t>(i)] : value(random);
            EXPECT_EQ(placeOnAxis(done.SwAxis, done.SwSearch, v).low, bisectedRow(done.SwAxis, v)) << v;
        }
    }
}

TEST(PlaceOnAxis, TakesAnyValue) {
    const SaturationTable table = samples::lightOil().regions.front();
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(placeOnAxis(table.SwAxis, table.SwSearch, infinity).low, 2U);
    EXPECT_EQ(placeOnAxis(table.SwAxis, table.SwSearch, -infinity).low, 0U);
    EXPECT_EQ(placeOnAxis(table.SwAxis, table.SwSearch, std::numeric_limits<double>::quiet_NaN()).low, 0U);
    EXPECT_EQ(relPerms(table, true, std::numeric_limits<double>::quiet_NaN(), 0.0).w, 0.0);
}

TEST(RelPermsAtCell, TakesTheSetThatTheCellIsFlaggedFor) {
    FluidTables tables = samples::lightOil();
    tables.RegionTableCell.assign(2, 1);
    tables.RegionTableCell[2] = 0;
    EXPECT_EQ(relPermsAtCell(tables, 1, 1, 0.5, 0.3).o, 0.0);
    const RelPerms single = relPermsAtCell(tables, 2, 1, 0.3, 0.2);
    EXPECT_NEAR(single.o, 0.2790861111, 1e-10);
    EXPECT_DOUBLE_EQ(single.w, 0.025);
    EXPECT_DOUBLE_EQ(single.g, 0.11);
    EXPECT_EQ(relPermsSingle(tables, 0.6, 0.4).o, 0.0);
}

TEST(CapillaryPressure, IsOffUpToTheSpanLimitOfTheFirstRegion) {
    SaturationTable table = samples::fourRowRegion();
    table.Pcow = {5e-9, 0.0, 0.0, 5e-9};
    EXPECT_EQ(PcowFn(withRegion(table), 0.2, 1), 0.0);
    table.Pcow = {6e-9, 0.0, 0.0, 6e-9};
    EXPECT_EQ(PcowFn(withRegion(table), 0.2, 1), 6e-9);
    table.Pcow = {0.0, 0.0, 0.0, 0.0};
    FluidTables tables = withRegion(table);
    table.Pcow = {4.0, 2.0, 1.0, 0.0};
    tables.regions.push_back(table);
    finishTables(tables);
    EXPECT_EQ(PcowFn(tables, 0.2, 2), 0.0);
}

TEST(CapillaryPressure, IsInterpolatedAndNotClipped) {
    SaturationTable table = samples::fourRowRegion();
    table.Pcow = {4.0, 2.0, 0.0, -1.0};
    table.Pcog = {0.0, 0.5, 1.5, 3.0};
    const FluidTables tables = withRegion(table);
    EXPECT_DOUBLE_EQ(PcowFn(tables, 0.3, 1), 3.0);
    EXPECT_NEAR(PcowFn(tables, 0.7, 1), -0.5, 1e-14);
    EXPECT_DOUBLE_EQ(PcogFn(tables, 0.2, 1), 1.0);
    EXPECT_NEAR(PcowSlope(tables, 0.3, 1), -10.0, 1e-8);
    EXPECT_NEAR(PcogSlope(tables, 0.2, 1), 5.0, 1e-8);
}

TEST(Slopes, LookForwardAndAtTheTopOfTheRangeBackward) {
    const FluidTables tables = samples::lightOil();
    EXPECT_NEAR(KrwSlope(tables, 0.3, 1), 0.25, 1e-8);
    EXPECT_NEAR(KrwSlope(tables, 0.6, 1), 1.25, 1e-8);
    EXPECT_NEAR(KrwSlope(tables, 0.8, 1), 1.25, 1e-8);
    EXPECT_NEAR(KrowSlope(tables, 0.3, 1), -2.0, 1e-8);
    EXPECT_NEAR(KrgSlope(tables, 0.1, 1), 0.9, 1e-8);
    EXPECT_NEAR(KrogSlope(tables, 0.6, 1), -2.0 / 3.0, 1e-8) << "1 - connate water - residual oil";
}

TEST(Slopes, OfGasTurnBackwardAtConnateWaterAndResidualOil) {
    SaturationTable table = samples::fourRowRegion();
    table.SgAxis = {0.0, 0.1, 0.6, 0.8};  // the range of gas ends at .6, on a kink
    const FluidTables tables = withRegion(table);
    EXPECT_NEAR(KrgSlope(tables, 0.6, 1), (0.2 - 0.02) / 0.5, 1e-8);
}

}  // namespace
}  // namespace kvr
