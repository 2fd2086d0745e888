#include "pressure/wells/well_controls.hpp"

#include "unit/pressure/well_samples.hpp"
#include "unit/quiet_console.hpp"

#include <cmath>
#include <gtest/gtest.h>

namespace kvr {
namespace {

ScheduleWell producer(const std::string& name, const std::string& control) {
    ScheduleWell well;
    well.name = name;
    well.headI = well.headJ = 1;
    well.control = control;
    well.hasControl = true;
    well.prodOil = 1000.0;
    well.prodWater = 200.0;
    well.prodGas = 3000.0;
    well.prodLiquid = 1200.0;
    well.prodResv = 2678.0;
    well.prodBhp = 1500.0;
    well.place = {"ECLIPSE.DATA", 70};
    return well;
}

ScheduleWell injector(const std::string& name, const std::string& fluid) {
    ScheduleWell well;
    well.name = name;
    well.headI = well.headJ = 1;
    well.control = "RATE";
    well.hasControl = well.isInjector = true;
    well.injType = fluid;
    well.injRate = 400.0;
    return well;
}

ScheduleCompletion completion(const std::string& name, int k1, int k2) {
    ScheduleCompletion row;
    row.wellName = name;
    row.k1 = k1;
    row.k2 = k2;
    row.diameter = 0.5;
    row.place = {"ECLIPSE.DATA", 77};
    return row;
}

struct Assignment {
    QuietConsole quiet;
    Console console = quiet.console;
    RunOptions options;
    UnitSystem units;
    Schedule schedule;
    GridModel grid = sample::column(4);
    WellRecord record;

