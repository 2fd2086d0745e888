#include "deck/sections/schedule_times.hpp"

#include "unit/deck/sections/schedule_bench.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

using Times = std::vector<double>;

TEST(Tstep, RepeatsALength) {
    ScheduleBench run("TSTEP\n5*30.0 /\n");
    run.readAndClose();
    EXPECT_EQ(run.schedule.stepEnd, (Times{0, 30, 60, 90, 120, 150}));
    EXPECT_EQ(run.schedule.reportEnd, (Times{30, 60, 90, 120, 150}));
    EXPECT_EQ(run.schedule.wellEventTime, (Times{0}));
    EXPECT_EQ(run.schedule.endTime, 150.0);
    EXPECT_EQ(run.clock.endTime, 150.0);
    EXPECT_EQ(run.options.solverPhaseEnd, (Times{150}));
    EXPECT_EQ(run.step().stepCount, 5);
    EXPECT_EQ(run.step().period, 150.0);
    EXPECT_TRUE(run.deck.printed(
        "READ -> TSTEP\n-> Reporting Step :: 5\n-> Well History   :: 1\n-> Cumulative Tim :: 150\n"));
    EXPECT_TRUE(run.deck.printed("-------- Report Date and Time Steps --------\nTIME: 30 STEP: 1\n"));
}

TEST(Tstep, EndsAtAZero) {
    ScheduleBench run("TSTEP\n10 0 20 /\n");
    run.readAndClose();
    EXPECT_EQ(run.schedule.stepLength, (Times{10}));
    EXPECT_TRUE(run.deck.printed("WARNING :: STEP LENGTH 0 ENDS THE LIST, 1 BEHIND IT ARE DROPPED\n"));
    ScheduleBench last("TSTEP\n10 0 /\n");
    last.readAndClose();
    EXPECT_FALSE(last.deck.printed("STEP LENGTH"));
}

TEST(Tstep, EndsWithALineAtANegativeOrAbsurdLength) {
    for (const char* text : {"TSTEP\n10 -5 20 /\n", "TSTEP\n10 1e300 20 /\n"}) {
        ScheduleBench run(text);
        run.readAndClose();
        EXPECT_EQ(run.schedule.stepLength, (Times{10}));
        EXPECT_TRUE(run.deck.printed("WARNING :: STEP LENGTH"));
        EXPECT_TRUE(run.deck.printed("File TEST.DATA, line 2"));
    }
}

TEST(ScheduleSource, HasWhatADeckSaysBetweenItsTimes) {
    const std::string fault = "MULTFLT\n-- opens\n'F' 0.5 / half\n/\n", other = "UNHEARD\n 1 2 3 /\n";
    ScheduleBench run(TwoWells + "-- first\nTSTEP\n10 /\n" + fault +
                      "DATES\n1 'FEB' 2000 /\n/\nTSTEP\n1 /\n" + other + "TSTEP\n5 /\n");
    run.readAndClose();
    ASSERT_GE(run.schedule.steps.size(), 4U);
    EXPECT_EQ(run.schedule.steps[0].source, TwoWells + "-- first\n");
    EXPECT_EQ(run.schedule.steps[1].source, fault);
    EXPECT_EQ(run.schedule.steps[2].source, "");
    EXPECT_EQ(run.schedule.steps[3].source, other);
    EXPECT_TRUE(run.schedule.steps[3].sourceHasWells);
}

TEST(ScheduleSource, LeavesOutWellsThatOtherProgramsCannotRead) {
    ScheduleBench run(TwoWells +
                      "WELSPEC\n'W' 1 1 1 1 0.5 0 'INJ' 100 'RATE' /\n/\nDRSDT\n0 /\nTSTEP\n10 /\n");
    run.readAndClose();
    EXPECT_EQ(run.schedule.steps[0].source, TwoWells + "DRSDT\n0 /\n");
    EXPECT_FALSE(run.schedule.steps[0].sourceHasWells);
}

TEST(Tstep, AfterTstepCopiesTheStep) {
    ScheduleBench run(TwoWells + "TSTEP\n10 /\nTSTEP\n20 /\n");
    run.readAndClose();
    ASSERT_EQ(run.schedule.steps.size(), 2U);
    EXPECT_EQ(run.schedule.wellEventTime, (Times{0, 10}));
    EXPECT_EQ(run.schedule.steps[1].wells.size(), 2U);
    EXPECT_EQ(run.schedule.steps[1].stepCount, 1);
    EXPECT_EQ(run.schedule.steps[1].period, 20.0);
    EXPECT_EQ(run.schedule.steps[1].cumulativeSteps, 2);
}

