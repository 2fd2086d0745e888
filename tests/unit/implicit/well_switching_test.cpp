#include "implicit/well_switching.hpp"

#include "unit/pressure/well_samples.hpp"
#include "unit/quiet_console.hpp"

#include <gtest/gtest.h>

using namespace kvr;

namespace {

/// One well in a cell of oil at 3000 psia, 1 stb/day/psi, target 100 stb/day.
struct Bench {
    explicit Bench(const std::string& kind, const std::string& control) : state(sample::state(1)) {
        wells.wells.push_back(sample::well(kind, control, 1));
        wells.RateWellCount = control == "bhp" ? 0 : 1;
        work.switchesOfWell.assign(1, 0);
        work.switchesOfRate.assign(1, 0);
        well().TargetRate = kind == "inj" ? 100.0 : -100.0;
        well().BhpLimit = kind == "inj" ? 5000.0 : 1000.0;
        well().Bhp = 2222.0;
    }
    Well& well() { return wells.wells[0]; }
    bool settle(double cellPressure, double mobility = 1.0) {
        state.Pressure[1] = cellPressure;
        state.LambdaO[1] = mobility;
        return settleWells(units, tables, state, cellPressure, wells, work);
    }

    UnitSystem units;
    FluidTables tables;
    CellState state;
    WellRecord wells;
    ImplicitWork work;
};

}  // namespace

TEST(SettleWells, GiveARateWellThePressureOfItsTarget) {
    Bench producer("prd", "orat");
    EXPECT_FALSE(producer.settle(3000.0));
    EXPECT_DOUBLE_EQ(producer.well().Bhp, 2900.0);
    Bench injector("inj", "rate");
    EXPECT_FALSE(injector.settle(3000.0));
    EXPECT_DOUBLE_EQ(injector.well().Bhp, 3100.0);
}

TEST(SettleWells, HoldAWellAtItsLimitThatLeavesTooLittle) {
    Bench producer("prd", "orat");
    EXPECT_TRUE(producer.settle(1060.0));
    EXPECT_EQ(producer.well().WellControl, "bhp");
    EXPECT_EQ(producer.well().Bhp, 1000.0);
    EXPECT_EQ(producer.wells.RateWellCount, 0);
    Bench injector("inj", "rate");
    EXPECT_TRUE(injector.settle(4950.0));
    EXPECT_EQ(injector.well().WellControl, "bhp");
    EXPECT_EQ(injector.well().Bhp, 5000.0);
}

TEST(SettleWells, HoldAWellAtItsLimitWhoseCellIsPastIt) {
    Bench bench("prd", "orat");
    EXPECT_TRUE(bench.settle(900.0));
    EXPECT_EQ(bench.well().WellControl, "bhp");
    EXPECT_EQ(bench.well().Bhp, 1000.0);
    EXPECT_TRUE(bench.settle(1200.0));
    EXPECT_EQ(bench.well().WellControl, "orat");
    EXPECT_DOUBLE_EQ(bench.well().Bhp, 1100.0);
    EXPECT_EQ(bench.wells.RateWellCount, 1);
}

TEST(SettleWells, HoldAWellAtItsLimitThatNoPressureWouldMove) {
    Bench bench("prd", "orat");
    EXPECT_TRUE(bench.settle(3000.0, 0.0));
    EXPECT_EQ(bench.well().WellControl, "bhp");
    EXPECT_EQ(bench.well().Bhp, 1000.0);
}

TEST(SettleWells, LeaveItWhereItIsWithinRoundingOfBoth) {
    Bench bench("prd", "orat");
    EXPECT_FALSE(bench.settle(1100.0 - 1e-6));
    EXPECT_EQ(bench.well().Bhp, 1000.0) << "a ten-millionth of a psi past it: clipped";
    EXPECT_TRUE(bench.settle(1099.0));
    EXPECT_FALSE(bench.settle(1100.0 + 1e-6));
    EXPECT_EQ(bench.well().WellControl, "bhp");
}

