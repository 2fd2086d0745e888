#include "run/records/clock.hpp"

#include <gtest/gtest.h>
#include <limits>
#include <ostream>

namespace kvr {
namespace {

struct Date {
    int day, month, year;
    bool operator==(const Date&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Date& date) {
    return out << date.day << '.' << date.month << '.' << date.year;
}

RunClock clockAt(int day, int month, int year) {
    RunClock clock;
    clock.day = day;
    clock.month = month;
    clock.year = year;
    return clock;
}
Date dateOf(const RunClock& clock) {
    return {clock.day, clock.month, clock.year};
}
Date after(int day, int month, int year, double dt) {
    RunClock clock = clockAt(day, month, year);
    advanceCalendar(dt, clock);
    return dateOf(clock);
}

TEST(Leap, FollowsTheGregorianRule) {
    EXPECT_EQ(leap(1900), 0);
    EXPECT_EQ(leap(1996), 1);
    EXPECT_EQ(leap(1999), 0);
    EXPECT_EQ(leap(2000), 1);
    EXPECT_EQ(leap(2004), 1);
    EXPECT_EQ(leap(2100), 0);
    EXPECT_EQ(leap(2400), 1);
}

TEST(Calendar, MovesOverMonthsAndYearsFromNewYear2000) {
    EXPECT_EQ(after(1, 1, 2000, 31), (Date{1, 2, 2000}));
    EXPECT_EQ(after(1, 1, 2000, 59), (Date{29, 2, 2000}));
    EXPECT_EQ(after(1, 1, 2000, 60), (Date{1, 3, 2000}));
    EXPECT_EQ(after(1, 1, 2000, 366), (Date{1, 1, 2001}));
    EXPECT_EQ(after(1, 1, 2000, 3653), (Date{1, 1, 2010}));
}

TEST(Calendar, KnowsTheEndOfFebruary) {
    EXPECT_EQ(after(28, 2, 1999, 1), (Date{1, 3, 1999}));
    EXPECT_EQ(after(28, 2, 1900, 1), (Date{1, 3, 1900}));
    EXPECT_EQ(after(28, 2, 2000, 1), (Date{29, 2, 2000}));
}

TEST(Calendar, RollsManyYearsInOneStep) {
    EXPECT_EQ(after(15, 7, 1999, 36525), (Date{15, 7, 2099}));
    EXPECT_EQ(after(31, 12, 1899, 365), (Date{31, 12, 1900}));
}

TEST(Calendar, CarriesTwoHalvesOfADay) {
    RunClock clock = clockAt(1, 1, 2000);
    advanceCalendar(0.5, clock);
    EXPECT_EQ(dateOf(clock), (Date{1, 1, 2000}));
    advanceCalendar(0.5, clock);
    EXPECT_EQ(dateOf(clock), (Date{2, 1, 2000}));
    EXPECT_EQ(clock.dayFraction, 0.0);
}

TEST(Calendar, TakesTenTenthsForADayWithinTheTimeTolerance) {
    RunClock clock = clockAt(1, 1, 2000);
    for (int n = 0; n < 10; ++n) advanceCalendar(0.1, clock);
    EXPECT_EQ(dateOf(clock), (Date{2, 1, 2000}));
    EXPECT_EQ(clock.dayFraction, 0.0);
}

TEST(Calendar, KeepsWhatIsLeftOfADay) {
    RunClock clock = clockAt(1, 1, 2000);
    for (int n = 0; n < 3; ++n) advanceCalendar(30.4, clock);
    EXPECT_EQ(dateOf(clock), (Date{1, 4, 2000}));
    EXPECT_NEAR(clock.dayFraction, 0.2, 1e-8);

    clock = clockAt(1, 1, 2000);
    advanceCalendar(0.25, clock);
    EXPECT_EQ(dateOf(clock), (Date{1, 1, 2000}));
    EXPECT_EQ(clock.dayFraction, 0.25);
}

TEST(Calendar, SurvivesAStepWithoutMeasure) {
    EXPECT_GT(after(1, 1, 2000, 1e30).year, 2'000'000);
}

TEST(DaysBetween, CountsLeapDaysOnce) {
    EXPECT_EQ(daysBetween(1, 1, 2000, 1, 2, 2000), 31);
    EXPECT_EQ(daysBetween(1, 2, 2000, 1, 3, 2000), 29);
    EXPECT_EQ(daysBetween(1, 2, 2001, 1, 3, 2001), 28);
    EXPECT_EQ(daysBetween(31, 12, 1999, 1, 1, 2010), 3654);
    EXPECT_EQ(daysBetween(15, 10, 1986, 1, 1, 1990), 1174);
    EXPECT_EQ(daysBetween(1, 1, 1990, 15, 10, 1986), -1174);
    EXPECT_EQ(daysBetween(5, 5, 2005, 5, 5, 2005), 0);
}

TEST(MonthOfWord, KeepsItsLopsidedRule) {
    const std::pair<const char*, int> months[] = {
        {"Feb", 2},  {"february", 2}, {"FEBRUARY", 2}, {"Fxx", 2},  {"Mar", 1},  {"MAR", 3},  {"mar", 3},
        {"APx", 4},  {"AUG", 8},      {"Aug", 1},      {"Sep", 9},  {"S", 9},    {"Oct", 10}, {"JAN", 1},
        {"JLY", 7},  {"Jul", 1},      {"jul", 7},      {"Dec", 12}, {"dec", 12}, {"JUN", 6},  {"MAY", 5},
        {"nov", 11}, {"Nov", 11},     {"", 1},         {"apr", 4},  {"Apr", 1},  {"may", 5},  {"jun", 6},
        {"JUL", 7},  {"aug", 8},      {"sep", 9},      {"oct", 10}, {"feb", 2}};
    for (const auto& [word, month] : months) EXPECT_EQ(monthOfWord(word), month) << word;
}

TEST(SameTime, HoldsWithinTheTolerance) {
    EXPECT_TRUE(sameTime(10.0, 10.0 - 5e-11));
    EXPECT_FALSE(sameTime(10.0, 10.0 - 1e-9));
}

TEST(TableTime, IsNeverPastTheEnd) {
    EXPECT_EQ(tableTime({5.0, 9.0}, 2), 9.0);
    EXPECT_EQ(tableTime({5.0, 9.0}, 3), std::numeric_limits<double>::infinity());
    EXPECT_EQ(tableTime({5.0, 9.0}, 0), 0.0);
}

}  // namespace
}  // namespace kvr
