#pragma once

#include "base/text.hpp"
#include "deck/sections/schedule_section.hpp"

#include <array>
#include <string>
#include <string_view>

namespace kvr {

// What the well keywords share: the row as read, the wells that its name stands for, and its values in
// internal units.

/// The step that rows are read into.
ScheduleStep& presentStep(ScheduleRecords& records);

/// A name of a well, group or stream: without blanks around it, the first eight characters.
std::string wellName(const std::string& text);

/// The well of the step with just this name; null where there is none.
const ScheduleWell* findWell(ScheduleStep& step, const std::string& name);
/// The same to be changed in this step and those behind it.
ScheduleWell* changeWell(ScheduleStep& step, const std::string& name);

/// OPEN, SHUT or STOP by the deck; counted, since a well that a limit has shut waits for it.
void setStatus(const std::string& status, ScheduleWell& well);

/// A row for the very cells of an earlier one takes its place, and those of the same well behind it that it
/// covers go; it stands once more behind those that it covers in part. Any other is put behind.
void keepCompletion(const ScheduleCompletion& row, ScheduleStep& step);

/// nextRow; a well's unquoted name alone on its line looks like a keyword and ends the rows, which is told.
bool nextWellRow(SectionReader& reader, ScheduleStep& step);

/// Tells of a row whose name stands for no well.
void tellUnknownWell(const SectionReader& reader, const std::string& name);

/// Calls `change` for every known well that the name stands for.
template <class Change>
void forNamedWells(const SectionReader& reader, ScheduleStep& step, const std::string& text,
                   const Change& change) {
    const std::string name(trim(text));
    bool found = false;
    if (name.ends_with('*')) {
        const std::string letters = name.substr(0, name.size() - 1);
        for (std::size_t w = 0; w < step.wells.size(); ++w) {
            if (!step.wells[w].name.starts_with(letters)) continue;
            found = true;
            change(step.wells.own(w));
        }
    } else if (ScheduleWell* well = changeWell(step, wellName(name)); well != nullptr) {
        found = true;
        change(*well);
    }
    if (!found) tellUnknownWell(reader, name);
}

/// Reads one row; the targets keep their values where the row defaults them.
template <std::size_t Count>
void readRow(SectionReader& reader, const std::array<ListTarget, Count>& targets) {
    checkRead(reader, readList(*reader.cursor, targets));
}

struct EfficiencyRow {
    std::string name;
    double factor = 1.0;
};

/// A row of a name and the share of the time that it is on; out of 0 to 1 is told and becomes 1.
EfficiencyRow readEfficiency(SectionReader& reader);

/// A rate in internal units; one that is negative or beyond belief is told of and becomes 0.
double rateFrom(const SectionReader& reader, double deckRate, double factor);

/// A bottom-hole pressure in psia; 0 and less count as not given, one beyond belief is told of: both become
/// `fallBack`.
double pressureFrom(const SectionReader& reader, double deckPressure, double fallBack);

}  // namespace kvr
