#include "run/records/clock.hpp"

#include "base/constants.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>

namespace kvr {

namespace {

constexpr int MonthCount = 12;
constexpr int February = 2;
constexpr int CommonYear = 365;  // days
constexpr std::array<int, MonthCount> MonthTable = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
constexpr double MaxCalendarStep = 1.0e9;  // days; keeps the date within an int whatever a step says

/// How a month's word is known: in lower case by `lower`, in upper case by `upper`.
struct MonthWord {
    int month;
    std::string_view lower;
    std::string_view upper;
};

// Lopsided on purpose: some upper-case months are known by their first letter, others need all three.
// January has no row, it is what is left.
constexpr std::array<MonthWord, 12> MonthWords = {{{2, "feb", "F"},
                                                   {3, "mar", "MAR"},
                                                   {4, "apr", "AP"},
                                                   {5, "may", "MAY"},
                                                   {6, "jun", "JUN"},
                                                   {7, "jul", "JUL"},
                                                   {7, "jly", "JLY"},
                                                   {8, "aug", "AU"},
                                                   {9, "sep", "S"},
                                                   {10, "oct", "O"},
                                                   {11, "nov", "N"},
                                                   {12, "dec", "D"}}};

/// Days of the months before `month`.
int daysBeforeMonth(int month, int year) {
    int days = 0;
    for (int m = 1; m < month && m <= MonthCount; ++m) days += monthLength(m, year);
    return days;
}

/// Leap years from year 1 to `year`: the sum of `leap`.
std::int64_t leapYearsTo(std::int64_t year) {
    return year / 4 + year / 400 - year / 100;
}

std::int64_t dayNumber(int day, int month, int year) {
    const std::int64_t yearsBefore = static_cast<std::int64_t>(year) - 1;
    return yearsBefore * CommonYear + leapYearsTo(yearsBefore) + daysBeforeMonth(month, year) + day;
}

/// Whole days of a step, with the day that the carried fractions may make up.
std::int64_t takeWholeDays(double dt, RunClock& clock) {
    const double floorOfStep = std::min(std::floor(dt), MaxCalendarStep);
    auto whole = static_cast<std::int64_t>(floorOfStep);
    // The absolute value is deliberate: the running date never goes back.
    clock.dayFraction += std::min(std::abs(dt - floorOfStep), 1.0);
    if (clock.dayFraction >= 1.0) {
        ++whole;
        clock.dayFraction -= 1.0;
    } else if (std::abs(clock.dayFraction + TimeTolerance) >= 1.0) {
        ++whole;
        clock.dayFraction = 0.0;
    }
    return whole;
}

}  // namespace

bool sameTime(double a, double b) {
    return std::abs(a - b) <= TimeTolerance;
}

double tableTime(const std::vector<double>& table, int index) {
    if (index < 1) return 0.0;
    const auto slot = static_cast<std::size_t>(index) - 1;
    return slot < table.size() ? table[slot] : std::numeric_limits<double>::infinity();
}

int leap(int year) {
    return static_cast<int>(leapYearsTo(year) - leapYearsTo(static_cast<std::int64_t>(year) - 1));
}

int monthLength(int month, int year) {
    const int days = MonthTable[static_cast<std::size_t>(month) - 1];
    return month == February ? days + leap(year) : days;
}

void advanceCalendar(double dt, RunClock& clock) {
    std::int64_t day = clock.day + takeWholeDays(dt, clock) + daysBeforeMonth(clock.month, clock.year);
    while (day > CommonYear + leap(clock.year)) {
        day -= CommonYear + leap(clock.year);
        ++clock.year;
    }
    int month = 1;
    while (month < MonthCount && day > monthLength(month, clock.year)) {
        day -= monthLength(month, clock.year);
        ++month;
    }
    clock.month = month;
    clock.day = static_cast<int>(day);
}

int daysBetween(int day, int month, int year, int laterDay, int laterMonth, int laterYear) {
    const std::int64_t days = dayNumber(laterDay, laterMonth, laterYear) - dayNumber(day, month, year);
    constexpr std::int64_t Most = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(days, -Most, Most));
}

int monthOfWord(std::string_view word) {
    int month = 1;
    for (const MonthWord& row : MonthWords) {
        if (word.starts_with(row.lower) || word.starts_with(row.upper)) month = row.month;
    }
    return month;
}

bool isMonthWord(std::string_view word) {
    return monthOfWord(word) != 1 || word.starts_with("JA") || word.starts_with("jan") ||
           word.starts_with("Jan");
}

}  // namespace kvr
