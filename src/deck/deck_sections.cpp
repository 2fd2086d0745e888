#include "deck/deck_sections.hpp"

#include "base/hard_stop.hpp"
#include "base/text.hpp"
#include "deck/options/finalise_options.hpp"
#include "deck/reading/keyword_table.hpp"
#include "deck/sections/grid_section.hpp"
#include "deck/sections/props.hpp"
#include "deck/sections/runspec.hpp"
#include "deck/sections/schedule_section.hpp"
#include "deck/sections/solution.hpp"
#include "deck/sections/summary.hpp"
#include "fluid/scaled_regions.hpp"
#include "model/dual_porosity.hpp"
#include "pressure/wells/well_controls.hpp"

#include <algorithm>
#include <string>

namespace kvr {

namespace {

void readRunspecPart(SectionReader& reader, Simulation& run) {
    RunspecRecords records{run.options, run.units, run.grid, run.fluids, run.clock};
    readRunspec(reader, records);
}

void readGridPart(SectionReader& reader, Simulation& run) {
    GridRecords records{run.options, run.grid};
    readGridSection(reader, records);
}

void readEditPart(SectionReader& reader, Simulation& run) {
    readEditSection(reader, run.grid);
}

void readPropsPart(SectionReader& reader, Simulation& run) {
    PropsRecords records{run.options, run.fluids, run.grid};
    readProps(reader, records);
    if (!run.grid.dual.isSet || !run.fluids.ofContinua) return;
    for (CellId cell = matrixCells(run.grid) + 1; cell <= run.grid.NCELLS; ++cell) run.grid.SATNUM[cell] = 2;
}

void readRegionsPart(SectionReader& reader, Simulation& run) {
    readRegions(reader, run.options, run.grid);
}

/// A field without any pressure would stand still or run wild.
void requirePressure(SectionReader& reader, const Simulation& run) {
    const auto cells = run.initial.initialPressure.cells();
    const bool other =
        run.initial.equilibrationMode || run.options.restartStep > 0 || run.options.componentCount > 0;
    if (other || std::any_of(cells.begin(), cells.end(), [](double p) { return p > 0.0; })) return;
    lineToBoth(consoleOf(reader), "ERROR :: NO INITIAL PRESSURE ABOVE 0, GIVE EQUIL OR PRESSURE");
    reader.keyword = "PRESSURE";
    stopAtPlace(reader);
}

void readSolutionPart(SectionReader& reader, Simulation& run) {
    sizeInitialArrays(run.grid, run.initial);
    if (!run.fluids.regions.empty())  // of sections in their order
        makeScaledRegions(run.console, run.options.hasWater, run.grid, run.fluids);
    SolutionRecords records{run.options, run.fluids, run.grid, run.initial, run.givenAquifers};
    readSolution(reader, records);
    if (!reader.cursor->text.empty()) requirePressure(reader, run);
}

void readSummaryPart(SectionReader& reader, Simulation& run) {
    readSummary(reader, run.summaryRequests);
}

void readSchedulePart(SectionReader& reader, Simulation& run) {
    ScheduleRecords records{run.options, run.fluids, run.initial, run.schedule, run.clock, run.grid};
    readScheduleSection(reader, records);
    closeSchedule(run.console, run.schedule);
    AssignWells(1, run.console, run.options, run.units, run.schedule, run.grid, run.wells);
    checkLaterWells(run.console, run.grid, run.schedule);
    buildTimeTables(run.console, records);
}

constexpr std::array<DeckSection, SectionCount> Sections = {
    {{"RUNSPEC", "RUNSPEC", readRunspecPart, false, true, true, ""},
     {"GRID", "GRID", readGridPart, true, true, true, ""},
     {"EDIT", "EDIT", readEditPart, true, false, true, "Note: Only Multiply will be taken into account."},
     {"PROPS", "PROPS", readPropsPart, false, true, false, ""},
     {"REGIONS", "SUMMARY", readRegionsPart, true, false, false, ""},
     {"SOLUTION", "SOLUTION", readSolutionPart, true, true, false, ""},
     {"SUMMARY", "SUMMARY", readSummaryPart, false, false, false, ""},
     {"SCHEDULE", "SCHEDULE", readSchedulePart, true, true, false, ""}}};

std::size_t at(SectionRow row) {
    return static_cast<std::size_t>(row);
}

void requireGrid(DeckReading& deck) {
    if (deck.run.grid.NCELLS > 0) return;
    if (!deck.done[at(SectionRow::Runspec)])
        lineToBoth(deck.run.console, "NO RUNSPEC SECTION BEFORE THIS ONE: IT GIVES DIMENS, PHASES AND UNITS");
    lineToBoth(deck.run.console, "ERROR :: DIMENS NOT SPECIFIED");
    stopAtPlace(readerFor(deck, deck.cursor, "DIMENS", ""));
}

void readSectionAt(DeckReading& deck, SectionRow row, DeckCursor& cursor) {
    const DeckSection& section = sectionOf(row);
    if (section.needsGrid) requireGrid(deck);
    deck.done[at(row)] = true;
    SectionReader reader = readerFor(deck, cursor, section.word, section.errorName);
    section.read(reader, deck.run);
}

std::string skippedText(const DeckReading& deck, const SkippedKeyword& row) {
    const std::string file = row.fileName == deck.cursor.fileName ? "" : row.fileName + ", ";
    return fmt::format("{} ({}line {})", row.name, file, row.lineNumber);
}

void summariseSkipped(const DeckReading& deck) {
    std::string list;
    for (const SkippedKeyword& row : deck.sinks.skipped) {
        list += (list.empty() ? ": " : ", ") + skippedText(deck, row);
    }
    both(deck.run.console, "Keywords not supported: {}{}", deck.sinks.skipped.size(), list);
}

}  // namespace

const DeckSection& sectionOf(SectionRow row) {
    return Sections[at(row)];
}

SectionRow sectionOfWord(std::string_view word) {
    if (word == "REGION  ") return SectionRow::Regions;
    const auto* const found = std::find_if(
        Sections.begin(), Sections.end(),
        [word](const DeckSection& section) { return padded(section.word, word.size()) == word; });
    return static_cast<SectionRow>(found - Sections.begin());
}

void connectSinks(DeckReading& deck) {
    deck.sinks.console = &deck.run.console;
    deck.sinks.metricCopy = stream(deck.run.outputs, OutputFile::MetricCopy);
    deck.sinks.fieldCopy = stream(deck.run.outputs, OutputFile::FieldCopy);
}

SectionReader readerFor(DeckReading& deck, DeckCursor& cursor, std::string_view section,
                        std::string_view errorName) {
    SectionReader reader;
    reader.cursor = &cursor;
    reader.sinks = &deck.sinks;
    reader.section = section;
    reader.errorName = errorName;
    reader.workingFolder = deck.run.options.deckFolder;
    reader.outputMetric = deck.run.options.outputMetric;
    reader.commonForm = isNamed(deck.run.command);
    reader.units = &deck.run.units;
    reader.keyword = section;
    reader.gridSize = {deck.run.grid.NX, deck.run.grid.NY, deck.run.grid.NZ};
    return reader;
}

SectionReader readerForOptions(DeckReading& deck) {
    return readerFor(deck, deck.cursor, OptionSection, "STREAMLINE");
}

void bannerLine(const Console& console, std::string_view text) {
    lineToScreen(console, "");
    lineToScreen(console, text);
}

void tellSection(const Console& console, const DeckSection& section) {
    bannerLine(console, fmt::format("---- READ FROM {} ----", section.word));
    if (!section.note.empty()) lineToBoth(console, section.note);
}

void readSection(DeckReading& deck, SectionRow row) {
    readSectionAt(deck, row, deck.cursor);
}

void closeSection(DeckReading& deck, SectionRow row) {
    DeckCursor nothing;
    nothing.fileName = deck.cursor.fileName;
    nothing.lineNumber = deck.cursor.lineNumber;
    readSectionAt(deck, row, nothing);
}

void closeMissingSections(DeckReading& deck, SectionRow end) {
    requireGrid(deck);
    for (std::size_t row = 0; row < at(end); ++row) {
        if (deck.done[row] || !Sections[row].closes) continue;
        warn(deck.run.console, "WARNING :: THE DECK HAS NO SECTION {}, ITS DEFAULTS ARE TAKEN",
             Sections[row].word);
        closeSection(deck, static_cast<SectionRow>(row));
    }
}

void assignPvtRegions(const Console& console, const GridModel& grid, FluidTables& fluids) {
    if (fluids.furtherPvt.empty()) return;
    const int regions = static_cast<int>(fluids.furtherPvt.size()) + 1;
    fluids.PvtRegionCell.assign(grid.NCELLS, 0);
    for (CellId cell = 1; cell <= grid.PVTNUM.count(); ++cell) {
        const int region = grid.PVTNUM[cell];
        if (region > regions) {
            both(console, "ERROR :: NO TABLES OF FLUIDS {} FOR PVTNUM, GRID {}", region, cell);
            hardStop(console);
        }
        fluids.PvtRegionCell[cell] = static_cast<std::uint16_t>(region - 1);
    }
}

void finishDeck(DeckReading& deck) {
    Simulation& run = deck.run;
    finaliseOptions(run.console, run.grid, run.fluids, run.schedule, run.options);
    summariseSkipped(deck);
}

}  // namespace kvr
