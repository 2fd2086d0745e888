#include "deck/sections/schedule_times.hpp"

#include "base/constants.hpp"
#include "deck/reading/unit_copies.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <utility>

namespace kvr {

namespace {

constexpr std::size_t MaxStepsOfList = 10000;   // step lengths of one TSTEP, rows of one DATES
constexpr std::size_t MaxStepsOfRun = 1000000;  // beyond it a deck is taken for a mistake
constexpr std::size_t MaxScheduleRows =
    10000000;                          // well and completion rows over all steps, not shared, about 2 GB
constexpr double MaxStepLength = 1e9;  // days; more is a slip of the pen
constexpr int LongestMonth = 31;       // days
constexpr int LastYear = 9999;

double timeReached(const Schedule& schedule) {
    return schedule.stepEnd.empty() ? 0.0 : schedule.stepEnd.back();
}

[[noreturn]] void stopWith(const SectionReader& reader, std::string_view message) {
    lineToBoth(consoleOf(reader), message);
    stopAtPlace(reader);
}

/// Rows that the last step does not share with the one before it; every well takes a pointer in any case.
std::size_t ownRows(const Schedule& schedule) {
    constexpr std::size_t PointersPerRow = 16;
    const ScheduleStep& step = schedule.steps.back();
    std::size_t rows = step.wells.size() / PointersPerRow;
    const auto isOwn = [](const auto& held) { return held.use_count() == 1; };
    rows += static_cast<std::size_t>(std::count_if(step.wells.held.begin(), step.wells.held.end(), isOwn));
    return isOwn(step.completions.held) ? rows + step.completions.size() : rows;
}

void checkSizes(const SectionReader& reader, const Schedule& schedule, std::size_t newSteps) {
    const std::size_t rows = schedule.heldRows + ownRows(schedule);
    if (schedule.stepLength.size() + newSteps > MaxStepsOfRun || rows > MaxScheduleRows)
        stopWith(reader, "Error :: Memory error , Schedule");
}

/// Step length from the time reached to a later one. A remainder of rounding, as steps of a fraction of a
/// day leave it, is none.
double lengthTo(double time, double reached) {
    const double length = time - reached;
    return std::abs(length) > TimeTolerance ? length : 0.0;
}

/// Values up to the first that is not a step length, which ends a list; what it drops is told.
std::size_t countLengths(const SectionReader& reader, std::span<const double> values) {
    const auto isLength = [](double v) { return v > SmallestNormal && v <= MaxStepLength; };
    const auto end = std::find_if_not(values.begin(), values.end(), isLength);
    if (end == values.end()) return values.size();
    const auto behind = values.end() - end - 1;
    if (behind > 0)
        warnHere(reader, "WARNING :: STEP LENGTH {} ENDS THE LIST, {} BEHIND IT ARE DROPPED", number(*end),
                 behind);
    else if (*end != 0.0)
        warnHere(reader, "WARNING :: STEP LENGTH {} ENDS THE LIST", number(*end));
    return static_cast<std::size_t>(end - values.begin());
}

/// Gives the lengths of a list to the present schedule step; how many there were.
std::size_t takeLengths(SectionReader& reader, ScheduleRecords& records, std::span<const double> values) {
    const auto lengths = values.first(countLengths(reader, values));
    checkSizes(reader, records.schedule, lengths.size());
    if (reader.kept != nullptr && !lengths.empty())
        records.schedule.steps.back().source = std::exchange(reader.kept->text, {});
    closeScheduleStep(lengths, records.schedule);
    reader.keyword = "TSTEP";
    copyArray(reader, lengths, 1.0, 1.0);
    return lengths.size();
}

/// Days from time zero to the date of a row.
double dateOfRow(SectionReader& reader, const RunClock& clock, RowLoop& rows) {
    int day = 0, year = 0;
    std::string month;
    const std::array<ListTarget, 3> targets = {&day, &month, &year};
    rows.last = readList(*reader.cursor, targets);
    checkRead(reader, rows.last);
    if (day < 1 || day > LongestMonth || year < 1 || year > LastYear)
        stopWith(reader, "ERROR :: Could not extract DATES");
    if (!isMonthWord(month)) warnHere(reader, "WARNING :: MONTH {} IS NOT KNOWN, TAKEN FOR JANUARY", month);
    const int last = monthLength(monthOfWord(month), year);
    if (day > last)
        warnHere(reader, "WARNING :: {} {} {} IS NO DATE OF THE CALENDAR, SET TO DAY {}", day, month, year,
                 last);
    const int days =
        daysBetween(clock.day, clock.month, clock.year, std::min(day, last), monthOfWord(month), year);
    if (days < 0)
        warnHere(reader, "WARNING :: DATE {} {} {} LIES BEFORE THE START {} {} {}", day, month, year,
                 clock.day, clock.month, clock.year);
    return days;
}

/// The one time that a keyword gives, days; 0 where it gives none.
double readTime(SectionReader& reader, std::string_view keyword) {
    announce(reader, keyword);
    skipCommentLines(reader);
    std::array<double, 1> time = {0.0};
    checkRead(reader, readDoubles(*reader.cursor, time));
    return time[0];
}

}  // namespace

void openScheduleStep(Schedule& schedule) {
    if (schedule.stepEnd.empty()) schedule.stepEnd.push_back(0.0);
    if (schedule.steps.empty()) {
        schedule.steps.emplace_back();
    } else if (schedule.steps.back().stepCount > 0) {
        schedule.heldRows += ownRows(schedule);
        ScheduleStep next = schedule.steps.back();
        next.stepCount = 0;
        next.period = 0.0;
        next.faultMultipliers.clear();
        next.source.clear();
        schedule.steps.push_back(std::move(next));
    }
}

void closeScheduleStep(std::span<const double> lengths, Schedule& schedule) {
    if (lengths.empty()) return;
    for (const double length : lengths) {
        schedule.stepLength.push_back(length);
        schedule.stepEnd.push_back(schedule.stepEnd.back() + length);
    }
    ScheduleStep& step = schedule.steps.back();
    step.stepCount += static_cast<int>(lengths.size());
    step.period += std::accumulate(lengths.begin(), lengths.end(), 0.0);
    step.cumulativeSteps = static_cast<int>(schedule.stepLength.size());
    openScheduleStep(schedule);
}

void readTstep(SectionReader& reader, ScheduleRecords& records) {
    announce(reader, "TSTEP");
    skipCommentLines(reader);
    std::vector<double> values(MaxStepsOfList, 0.0);
    const ListEnd end = readDoubles(*reader.cursor, values);
    checkRead(reader, end);
    const bool isFull = static_cast<std::size_t>(end.count) == MaxStepsOfList && !end.slash;
    if (end.surplus > 0 || (isFull && nextRow(reader, RowStart::Number)))
        stopWith(reader, "ERROR :: MORE THAN 10000 STEP LENGTHS IN ONE LIST");
    const std::size_t history = records.schedule.steps.size();
    const std::size_t taken = takeLengths(
        reader, records, std::span<const double>(values).first(static_cast<std::size_t>(end.count)));
    both(consoleOf(reader), "-> Reporting Step :: {}", taken);
    both(consoleOf(reader), "-> Well History   :: {}", history);
    both(consoleOf(reader), "-> Cumulative Tim :: {}", number(timeReached(records.schedule)));
}

void readDates(SectionReader& reader, ScheduleRecords& records) {
    announce(reader, "DATES");
    std::vector<double> lengths;
    double reached = timeReached(records.schedule);
    RowLoop rows;
    rows.slash = RowSlash::EndsRow;
    while (lengths.size() < MaxStepsOfList && nextTableRow(reader, rows)) {
        const double date = dateOfRow(reader, records.clock, rows);
        lengths.push_back(lengthTo(date, reached));
        reached = std::max(reached, date);
    }
    if (lengths.empty()) stopWith(reader, "ERROR :: Could not extract DATES");
    takeLengths(reader, records, lengths);
}

void readWnext(SectionReader& reader, ScheduleRecords& records) {
    const std::array<double, 1> lengths = {
        lengthTo(readTime(reader, "WNEXT"), timeReached(records.schedule))};
    takeLengths(reader, records, lengths);
}

void readSimend(SectionReader& reader, ScheduleRecords& records) {
    const double time = readTime(reader, "SIMEND");
    if (time > 0.0 && time <= MaxStepLength) {
        records.schedule.endTime = time;
        records.schedule.endTimeGiven = true;
        return;
    }
    warnHere(reader, "WARNING :: END TIME {} IS OUT OF RANGE, NOT USED", number(time));
}

}  // namespace kvr
