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

ScheduleWell* findWell(ScheduleStep& step, const std::string& name) {
    const auto isNamed = [&name](const ScheduleWell& well) { return well.name == name; };
    // Rows mostly name wells in the order of their introduction: the search goes on behind the last one.
    const auto begin =
        step.wells.begin() + static_cast<std::ptrdiff_t>(std::min(step.searchFrom, step.wells.size()));
    auto found = std::find_if(begin, step.wells.end(), isNamed);
    if (found == step.wells.end()) {
        found = std::find_if(step.wells.begin(), begin, isNamed);
        if (found == begin) return nullptr;
    }
    step.searchFrom = static_cast<std::size_t>(found - step.wells.begin()) + 1;
    return &*found;
}

void setStatus(const std::string& status, ScheduleWell& well) {
    well.status = status;
    ++well.openings;
}

void keepCompletion(const ScheduleCompletion& row, ScheduleStep& step) {
    const auto sameColumn = [&row](const ScheduleCompletion& other) {
        return other.i == row.i && other.j == row.j && other.wellName == row.wellName;
    };
    const auto old = std::find_if(step.completions.begin(), step.completions.end(), [&](const auto& other) {
        return other.k1 == row.k1 && other.k2 == row.k2 && sameColumn(other);
    });
    if (old == step.completions.end()) {
        step.completions.push_back(row);
        return;
    }
    *old = row;
    const auto [top, bottom] = std::minmax(row.k1, row.k2);
    const auto isCovered = [&, top = top, bottom = bottom](const ScheduleCompletion& other) {
        return sameColumn(other) && std::min(other.k1, other.k2) >= top &&
               std::max(other.k1, other.k2) <= bottom;
    };
    step.completions.erase(std::remove_if(old + 1, step.completions.end(), isCovered),
                           step.completions.end());
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