TEST(Tstep, KeepsTheDataOfTheStepThatItClosed) {
    ScheduleBench run(
        TwoWells +
        "WCONPROD\nP1 OPEN ORAT 100 /\n/\nTSTEP\n10 /\nWCONPROD\nP1 OPEN ORAT 50 /\n/\nTSTEP\n10 /\n");
    run.readAndClose();
    EXPECT_EQ(run.schedule.steps[0].wells[0].prodOil, 100.0);
    EXPECT_EQ(run.schedule.steps[1].wells[0].prodOil, 50.0);
    EXPECT_EQ(run.schedule.steps[1].wells.size(), 2U);
}

TEST(Tstep, HoldsOnceWhatAnEventLeavesAsItWas) {
    ScheduleBench run(
        TwoWells +
        "COMPDAT\nP1 10 10 1 3 OPEN /\n/\nWCONPROD\nP* OPEN ORAT 100 /\n/\nTSTEP\n10 /\n"
        "WCONPROD\nP1 OPEN ORAT 50 /\n/\nTSTEP\n10 /\nCOMPDAT\nP2 1 1 1 1 OPEN /\n/\nTSTEP\n10 /\n");
    run.readAndClose();
    const std::vector<ScheduleStep>& steps = run.schedule.steps;
    EXPECT_EQ(&steps[0].completions.view(), &steps[1].completions.view());
    EXPECT_NE(&steps[1].completions.view(), &steps[2].completions.view());
    EXPECT_EQ(steps[1].completions.size(), 1U);
    EXPECT_EQ(steps[2].completions.size(), 2U);
    EXPECT_NE(&steps[0].wells[0], &steps[1].wells[0]);
    EXPECT_EQ(&steps[0].wells[1], &steps[1].wells[1]);
    EXPECT_EQ(&steps[1].wells[0], &steps[2].wells[0]);
}

TEST(Tstep, WritesTheListToBothUnitCopies) {
    ScheduleBench run("TSTEP\n2*30.5 /\n");
    run.deck.reader.outputMetric = true;
    run.read();
    EXPECT_NE(contentsOf(run.deck.sinks.metricCopy).find("TSTEP\n30.5 30.5 /\n"), std::string::npos);
    EXPECT_NE(contentsOf(run.deck.sinks.fieldCopy).find("TSTEP\n30.5 30.5 /\n"), std::string::npos);
}

void readOnStandardError(const char* text) {
    ScheduleBench run(text);
    run.deck.speakToStandardError();
    run.read();
    std::exit(0);
}

TEST(TstepDeathTest, StopsOnMoreLengthsThanAListMayHold) {
    EXPECT_EXIT(readOnStandardError("TSTEP\n10001*1 /\n"), ::testing::ExitedWithCode(1),
                "ERROR :: MORE THAN 10000 STEP LENGTHS IN ONE LIST\nFile TEST.DATA, line 2, keyword TSTEP");
    EXPECT_EXIT(readOnStandardError("TSTEP\n2000000000*1 /\n"), ::testing::ExitedWithCode(1),
                "ERROR :: MORE THAN 10000");
    EXPECT_EXIT(readOnStandardError("TSTEP\n10000*1\n2 /\n"), ::testing::ExitedWithCode(1),
                "ERROR :: MORE THAN 10000");
}

TEST(Tstep, MayHoldTenThousandLengthsWithTheSlashOnTheNextLine) {
    ScheduleBench run("TSTEP\n10000*1\n/\nTSTEP\n3 /\n");
    run.readAndClose();
    EXPECT_EQ(run.schedule.stepLength.size(), 10001U);
}

/// Days between rows, from 1 January 2000 unless the start is given.
Times datesFrom(const std::string& rows, int day = 1, int month = 1, int year = 2000) {
    ScheduleBench run("DATES\n" + rows + "/\n");
    run.clock.day = day;
    run.clock.month = month;
    run.clock.year = year;
    run.readAndClose();
    return run.schedule.stepLength;
}

