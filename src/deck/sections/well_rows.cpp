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
    const auto found = std::find_if(step.wells.begin(), step.wells.end(),
                                    [&name](const ScheduleWell& well) { return well.name == name; });
    return found == step.wells.end() ? nullptr : &*found;
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
