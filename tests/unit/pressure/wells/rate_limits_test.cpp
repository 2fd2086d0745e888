#include "pressure/wells/rate_limits.hpp"

#include "unit/pressure/well_samples.hpp"
#include "unit/quiet_console.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

/// A producer under an oil target of 100 with limits of 60 of water and 130 of liquid.
Well limited() {
    Well well = sample::well("prd", "orat", 1);
    well.givenControl = "orat";
    well.holdsLimits = true;
    well.targetOil = well.TargetRate = -100.0;
    well.targetWater = -60.0;
    well.targetLiquid = -130.0;
    return well;
}

Well flowing(double oil, double water) {
    Well well = limited();
    well.WellQo = -oil;
    well.WellQw = -water;
    return well;
}

TEST(RateLimits, ArePassedByTheLargestShare) {
    EXPECT_EQ(passedLimit(flowing(100, 20)).share, 0.0);
    EXPECT_EQ(passedLimit(flowing(100, 33)).limit.control, "lrat");
    EXPECT_NEAR(passedLimit(flowing(100, 33)).share, 3.0 / 130.0, 1e-12);
    EXPECT_EQ(passedLimit(flowing(40, 66)).limit.control, "wlim");
    EXPECT_NEAR(passedLimit(flowing(40, 66)).share, 0.1, 1e-12);
}

TEST(RateLimits, AreThoseOfTheControlAloneForObservedRates) {
    Well well = flowing(100, 200);
    well.holdsLimits = false;
    EXPECT_EQ(passedLimit(well).share, 0.0);
    EXPECT_FALSE(rateLimit(well, "lrat").has_value());
    EXPECT_EQ(rateLimit(well, "orat")->target, -100.0);
}

TEST(RateLimits, OfWaterAreTheControlWhereTheDeckControlsIt) {
    Well well = flowing(10, 10);
    well.givenControl = well.deckControl = "wrat";
    EXPECT_FALSE(rateLimit(well, "wlim").has_value());
    EXPECT_TRUE(rateLimit(well, "wrat").has_value());
    EXPECT_EQ(heldRate(well, "wrat"), -20.0) << "the sum of all";
    EXPECT_EQ(heldRate(well, "wlim"), -10.0);
}

struct StepBegin {
    QuietConsole quiet;
    UnitSystem units;
    FluidTables tables;
    CellState state = sample::state(1);
    WellRecord wells;

    explicit StepBegin(Well well) { wells.wells = {std::move(well)}; }
    const Well& begun() {
        holdMostRestrictive(quiet.console, units, tables, state, 3000.0, wells);
        return wells.wells[0];
    }
};

TEST(RateLimits, TakeOverWhenTheStepBeforeHasPassedThem) {
    StepBegin step(flowing(100, 33));
    EXPECT_EQ(step.begun().WellControl, "lrat");
    EXPECT_EQ(step.begun().deckControl, "lrat");
    EXPECT_EQ(step.begun().TargetRate, -130.0);
    EXPECT_NE(step.quiet.screenText().find("orat -> lrat"), std::string::npos);
}

TEST(RateLimits, GiveTheControlBackWhenItsOwnRateIsPassed) {
    Well well = flowing(101, 20);
    well.WellControl = well.deckControl = "lrat";
    well.TargetRate = -130.0;
    StepBegin step(well);
    EXPECT_EQ(step.begun().deckControl, "orat");
    EXPECT_EQ(step.begun().TargetRate, -100.0);
}

TEST(RateLimits, StayWithinAThousandthAndWhereTheControlIsFurtherPast) {
    EXPECT_EQ(StepBegin(flowing(100, 30.05)).begun().deckControl, "orat");
    EXPECT_EQ(StepBegin(flowing(105, 30)).begun().deckControl, "orat");
}

TEST(RateLimits, LeaveAWellAtItsPressureLimitThere) {
    Well well = flowing(100, 33);
    well.WellControl = "bhp";
    StepBegin step(well);
    EXPECT_EQ(step.begun().WellControl, "bhp");
    EXPECT_EQ(step.begun().deckControl, "lrat");
}

TEST(RateLimits, KeepAControlThatWasChosenForThePass) {
    Well well = flowing(101, 20);
    well.WellControl = well.deckControl = "lrat";
    well.TargetRate = -130.0;
    well.controlChosen = true;
    StepBegin step(well);
    EXPECT_EQ(step.begun().deckControl, "lrat");
    EXPECT_EQ(step.begun().deckControl, "orat") << "the next step chooses again";
}

TEST(RateLimits, GoByTheMobilitiesOfTheCellBeforeAnythingFlows) {
    // 1 stb/day/psi of oil and 2 of water: 100 of oil need 100 psi, 60 of water 30, 130 of liquid 43.
    StepBegin step(limited());
    step.state.LambdaO[1] = 1.0;
    step.state.LambdaW[1] = 2.0;
    EXPECT_EQ(step.begun().deckControl, "wlim");
    StepBegin dry(limited());
    EXPECT_EQ(dry.begun().deckControl, "orat") << "without water nothing else is reached";
}

}  // namespace
}  // namespace kvr