TEST(Dates, CountTheDaysBetweenRows) {
    EXPECT_EQ(datesFrom("1 'FEB' 2000 /\n1 'MAR' 2000 /\n"), (Times{31, 29}));
    EXPECT_EQ(datesFrom("1 MAR 2001 /\n", 1, 2, 2001), (Times{28}));
    EXPECT_EQ(datesFrom("1 JAN 2010 /\n", 31, 12, 1999), (Times{3654}));
    EXPECT_EQ(datesFrom("1 JAN 1990 /\n", 15, 10, 1986), (Times{1174}));
}

TEST(Dates, EndAtADateThatIsNotLater) {
    EXPECT_EQ(datesFrom("1 JAN 2000 /\n1 FEB 2000 /\n"), (Times{0}))
        << "one step of length 0, for the warning";
    EXPECT_EQ(datesFrom("1 FEB 2000 /\n1 FEB 2000 /\n1 MAR 2000 /\n"), (Times{31}));
}

TEST(Dates, SayThatAnEarlierDateEndsTheList) {
    ScheduleBench run("DATES\n1 FEB 2000 /\n31 JAN 2000 /\n1 MAR 2000 /\n/\n");
    run.read();
    EXPECT_EQ(run.schedule.stepLength, (Times{31}));
    EXPECT_TRUE(run.deck.printed(
        "WARNING :: STEP LENGTH -1 ENDS THE LIST, 1 BEHIND IT ARE DROPPED\nFile TEST.DATA, line "));
    ScheduleBench sameDay("DATES\n1 JAN 2000 /\n/\n");
    sameDay.read();
    EXPECT_FALSE(sameDay.deck.printed("WARNING"));
}

TEST(Dates, AndTheOtherTimeKeywordsPrintOnlyTheirName) {
    ScheduleBench run("DATES\n1 FEB 2000 /\n/\nWNEXT\n40 /\nSIMEND\n50 /\n");
    run.read();
    EXPECT_EQ(run.deck.screen(),
              "READ -> DATES\nREAD -> WNEXT\nREAD -> SIMEND\n"
              "-> Finished Reading SCHEDULE. Move to Next Section\n");
}

TEST(Dates, GoOnFromTheStepsBeforeThem) {
    ScheduleBench run("TSTEP\n31 /\nDATES\n1 MAR 2000 /\n/\n");
    run.readAndClose();
    EXPECT_EQ(run.schedule.stepLength, (Times{31, 29}));
    EXPECT_EQ(run.schedule.wellEventTime, (Times{0, 31}));
}

TEST(Dates, EndAtTheNextKeywordWhereTheirSlashIsMissing) {
    ScheduleBench run("DATES\n1 FEB 2000 /\nTSTEP\n5 /\n");
    run.readAndClose();
    EXPECT_EQ(run.schedule.stepLength, (Times{31, 5}));
}

TEST(DatesDeathTest, StopWithoutARowOrWithAnImpossibleDate) {
    for (const char* text : {"DATES\n/\n", "DATES\nTSTEP\n1 /\n", "DATES\n0 FEB 2000 /\n/\n",
                             "DATES\n1 FEB 100000 /\n/\n", "DATES\n1 FEB /\n/\n"})
        EXPECT_EXIT(readOnStandardError(text), ::testing::ExitedWithCode(1),
                    "ERROR :: Could not extract DATES\nFile TEST.DATA");
}

TEST(Wnext, ClosesTheStepAtItsTime) {
    ScheduleBench run("TSTEP\n10 /\nWNEXT\n25 /\nTSTEP\n5 /\n");
    run.readAndClose();
    EXPECT_EQ(run.schedule.stepEnd, (Times{0, 10, 25, 30}));
    EXPECT_EQ(run.schedule.wellEventTime, (Times{0, 10, 25}));
    EXPECT_TRUE(run.deck.printed("READ -> WNEXT\n"));
}

TEST(Simend, BeforeTheLastStepCutsTheReports) {
    ScheduleBench run("TSTEP\n4*10 /\nSIMEND\n25 /\n");
    run.readAndClose();
    EXPECT_EQ(run.schedule.endTime, 25.0);
    EXPECT_EQ(run.schedule.reportEnd, (Times{10, 20, 25}));
    EXPECT_EQ(run.schedule.stepEnd, (Times{0, 10, 20, 30, 40}));
}

TEST(Simend, BehindTheLastStepRepeatsItsLength) {
    ScheduleBench run("TSTEP\n2*10 /\nSIMEND\n45 /\n");
    run.readAndClose();
    buildTimeTables(run.deck.console, run.records);
    EXPECT_EQ(run.schedule.stepEnd, (Times{0, 10, 20, 30, 40, 50})) << "the same when built again";
    EXPECT_EQ(run.schedule.reportEnd, (Times{10, 20, 45}));
    EXPECT_EQ(run.clock.endTime, 45.0);
}

