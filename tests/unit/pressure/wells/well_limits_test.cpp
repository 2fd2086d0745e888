#include "pressure/wells/well_controls.hpp"
#include "pressure/wells/well_rates.hpp"
#include "unit/pressure/well_samples.hpp"
#include "unit/quiet_console.hpp"

#include <gtest/gtest.h>
#include <limits>

namespace kvr {
namespace {

WellRecord oneRateProducer() {
    WellRecord wells;
    wells.wells.push_back(sample::well("prd", "orat", 1));
    wells.wells[0].TargetRate = -2500.0;
    wells.wells[0].BhpLimit = 1000.0;
    wells.RateWellCount = 1;
    return wells;
}

TEST(SwitchWellsAtLimit, HoldsAProducerThatHasFallenPastItsLimit) {
    const QuietConsole quiet;
    WellRecord wells = oneRateProducer();
    wells.wells[0].Bhp = 900.0;
    EXPECT_TRUE(switchWellsAtLimit(quiet.console, wells));
    EXPECT_EQ(wells.wells[0].WellControl, "bhp");
    EXPECT_EQ(wells.wells[0].Bhp, 1000.0);
    EXPECT_EQ(wells.RateWellCount, 0);

    const CellState state = sample::state(1);
    PressureStage stage;
    UpdateWellRates(UnitSystem(), sample::column(1), FluidTables(), state, wells, stage);
    EXPECT_EQ(wells.wells[0].WellQo, -2000.0) << "below the target of 2500";

    const std::string line = " WELL CONTROL :: PROD : orat -> bhp, BHP limit 1000 PSIA\n";
    EXPECT_EQ(quiet.screenText(), line);
    EXPECT_EQ(quiet.logText(), line);
    EXPECT_FALSE(switchWellsAtLimit(quiet.console, wells)) << "nothing left to switch";
}

TEST(SwitchWellsAtLimit, HoldsAnInjectorThatHasRisenPastItsLimit) {
    const QuietConsole quiet;
    WellRecord wells;
    wells.wells.push_back(sample::well("inj", "rate", 1));
    wells.wells[0].BhpLimit = 4000.0;
    wells.wells[0].Bhp = 4000.0;
    wells.RateWellCount = 1;
    EXPECT_FALSE(switchWellsAtLimit(quiet.console, wells)) << "at the limit is not past it";
    wells.wells[0].Bhp = 4000.1;
    EXPECT_TRUE(switchWellsAtLimit(quiet.console, wells));
    EXPECT_EQ(wells.wells[0].WellControl, "bhp");
}

TEST(SwitchWellsAtLimit, LeavesShutWellsAlone) {
    WellRecord wells = oneRateProducer();
    wells.wells[0].Bhp = 900.0;
    wells.wells[0].shut = true;
    EXPECT_FALSE(switchWellsAtLimit(QuietConsole().console, wells));
    EXPECT_EQ(wells.RateWellCount, 1);
}

TEST(ReleaseWellsFromLimit, GivesTheRateBackOnceTheLimitYieldsMoreThanTheTarget) {
    const QuietConsole quiet;
    WellRecord wells = oneRateProducer();
    wells.wells[0].WellControl = "bhp";
    wells.wells[0].Bhp = 1000.0;
    wells.RateWellCount = 0;
    wells.wells[0].rateAtDeckControl = -2400.0;
    releaseWellsFromLimit(quiet.console, wells);
    EXPECT_EQ(wells.wells[0].WellControl, "bhp");
    wells.wells[0].rateAtDeckControl = -2600.0;
    wells.wells[0].WellQo = -100.0;  // what transport made of it does not count
    releaseWellsFromLimit(quiet.console, wells);
    EXPECT_EQ(wells.wells[0].WellControl, "orat");
    EXPECT_EQ(wells.RateWellCount, 1);
    EXPECT_EQ(quiet.screenText(), " WELL CONTROL :: PROD : bhp -> orat, BHP limit 1000 PSIA\n");
}

TEST(ReleaseWellsFromLimit, LeavesAWellThatTheDeckHoldsAtItsPressure) {
    WellRecord wells = oneRateProducer();
    wells.wells[0].WellControl = wells.wells[0].deckControl = "bhp";
    wells.wells[0].rateAtDeckControl = -1e9;
    releaseWellsFromLimit(QuietConsole().console, wells);
    EXPECT_EQ(wells.wells[0].WellControl, "bhp");
}

TEST(InitialiseBottomHolePressures, StartsFromTheCellsOrTheLimit) {
    WellRecord wells;
    wells.wells = {sample::well("prd", "orat", 2), sample::well("prd", "bhp", 2),
                   sample::well("prd", "orat", 2)};
    wells.wells[1].BhpLimit = 1500.0;
    wells.wells[2].Bhp = 2222.0;
    CellState state = sample::state(2);
    state.Pressure[2] = 3100.0;
    initialiseBottomHolePressures(state, wells);
    EXPECT_EQ(wells.wells[0].Bhp, 3050.0);
    EXPECT_EQ(wells.wells[1].Bhp, 1500.0);
    EXPECT_EQ(wells.wells[2].Bhp, 2222.0) << "a well that had a value keeps it";
}

TEST(RepairBottomHolePressures, PutsABadValueBesideTheCellsOnce) {
    const QuietConsole quiet;
    WellRecord wells;
    wells.wells = {sample::well("prd", "orat", 1), sample::well("inj", "rate", 1)};
    wells.wells[0].Bhp = -3.0;
    wells.wells[1].Bhp = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(repairBottomHolePressures(quiet.console, sample::state(1), wells));
    EXPECT_EQ(wells.wells[0].Bhp, 2500.0);
    EXPECT_EQ(wells.wells[1].Bhp, 3500.0);
    EXPECT_EQ(quiet.screenText(),
              " ERROR :: Floating point of BHP -> -3\n          Change BHP ...        -> 2500\n"
              " ERROR :: Floating point of BHP -> nan\n          Change BHP ...        -> 3500\n");
}

TEST(RepairBottomHolePressures, FailsTheSolveWhenAValueStaysBad) {
    const QuietConsole quiet;
    WellRecord wells;
    wells.wells = {sample::well("prd", "orat", 1)};
    CellState state = sample::state(1);
    state.Pressure[1] = 300.0;
    wells.wells[0].Bhp = 0.0;
    EXPECT_TRUE(repairBottomHolePressures(quiet.console, state, wells));
    EXPECT_EQ(wells.wells[0].Bhp, 14.6);
    wells.wells[0].Bhp = -1.0;
    EXPECT_FALSE(repairBottomHolePressures(quiet.console, state, wells));
    EXPECT_NE(quiet.screenText().find(" Error :: Cannot hold BHP..\n"), std::string::npos);
    EXPECT_NE(quiet.logText().find(" ERROR :: CANNOT HOLD BHP..\n"), std::string::npos);
    clearBottomHoleResets(wells);
    EXPECT_TRUE(repairBottomHolePressures(quiet.console, state, wells));
}

}  // namespace
}  // namespace kvr