TEST(SettleWells, HoldAWellThatKeepsChangingAtItsLimitUntilTheCellsStand) {
    Bench bench("prd", "orat");
    for (int n = 0; n < 3; ++n) {
        EXPECT_TRUE(bench.settle(1050.0));
        EXPECT_TRUE(bench.settle(1200.0));
    }
    EXPECT_TRUE(bench.settle(1200.0)) << "six changes were free";
    EXPECT_EQ(bench.well().WellControl, "bhp");
    EXPECT_FALSE(bench.settle(1300.0));
    bench.well().WellQo = -300.0;
    EXPECT_TRUE(releaseHeldWells(bench.wells, bench.work));
    EXPECT_TRUE(bench.settle(1300.0));
    EXPECT_DOUBLE_EQ(bench.well().Bhp, 1200.0);
    EXPECT_FALSE(bench.settle(1050.0)) << "for the rest of the attempt";
    EXPECT_DOUBLE_EQ(bench.well().Bhp, 950.0);
    bench.well().WellQo = -100.0;
    EXPECT_FALSE(wellsObey(bench.wells));
}

TEST(SettleWells, StayHeldWhereTheLimitIsRight) {
    Bench bench("prd", "orat");
    for (int n = 0; n < 3; ++n) {
        bench.settle(1050.0);
        bench.settle(1200.0);
    }
    bench.settle(1050.0);
    bench.well().WellQo = -50.0;
    EXPECT_FALSE(releaseHeldWells(bench.wells, bench.work));
    EXPECT_TRUE(wellsObey(bench.wells));
}

TEST(SettleWells, LeaveWellsThatTheDeckHoldsAtAPressureAndShutOnes) {
    Bench bench("prd", "bhp");
    EXPECT_FALSE(bench.settle(3000.0));
    EXPECT_EQ(bench.well().Bhp, 2222.0);
    Bench shut("prd", "orat");
    shut.well().shut = true;
    EXPECT_FALSE(shut.settle(3000.0));
    EXPECT_EQ(shut.well().Bhp, 2222.0);
}

TEST(WellsObey, WhenRateWellsGiveTheirTargetAndHeldOnesNoMore) {
    struct Case {
        const char* control;
        double rate, bhp;
        bool obeys;
    };
    for (const Case& c : {Case{"orat", -100.0, 1500.0, true}, Case{"orat", -100.00005, 1500.0, true},
                          Case{"orat", -100.01, 1500.0, false}, Case{"orat", -99.99, 1500.0, false},
                          Case{"orat", -100.0, 999.0, false}, Case{"bhp", -40.0, 1000.0, true},
                          Case{"bhp", -100.01, 1000.0, false}}) {
        Bench bench("prd", "orat");
        bench.well().WellControl = c.control;
        bench.well().WellQo = c.rate;
        bench.well().Bhp = c.bhp;
        EXPECT_EQ(wellsObey(bench.wells), c.obeys) << c.control << ' ' << c.rate << ' ' << c.bhp;
    }
}

TEST(TellSwitches, WritesALineForEachWellThatEndsOnAnotherControl) {
    Bench bench("prd", "orat");
    const WellRecord before = bench.wells;
    QuietConsole quiet;
    tellSwitches(quiet.console, before, bench.wells);
    EXPECT_EQ(quiet.screenText(), "");
    bench.settle(900.0);
    tellSwitches(quiet.console, before, bench.wells);
    EXPECT_EQ(quiet.screenText(), " WELL CONTROL :: PROD : orat -> bhp, BHP limit 1000 PSIA\n");
}

TEST(SettleWells, HoldTheRateThatTakesTheLeastDrawdown) {
    // 1 stb/day/psi of oil and of water: 100 of oil need 100 psi, 80 of water 80, 150 of liquid 75.
    Bench bench("prd", "orat");
    Well& well = bench.well();
    well.givenControl = "orat";
    well.holdsLimits = true;
    well.targetOil = -100.0;
    well.targetWater = -80.0;
    well.targetLiquid = -150.0;
    bench.state.LambdaW[1] = 1.0;
    EXPECT_TRUE(bench.settle(3000.0));
    EXPECT_EQ(well.WellControl, "lrat");
    EXPECT_DOUBLE_EQ(well.Bhp, 2925.0);
    bench.state.LambdaW[1] = 4.0;
    EXPECT_TRUE(bench.settle(3000.0));
    EXPECT_EQ(well.WellControl, "wlim");
    EXPECT_DOUBLE_EQ(well.Bhp, 2980.0);
    bench.state.LambdaW[1] = 0.0;
    EXPECT_TRUE(bench.settle(3000.0));
    EXPECT_EQ(well.WellControl, "orat");
    EXPECT_FALSE(bench.settle(3000.0)) << "nothing changes any more";
}