TEST(Simend, NeedsNoMillionsOfSteps) {
    ScheduleBench run("TSTEP\n1e-6 /\nSIMEND\n1e8 /\n");
    run.readAndClose();
    EXPECT_EQ(run.schedule.stepEnd.size(), 3U);
    EXPECT_EQ(run.schedule.endTime, 1e8);
}

TEST(Simend, IsLeftOutWhenItCannotBe) {
    ScheduleBench run("TSTEP\n10 /\nSIMEND\n-3 /\n");
    run.readAndClose();
    EXPECT_EQ(run.schedule.endTime, 10.0);
    EXPECT_TRUE(run.deck.printed("WARNING :: END TIME -3"));
}

TEST(CloseSchedule, MakesOneStepOfNoLengthWhereNoneIsGiven) {
    ScheduleBench run(TwoWells + "COMPDAT\nP1 2* 1 1 OPEN 2* 0.5 /\n/\n");
    run.readAndClose();
    EXPECT_TRUE(run.deck.printed("WARNING :: Time-step was not given. Want Initial conditon?\n"));
    EXPECT_EQ(run.schedule.stepLength, (Times{0}));
    EXPECT_EQ(run.schedule.endTime, 0.0);
    EXPECT_EQ(run.schedule.reportEnd, (Times{0}));
    ASSERT_EQ(run.schedule.steps.size(), 1U);
    EXPECT_EQ(run.schedule.steps[0].completions.size(), 1U);
}

TEST(CloseSchedule, WarnsOfADeckWithoutWells) {
    ScheduleBench run("TSTEP\n10 /\nTSTEP\n20 /\n");
    run.readAndClose();
    EXPECT_TRUE(run.deck.printed("WARNING :: Number of well is zero \n"));
    EXPECT_EQ(run.schedule.steps.size(), 2U);
    EXPECT_EQ(run.schedule.wellEventTime, (Times{0, 10}));
}

TEST(CloseSchedule, ServesADeckWithoutTheSection) {
    ScheduleBench run("");
    closeSchedule(run.deck.console, run.schedule);
    buildTimeTables(run.deck.console, run.records);
    EXPECT_EQ(run.schedule.steps.size(), 1U);
    EXPECT_EQ(run.schedule.endTime, 0.0);
}

TEST(ScheduleSection, NeglectsReportKeywordsAndSkipsWhatItDoesNotKnow) {
    ScheduleBench run("RPTSCHED\n'PRES' 'WELLS' /\nRPTRST\n'BASIC=2' /\nVAPPARS\n0 /\nTSTEP\n1 /\nEND\n");
    run.read();
    EXPECT_TRUE(run.deck.printed("READ -> RPTSCHED, is neglected\n"));
    EXPECT_TRUE(
        run.deck.printed("READ -> RPTRST, is neglected\nREAD -> RPTRST, output is saved in Tecplot or "
                         "Text file by KVR, only primary variable\n"));
    EXPECT_TRUE(run.deck.printed(" VAPPARS  -> not surpported  \n"));
    EXPECT_TRUE(run.deck.printed("-> Finished Reading SCHEDULE. Move to Next Section\n"));
    EXPECT_EQ(run.deck.next(), "END");
}

TEST(ScheduleSectionDeathTest, NamesItselfForAMissingInclude) {
    EXPECT_EXIT(
        readOnStandardError("INCLUDE\n'no_such_wells.inc' /\n"), ::testing::ExitedWithCode(1),
        "READ -> INCLUDE\n-> Read Data from INCLUDE file\n-> no_such_wells.inc\n"
        "ERROR: INCLUDE File Open Error at SCHEDULE section\nFile I/O Error, in SCHEDULE Section 2\n");
}

TEST(ScheduleSection, GoesOnWhereAnEarlierOneEnded) {
    ScheduleBench run(TwoWells + "TSTEP\n10 /\n");
    run.read();
    ScheduleBench second("TSTEP\n5 /\n");
    readScheduleSection(second.deck.reader, run.records);
    closeSchedule(run.deck.console, run.schedule);
    EXPECT_EQ(run.schedule.stepLength, (Times{10, 5}));
    EXPECT_EQ(run.schedule.steps[1].wells.size(), 2U);
}

}  // namespace
}  // namespace kvr