    Assignment() {
        options.hasOil = options.hasWater = options.hasGas = true;
        schedule.steps.resize(1);
    }
    ScheduleStep& step() { return schedule.steps.back(); }
    void add(const ScheduleWell& well) {
        step().wells.push_back(well);
        step().completions.own().push_back(completion(well.name, 1, 2));
    }
    void assign(int index = 1) { AssignWells(index, console, options, units, schedule, grid, record); }
    Well& well(std::size_t n = 0) { return record.wells[n]; }
};

TEST(AssignWells, MatchesProducerControlsByTheirFirstLetters) {
    Assignment run;
    const char* words[] = {"ORAT", "wrat", "Grat", "LRAT", "RESV", "BHP"};
    for (const char* word : words) run.add(producer(word, word));
    run.assign();
    const char* controls[] = {"orat", "wrat", "grat", "lrat", "resv", "bhp"};
    const double targets[] = {-1000.0, -200.0, -3000.0, -1200.0, -2678.0, 0.0};
    for (std::size_t n = 0; n < 6; ++n) {
        EXPECT_EQ(run.well(n).WellControl, controls[n]);
        EXPECT_EQ(run.well(n).TargetRate, targets[n]);
        EXPECT_EQ(run.well(n).BhpLimit, 1500.0);
        EXPECT_FALSE(run.well(n).shut);
    }
    EXPECT_EQ(run.record.RateWellCount, 5);
    EXPECT_EQ(run.well(5).Bhp, 1500.0);
    EXPECT_EQ(run.well(0).InjectFluid, "");
}

TEST(AssignWells, TakesTheInjectedFluidFromItsFirstLetter) {
    Assignment run;
    for (const char* fluid : {"WATER", "gas", "Oil"}) run.add(injector(fluid, fluid));
    run.assign();
    EXPECT_EQ(run.well(0).InjectFluid, "wat");
    EXPECT_EQ(run.well(1).InjectFluid, "gas");
    EXPECT_EQ(run.well(2).InjectFluid, "oil");
    EXPECT_EQ(run.well(0).WellControl, "rate");
    EXPECT_EQ(run.well(0).TargetRate, 400.0);
    EXPECT_EQ(run.well(1).targetGas, 400.0);
    EXPECT_EQ(run.well(0).BhpLimit, 100000.0);
    EXPECT_EQ(run.record.RateWellCount, 3);
}

TEST(AssignWells, ListsConnectionsInTheOrderOfTheRows) {
    Assignment run;
    run.step().wells.push_back(producer("P", "ORAT"));
    run.step().completions.own() = {completion("P", 3, 4), completion("P", 1, 1)};
    run.step().completions.own()[0].skin = 2.0F;
    run.assign();
    ASSERT_EQ(run.well().connections.size(), 3U);
    EXPECT_EQ(run.well().connections[0].ConnCell, 3);
    EXPECT_EQ(run.well().connections[1].ConnCell, 4);
    EXPECT_EQ(run.well().connections[2].ConnCell, 1);
    EXPECT_EQ(run.well().connections[2].completion, 3);
    EXPECT_EQ(run.well().TopK, 1);
    EXPECT_EQ(run.well().BottomK, 4);
    EXPECT_EQ(run.well().WellRadius, 0.25);
    EXPECT_EQ(run.well().Skin, 2.0);
    EXPECT_EQ(run.well().ConnFactor, -1.0);
    EXPECT_NEAR(run.well().connections[2].ConnWI, 10.61592612, 1e-7);
}

TEST(AssignWells, LetsALaterRowReplaceACell) {
    Assignment run;
    run.step().wells.push_back(producer("P", "ORAT"));
    run.step().completions.own() = {completion("P", 1, 3), completion("P", 2, 2), completion("P", 3, 3)};
    run.step().completions.own()[1].status = "SHUT";
    run.step().completions.own()[2].transFactor = 5.0;
    run.assign();
    ASSERT_EQ(run.well().connections.size(), 2U);
    EXPECT_EQ(run.well().connections[0].ConnCell, 1);
    EXPECT_EQ(run.well().connections[1].ConnCell, 3);
    EXPECT_EQ(run.well().connections[1].ConnWI, 5.0);
}

TEST(AssignWells, KeepsShutWellsOnTheList) {
    Assignment run;
    for (const char* name : {"STATUS", "NORATE", "NOWORD", "CLOSED", "NEW"}) run.add(producer(name, "ORAT"));
    run.step().wells.own(0).status = "STOP";
    run.step().wells.own(1).prodOil = 0.0;
    run.step().wells.own(2).status = "SHUT";
    run.step().wells.own(2).control = "";
    run.step().completions.own()[3].status = "SHUT";
    run.step().wells.own(4).hasControl = false;
    run.assign();
    ASSERT_EQ(run.record.wells.size(), 5U);
    for (std::size_t n = 0; n < 5; ++n) EXPECT_TRUE(run.well(n).shut) << run.well(n).WellName;
    EXPECT_EQ(run.record.RateWellCount, 5) << "a shut rate well keeps its row";
    EXPECT_TRUE(run.well(3).connections.empty());
}

TEST(AssignWells, KeepsAWellThatIsNotCompletedYetShut) {
    Assignment run;
    run.step().wells.push_back(producer("LATER", "ORAT"));
    run.assign();
    EXPECT_TRUE(run.well().shut);
}

TEST(AssignWells, CarriesTheBottomHolePressureOfAnOpenRateWellIntoTheNextStep) {
    Assignment run;
    run.add(producer("P", "ORAT"));
    run.schedule.steps.push_back(run.schedule.steps[0]);
    run.assign();
    run.well().Bhp = 2345.0;
    run.assign(2);
    EXPECT_EQ(run.well().Bhp, 2345.0);
    run.assign(1);
    EXPECT_EQ(run.well().Bhp, 0.0) << "a run that starts over starts as the first time";
}

TEST(AssignWells, PutsAHeldWellBackUnderTheControlOfTheDeck) {
    Assignment run;
    run.add(producer("P", "ORAT"));
    run.schedule.steps.push_back(run.schedule.steps[0]);
    run.assign();
    run.well().WellControl = "bhp";
    run.record.RateWellCount = 0;
    run.assign(2);
    EXPECT_EQ(run.well().WellControl, "orat");
    EXPECT_EQ(run.record.RateWellCount, 1);
}

TEST(AssignWells, PrintsTheControlTableAndTheConnectionReport) {
    Assignment run;
    run.add(producer("PROD", "ORAT"));
    run.assign();
    const std::string screenText = run.quiet.screenText();
    EXPECT_EQ(screenText.find("-- WELL Data Assigned to KVR from WCNPRD,WCNINJ,COMPDAT --\n"), 0U);
    EXPECT_NE(screenText.find("      Name :: PROD"), std::string::npos);
    EXPECT_NE(screenText.find("      rate :: -1000"), std::string::npos);
    EXPECT_NE(screenText.find("      bhpc :: 1500"), std::string::npos);
    const std::string logText = run.quiet.logText();
    EXPECT_NE(logText.find("---------------  WELL to GRID Connection Information  --------------------\n"),
              std::string::npos);
    EXPECT_NE(logText.find(" NumCxn :: 2\n** CxnID ***** Loc_ijk **"), std::string::npos);
}

TEST(AssignWells, WarnsOfAnInjectedPhaseThatTheRunDoesNotHave) {
    Assignment run;
    run.options.hasGas = false;
    run.add(injector("G1", "GAS"));
    run.assign();
    EXPECT_NE(run.quiet.screenText().find("WARNING :: Well G1 injects gas"), std::string::npos);
}

using AssignWellsDeathTest = ::testing::Test;

/// Runs an assignment whose console is the process's own, so that the messages can be matched.
[[noreturn]] void assignToStandardError(Assignment& run) {
    run.console = consoleOnStandardError();
    run.assign();
    std::exit(0);
}
[[noreturn]] void assignLogToStandardError(Assignment& run) {
    run.console = {nullptr, stderr, nullptr};
    run.assign();
    std::exit(0);
}

TEST(AssignWellsDeathTest, StopsOnAnUnknownProducerControl) {
    Assignment run;
    run.add(producer("P", "XXX"));
    EXPECT_EXIT(assignToStandardError(run), ::testing::ExitedWithCode(1),
                "Invalid producer control type\nWell P: control 'XXX'");
    EXPECT_EXIT(assignLogToStandardError(run), ::testing::ExitedWithCode(1),
                "INVALID PRODUCER CONTROL TYPE\\.");
}

TEST(AssignWellsDeathTest, StopsOnAnUnknownInjectorControl) {
    Assignment run;
    run.add(injector("I", "WATER"));
    run.step().wells.own(0).control = "RESV";
    EXPECT_EXIT(assignToStandardError(run), ::testing::ExitedWithCode(1), "Invalid injector control type\n");
    EXPECT_EXIT(assignLogToStandardError(run), ::testing::ExitedWithCode(1),
                "INVALID INJECTOR CONTROL TYPE\\.");
}

TEST(AssignWellsDeathTest, StopsOnABoreWithoutRadius) {
    Assignment run;
    run.add(producer("P", "ORAT"));
    run.step().completions.own()[0].diameter = 0.0;
    EXPECT_EXIT(assignToStandardError(run), ::testing::ExitedWithCode(1),
                "ERROR :: Invailed Well Input Data \\(Location\\)\nWell P: I 1, J 1, K 1 to 2, "
                "diameter 0 ft in a grid of 1 by 1 by 4 cells\nFile ECLIPSE.DATA, line 77");
}

TEST(AssignWellsDeathTest, StopsOnAWellOutsideTheGrid) {
    struct Place {
        int headI, i, k1, k2;
    };
    for (const Place place : {Place{2, 0, 1, 1}, Place{0, 0, 1, 1}, Place{1, 2, 1, 1}, Place{1, -1, 1, 1},
                              Place{1, 0, 0, 1}, Place{1, 0, 1, 5}, Place{1, 0, 1, 2000000000}}) {
        Assignment run;
        run.add(producer("P", "ORAT"));
        run.step().wells.own(0).headI = place.headI;
        run.step().completions.own()[0].i = place.i;
        run.step().completions.own()[0].k1 = place.k1;
        run.step().completions.own()[0].k2 = place.k2;
        EXPECT_EXIT(assignToStandardError(run), ::testing::ExitedWithCode(1),
                    "ERROR :: Invailed Well Input Data \\(Location\\)\nWell P: ");
    }
}

TEST(AssignWells, LetAGivenPressureWaitBesideItsLimitsOfRates) {
    Assignment a;
    ScheduleWell well = producer("P", "BHP");
    a.schedule.steps[0].wells = {};
    a.schedule.steps[0].wells.push_back(well);
    a.schedule.steps[0].completions.own() = {completion("P", 1, 1)};
    a.assign();
    EXPECT_EQ(a.record.wells[0].deckControl, "bhp") << "observed rates are no limits";
    a.schedule.steps[0].wells.own(0).holdsLimits = true;
    a.assign();
    EXPECT_EQ(a.record.wells[0].WellControl, "bhp");
    EXPECT_EQ(a.record.wells[0].givenControl, "bhp");
    EXPECT_EQ(a.record.wells[0].deckControl, "orat");
    EXPECT_EQ(a.record.wells[0].TargetRate, -1000.0);
    EXPECT_EQ(a.record.wells[0].Bhp, 1500.0);
    EXPECT_EQ(a.record.RateWellCount, 0);
    EXPECT_FALSE(a.record.wells[0].shut);
}

TEST(AssignWells, KeepTheLimitThatHeldAWellWhereTheDeckStillHasIt) {
    Assignment a;
    a.add(producer("P", "ORAT"));
    a.step().wells.own(0).holdsLimits = true;
    a.schedule.steps.push_back(a.schedule.steps[0]);
    a.assign();
    EXPECT_EQ(a.well().WellControl, "orat");
    a.well().WellControl = a.well().deckControl = "lrat";
    const WellRecord held = a.record;
    a.assign(2);
    EXPECT_EQ(a.well().WellControl, "lrat");
    EXPECT_EQ(a.well().TargetRate, -1200.0);
    a.record = held;
    a.step().wells.own(0).prodLiquid = 0.0;
    a.assign(2);
    EXPECT_EQ(a.well().WellControl, "orat");
}

TEST(CheckLaterWells, StopsOnWhatALaterStepWouldStopOn) {
    Assignment a;
    a.schedule.steps[0].wells = {};
    a.schedule.steps[0].wells.push_back(producer("P", "ORAT"));
    a.schedule.steps[0].completions.own() = {completion("P", 1, 1)};
    a.schedule.steps.push_back(a.schedule.steps[0]);
    checkLaterWells(a.console, a.grid, a.schedule);  // nothing new, nothing wrong
    a.schedule.steps[1].completions.own().push_back(completion("P", 5, 5));
    EXPECT_EXIT(checkLaterWells(consoleOnStandardError(), a.grid, a.schedule), testing::ExitedWithCode(1),
                "Well P: I 1, J 1, K 5 to 5");
    a.schedule.steps[1] = a.schedule.steps[0];
    a.schedule.steps[1].wells.own(0).control = "NONSENSE";
    EXPECT_EXIT(checkLaterWells(consoleOnStandardError(), a.grid, a.schedule), testing::ExitedWithCode(1),
                "Invalid producer control type");
}

}  // namespace
}  // namespace kvr
