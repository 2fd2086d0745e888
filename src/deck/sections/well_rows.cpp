#include "deck/sections/well_rows.hpp"

#include <algorithm>

namespace kvr {

namespace {

constexpr std::size_t WellNameLength = 8;
constexpr double MaxRate = 1e15;     // surface volume a day; more is a slip of the pen
constexpr double MaxPressure = 1e9;  // psia

void warnOfItem(const SectionReader& reader, std::string_view item, double value, double replacement) {
    warnHere(reader, "WARNING :: {} {} IS OUT OF RANGE, SET TO {}", item, number(value), number(replacement));
}

}  // namespace

ScheduleStep& presentStep(ScheduleRecords& records) {
    return records.schedule.steps.back();
}

std::string wellName(const std::string& text) {
    return std::string(trim(trim(text).substr(0, WellNameLength)));
}

namespace {

/// The place of the well with this name among those of the step; their number where there is none. Rows
/// mostly name wells in the order of their introduction: the search goes on behind the last one.
std::size_t placeOfWell(ScheduleStep& step, const std::string& name) {
    const std::size_t count = step.wells.size();
    for (std::size_t n = 0; n < count; ++n) {
        const std::size_t w = (step.searchFrom + n) % count;
        if (step.wells[w].name != name) continue;
        step.searchFrom = w + 1;
        return w;
    }
    return count;
}

}  // namespace

const ScheduleWell* findWell(ScheduleStep& step, const std::string& name) {
    const std::size_t w = placeOfWell(step, name);
    return w < step.wells.size() ? &step.wells[w] : nullptr;
}

ScheduleWell* changeWell(ScheduleStep& step, const std::string& name) {
    const std::size_t w = placeOfWell(step, name);
    return w < step.wells.size() ? &step.wells.own(w) : nullptr;
}

void setStatus(const std::string& status, ScheduleWell& well) {
    well.status = status;
    ++well.openings;
}

void keepCompletion(const ScheduleCompletion& row, ScheduleStep& step) {
    const auto sameColumn = [&row](const ScheduleCompletion& other) {
        return other.i == row.i && other.j == row.j && other.wellName == row.wellName;
    };
    std::vector<ScheduleCompletion>& list = step.completions.own();
    const auto old = std::find_if(list.begin(), list.end(), [&](const auto& other) {
        return other.k1 == row.k1 && other.k2 == row.k2 && sameColumn(other);
    });
    if (old == list.end()) {
        list.push_back(row);
        return;
    }
    *old = row;
    const auto [top, bottom] = std::minmax(row.k1, row.k2);
    const auto isCovered = [&, top = top, bottom = bottom](const ScheduleCompletion& other) {
        return sameColumn(other) && std::min(other.k1, other.k2) >= top &&
               std::max(other.k1, other.k2) <= bottom;
    };
    const auto meets = [&, top = top, bottom = bottom](const ScheduleCompletion& other) {
        return sameColumn(other) && std::min(other.k1, other.k2) <= bottom &&
               std::max(other.k1, other.k2) >= top;
    };
    list.erase(std::remove_if(old + 1, list.end(), isCovered), list.end());
    if (std::any_of(old + 1, list.end(), meets)) list.push_back(row);
}

bool nextWellRow(SectionReader& reader, ScheduleStep& step) {
    const int lineBefore = reader.cursor->lineNumber;
    if (nextRow(reader)) return true;
    if (reader.cursor->position >= reader.cursor->text.size()) return false;
    const std::string_view rest = std::string_view(reader.cursor->text).substr(reader.cursor->position);
    const std::string word(firstWord(trimLeft(rest.substr(0, rest.find('\n')))));
    const bool slashEnded =
        reader.cursor->lineNumber > lineBefore &&
        isSlashLine(std::string_view(reader.cursor->text).substr(reader.cursor->previousLine));
    if (!slashEnded && findWell(step, wellName(word)) != nullptr)
        warnAt(consoleOf(reader), {reader.cursor->fileName, reader.cursor->lineNumber + 1}, reader.keyword,
               "WARNING :: {} ALONE ON ITS LINE ENDS THE ROWS, WRITE THE NAME OF A WELL IN QUOTES", word);
    return false;
}

void tellUnknownWell(const SectionReader& reader, const std::string& name) {
    warnHere(reader, "WARNING :: UNKNOWN WELL, ROW SKIPPED :: {}", name);
}

EfficiencyRow readEfficiency(SectionReader& reader) {
    EfficiencyRow row;
    readRow(reader, std::array<ListTarget, 2>{&row.name, &row.factor});
    if (row.factor > 0.0 && row.factor <= 1.0) return row;
    warnHere(reader, "WARNING :: EFFICIENCY {} IS OUT OF RANGE 0 TO 1, SET TO 1", number(row.factor));
    row.factor = 1.0;
    return row;
}

double rateFrom(const SectionReader& reader, double deckRate, double factor) {
    const double rate = deckRate * factor;
    if (rate >= 0.0 && rate <= MaxRate) return rate;
    warnOfItem(reader, "RATE", deckRate, 0.0);
    return 0.0;
}

double pressureFrom(const SectionReader& reader, double deckPressure, double fallBack) {
    if (deckPressure <= 0.0) return fallBack;
    const double pressure = deckPressure * reader.units->pressure;
    if (pressure <= MaxPressure) return pressure;
    warnOfItem(reader, "PRESSURE", deckPressure, fallBack);
    return fallBack;
}

}  // namespace kvr
