#pragma once

#include <string_view>
#include <vector>

namespace kvr {

/// Simulated time, counters and the running calendar date. One instance for the run.
struct RunClock {
    double time = 0.0;     // days reached
    double dt = 0.0;       // days, current step length
    double workDt = 0.0;   // days, as handed to the saturation stage
    double endTime = 0.0;  // days
    int reportIndex = 1;
    int tstepIndex = 1;
    int wellChangeIndex = 0;
    int solverPhaseIndex = 1;
    int stepsSinceEvent = 0;
    int iteration = 0;
    int stepCount = 0;
    int completedSteps = 1;
    int hmIteration = 0;
    int day = 1;
    int month = 1;
    int year = 2000;
    double dayFraction = 0.0;
};

/// Two times closer than TimeTolerance are the same.
bool sameTime(double a, double b);

/// Entry `index` (1-based) of a time table; past its end +infinity, before its first entry 0.
double tableTime(const std::vector<double>& table, int index);

/// 1 in a leap year, else 0, by truncating divisions:
/// (y/4 + y/400 - y/100) - ((y-1)/4 + (y-1)/400 - (y-1)/100).
int leap(int year);

/// Days of a month 1..12.
int monthLength(int month, int year);

/// Moves the calendar date on by `dt` days; the fraction of a day is carried over and never taken back.
void advanceCalendar(double dt, RunClock& clock);

/// Days from one date to another, negative when the second is earlier.
int daysBetween(int day, int month, int year, int laterDay, int laterMonth, int laterYear);

/// Month of a START or DATES word: a deliberately lopsided rule, lower-case months need three letters,
/// several upper-case ones only their first; anything else is month 1.
int monthOfWord(std::string_view word);

/// The word is one that monthOfWord knows, or January's own.
bool isMonthWord(std::string_view word);

}  // namespace kvr
