#include "implicit/well_switching.hpp"

#include "implicit/well_borders.hpp"
#include "unit/pressure/well_samples.hpp"
#include "unit/quiet_console.hpp"

#include <gtest/gtest.h>

using namespace kvr;

namespace {

struct Bench {
    explicit Bench(const std::string& kind, const std::string& control) {
        wells.wells.push_back(sample::well(kind, control, 1));
        wells.RateWellCount = 1;
        work.returns.assign(1, 0);
        well().TargetRate = kind == "inj" ? 100.0 : -100.0;
        well().BhpLimit = kind == "inj" ? 5000.0 : 1000.0;
    }
    Well& well() { return wells.wells[0]; }
    bool update(double bhp, double rate) {
        well().Bhp = bhp;
        clipToLimits(wells);
        well().rateAtDeckControl = rate;
        return switchWells(quiet.console, wells, work);
    }

    QuietConsole quiet;
    WellRecord wells;
    ImplicitWork work;
};

}  // namespace

TEST(WellSwitching, HoldsAProducerThatGivesTooLittleAtItsLimit) {
    Bench bench("prd", "orat");
    EXPECT_TRUE(bench.update(400.0, -60.0));
    EXPECT_EQ(bench.well().WellControl, "bhp");
    EXPECT_EQ(bench.well().Bhp, 1000.0);
    EXPECT_EQ(bench.wells.RateWellCount, 0);
    EXPECT_EQ(bench.quiet.screenText(), " WELL CONTROL :: PROD : orat -> bhp, BHP limit 1000 PSIA\n");
}

TEST(WellSwitching, KeepsTheRateOfAWellThatAnIterateTookTooFar) {
    Bench bench("prd", "orat");
    EXPECT_FALSE(bench.update(-2000.0, -300.0));
    EXPECT_EQ(bench.well().WellControl, "orat");
    EXPECT_EQ(bench.well().Bhp, 1000.0);
}

TEST(WellSwitching, HoldsAnInjectorAtItsUpperLimit) {
    Bench bench("inj", "rate");
    EXPECT_FALSE(bench.update(4999.0, 60.0));
    EXPECT_TRUE(bench.update(6000.0, 60.0));
    EXPECT_EQ(bench.well().WellControl, "bhp");
    EXPECT_EQ(bench.well().Bhp, 5000.0);
}

TEST(WellSwitching, ReturnsAWellFourTimesInAnAttemptAndNoMore) {
    Bench bench("prd", "orat");
    for (int n = 0; n < 4; ++n) {
        EXPECT_TRUE(bench.update(900.0, -60.0));
        EXPECT_TRUE(bench.update(1000.0, -150.0));
        EXPECT_EQ(bench.well().WellControl, "orat");
    }
    EXPECT_TRUE(bench.update(900.0, -60.0));
    EXPECT_FALSE(bench.update(1000.0, -150.0));
    EXPECT_EQ(bench.well().WellControl, "bhp");
}

TEST(WellSwitching, LeavesWellsThatTheDeckHoldsAtAPressureAndShutOnes) {
    Bench bench("prd", "bhp");
    bench.wells.RateWellCount = 0;
    EXPECT_FALSE(bench.update(1000.0, 0.0));
    Bench shut("prd", "orat");
    shut.well().shut = true;
    EXPECT_FALSE(shut.update(500.0, 0.0));
    EXPECT_EQ(shut.well().Bhp, 500.0);
}

TEST(ControlShares, NameTheRatesThatAControlHolds) {
    struct Case {
        const char* control;
        double rate;
    };
    for (const Case& c : {Case{"orat", 2.0}, Case{"grat", 40.0}, Case{"lrat", 3.0}, Case{"wrat", 43.0},
                          Case{"rate", 43.0}, Case{"resv", 500.0}, Case{"bhp", 0.0}}) {
        Well well = sample::well("prd", c.control, 1);
        well.WellQw = 1.0;
        well.WellQo = 2.0;
        well.WellQg = 40.0;
        well.reservoirRate = 500.0;
        EXPECT_EQ(controlledRate(well), c.rate) << c.control;
    }
}
