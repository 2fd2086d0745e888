#include "pressure/wells/lift_limits.hpp"

#include "unit/pressure/well_samples.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

/// Linear in everything: 1000 + rate/2 + (head - 200) + 100 water + 10 gas - lift.
LiftTable linear() {
    LiftTable table;
    table.number = 1;
    table.axes = {{{100, 500, 2000}, {200, 600}, {0, 1, 3}, {0, 5}, {0, 50}}};
    for (const double head : table.axes[LiftTable::Head])
        for (const double water : table.axes[LiftTable::Water])
            for (const double gas : table.axes[LiftTable::Gas])
                for (const double lift : table.axes[LiftTable::Lift])
                    for (const double rate : table.axes[LiftTable::Rate])
                        table.bhp.push_back(1000 + 0.5 * rate + (head - 200) + 100 * water + 10 * gas - lift);
    return table;
}

TEST(LiftTables, AreLinearBetweenTheirValuesAndBeyondThem) {
    const LiftTable table = linear();
    // 400 of oil, 200 of water, 1200 of gas: rate 600, water 0.5, gas 3
    EXPECT_NEAR(liftBhp(table, {400, 200, 1200}, 300, 20), 1000 + 300 + 100 + 50 + 30 - 20, 1e-9);
    EXPECT_NEAR(liftBhp(table, {4000, 0, 0}, 100, 0), 1000 + 2000 - 100, 1e-9);
    EXPECT_NEAR(liftBhp(table, {10, 0, 0}, 700, 0), 1000 + 5 + 500, 1e-9);
}

TEST(LiftTables, MeasureWhatTheirAxesName) {
    LiftTable table = linear();
    const LiftRates rates{400, 200, 1200};
    table.rate = LiftRate::Oil;
    table.water = LiftWater::Cut;
    table.gas = LiftGas::PerLiquid;
    EXPECT_NEAR(liftBhp(table, rates, 200, 0), 1000 + 200 + 100.0 / 3.0 + 20, 1e-9);
    table.rate = LiftRate::Gas;
    table.water = LiftWater::PerGas;
    table.gas = LiftGas::OilPerGas;
    EXPECT_NEAR(liftBhp(table, rates, 200, 0), 1000 + 600 + 100.0 / 6.0 + 10.0 / 3.0, 1e-9);
}

TEST(LiftTables, TellTheHeadOfABottomHolePressure) {
    const LiftTable table = linear();
    const LiftRates rates{400, 200, 1200};
    for (const double head : {100.0, 350.0, 900.0})
        EXPECT_NEAR(liftHead(table, rates, liftBhp(table, rates, head, 20), 20), head, 1e-9);
}

/// A well in a cell of 3000 psia that gives or takes 1 stb/day of oil for every psi.
struct OneCell {
    UnitSystem units;
    FluidTables tables;
    CellState state = sample::state(1);
    WellRecord wells;

    OneCell(const std::string& kind, LiftTable table, double head) {
        Well well = sample::well(kind, "bhp", 1);
        well.lift.ownLimit = well.BhpLimit = kind == "inj" ? 9000.0 : 100.0;
        well.lift.head = head;
        well.lift.table = std::make_shared<const LiftTable>(std::move(table));
        wells.wells = {std::move(well)};
    }
    Well& well() { return wells.wells[0]; }
    double limit() {
        settleLiftLimits(units, tables, state, 3000.0, wells);
        return well().BhpLimit;
    }
};

TEST(LiftLimits, AreWhereTheWellGivesWhatTheTableSays) {
    OneCell run("prd", linear(), 200);
    EXPECT_NEAR(run.limit(), 2500.0 / 1.5, 1e-6) << "b = 1000 + (3000 - b)/2";
    EXPECT_EQ(run.well().Bhp, run.well().BhpLimit);
}

TEST(LiftLimits, GiveWayToTheWellsOwnLimit) {
    OneCell run("prd", linear(), 200);
    run.well().lift.ownLimit = 2000.0;
    EXPECT_EQ(run.limit(), 2000.0);
}

TEST(LiftLimits, CountTheRatesWhileTheWellIsOn) {
    OneCell run("prd", linear(), 200);
    run.well().efficiency = 0.5;
    EXPECT_NEAR(run.limit(), 2000.0, 1e-6) << "b = 1000 + (3000 - b)";
}

TEST(LiftLimits, KeepAWellStillThatCannotLift) {
    OneCell run("prd", linear(), 2300);
    EXPECT_NEAR(run.limit(), 3000.0, 1e-9);
}

TEST(LiftLimits, TakeTheLowestOfTwoPressures) {
    LiftTable table = linear();
    // Heavy at low rates: 2950 without flow, 1500 at a rate of 1000, 2500 at one of 2000.
    table.axes = {{{0, 1000, 2000}, {200}, {0}, {0}, {0}}};
    table.bhp = {2950, 1500, 2500};
    OneCell run("prd", table, 200);
    EXPECT_NEAR(run.limit(), 1750.0, 1e-6) << "b = 1500 + (3000 - b - 1000)";
}

TEST(LiftLimits, OfInjectorsFallWithTheRate) {
    LiftTable table;
    table.ofInjector = true;
    table.rate = LiftRate::Water;
    table.axes = {{{0, 1000}, {100, 200}, {0}, {0}, {0}}};
    table.bhp = {4100, 3600, 4200, 3700};
    OneCell run("inj", table, 100);
    EXPECT_NEAR(run.limit(), 5600.0 / 1.5, 1e-6) << "b = 4100 - (b - 3000)/2";
    run.well().lift.ownLimit = 3500.0;
    EXPECT_EQ(run.limit(), 3500.0);
}

TEST(LiftLimits, ReportTheHeadOfWhatFlows) {
    OneCell run("prd", linear(), 200);
    run.well().Bhp = 1000 + 0.5 * 600 + 100;  // a head of 300
    run.well().WellQo = -600.0;
    EXPECT_NEAR(tubingHead(run.well()), 300.0, 1e-9);
    run.well().WellQo = 0.0;
    EXPECT_EQ(tubingHead(run.well()), 0.0);
}

}  // namespace
}  // namespace kvr
