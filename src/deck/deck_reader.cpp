#include "deck/deck_reader.hpp"

#include "base/hard_stop.hpp"
#include "base/text.hpp"
#include "deck/options/finalise_options.hpp"
#include "deck/options/option_section.hpp"
#include "deck/reading/keyword_table.hpp"
#include "deck/reading/unit_copies.hpp"
#include "deck/sections/grid_section.hpp"
#include "deck/sections/props.hpp"
#include "deck/sections/runspec.hpp"
#include "deck/sections/schedule_section.hpp"
#include "deck/sections/solution.hpp"
#include "deck/sections/summary.hpp"
#include "pressure/wells/well_controls.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <string>

namespace kvr {

namespace {

constexpr int FirstPassLines = 10000;  // lines tested by the dispatcher, at most
constexpr int SecondPassLines = 1000;
constexpr std::size_t DispatcherLineWidth = 2048;
/// The deck being read and the run that it fills.
struct DeckReading {
    Simulation& run;
    DeckSinks sinks;
    DeckCursor cursor;
    std::array<bool, 8> done{};  // by row of Sections
};

// --- sections --------------------------------------------------------------------------------------

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
    PropsRecords records{run.options, run.fluids};
    readProps(reader, records);
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
    SolutionRecords records{run.options, run.fluids, run.grid, run.initial};
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

/// One section of the first pass.
struct Section {
    std::string_view word;
    std::string_view errorName;  // in "Reading error, in ... Section"
    void (*read)(SectionReader&, Simulation&);
    bool needsGrid;  // holds data per cell
    bool closes;     // its end gives defaults that a run cannot do without
    std::string_view note;
};
constexpr std::array<Section, 8> Sections = {
    {{"RUNSPEC", "RUNSPEC", readRunspecPart, false, true, ""},
     {"GRID", "GRID", readGridPart, true, true, ""},
     {"EDIT", "EDIT", readEditPart, true, false, "Note: Only Multiply will be taken into account."},
     {"PROPS", "PROPS", readPropsPart, false, true, ""},
     {"REGIONS", "SUMMARY", readRegionsPart, true, false, ""},
     {"SOLUTION", "SOLUTION", readSolutionPart, true, true, ""},
     {"SUMMARY", "SUMMARY", readSummaryPart, false, false, ""},
     {"SCHEDULE", "SCHEDULE", readSchedulePart, true, true, ""}}};
constexpr std::size_t ScheduleRow = Sections.size() - 1;

SectionReader readerFor(DeckReading& deck, DeckCursor& cursor, std::string_view section,
                        std::string_view errorName) {
    SectionReader reader;
    reader.cursor = &cursor;
    reader.sinks = &deck.sinks;
    reader.section = section;
    reader.errorName = errorName;
    reader.workingFolder = deck.run.options.deckFolder;
    reader.outputMetric = deck.run.options.outputMetric;
    reader.units = &deck.run.units;
    reader.keyword = section;
    reader.gridSize = {deck.run.grid.NX, deck.run.grid.NY, deck.run.grid.NZ};
    return reader;
}

void requireGrid(DeckReading& deck) {
    if (deck.run.grid.NCELLS > 0) return;
    lineToBoth(deck.run.console, "ERROR :: DIMENS NOT SPECIFIED");
    stopAtPlace(readerFor(deck, deck.cursor, "DIMENS", ""));
}

void readSection(DeckReading& deck, std::size_t row, DeckCursor& cursor) {
    const Section& section = Sections[row];
    if (section.needsGrid) requireGrid(deck);
    deck.done[row] = true;
    SectionReader reader = readerFor(deck, cursor, section.word, section.errorName);
    section.read(reader, deck.run);
}

/// A section that the deck does not have still closes: its tables and arrays get their defaults, or
/// the run stops with the section's message.
void closeMissingSections(DeckReading& deck, std::size_t end) {
    requireGrid(deck);
    for (std::size_t row = 0; row < end; ++row) {
        if (deck.done[row] || !Sections[row].closes) continue;
        DeckCursor nothing;
        nothing.fileName = deck.cursor.fileName;
        nothing.lineNumber = deck.cursor.lineNumber;
        warn(deck.run.console, "WARNING :: THE DECK HAS NO SECTION {}, ITS DEFAULTS ARE TAKEN",
             Sections[row].word);
        readSection(deck, row, nothing);
    }
}

void bannerLine(const Console& console, std::string_view text) {
    lineToScreen(console, "");
    lineToScreen(console, text);
}

void readNamedSection(DeckReading& deck, std::size_t row) {
    const Section& section = Sections[row];
    bannerLine(deck.run.console, fmt::format("---- READ FROM {} ----", section.word));
    if (!section.note.empty()) lineToBoth(deck.run.console, section.note);
    if (section.word == "RUNSPEC" && std::count(deck.done.begin(), deck.done.end(), true) > 0) {
        lineToBoth(deck.run.console, "ERROR :: A SECOND RUNSPEC WOULD TAKE BACK WHAT STANDS BEFORE IT");
        stopAtPlace(readerFor(deck, deck.cursor, "RUNSPEC", ""));
    }
    // Wells are built at the end of SCHEDULE, from everything that stands before it.
    if (row == ScheduleRow) closeMissingSections(deck, ScheduleRow);
    readSection(deck, row, deck.cursor);
}

// --- the two passes --------------------------------------------------------------------------------

/// The next line that is no comment, its word in `word`; false at the end of the file or of the lines
/// that a pass may test.
bool nextWord(DeckReading& deck, SectionReader& reader, int& linesLeft, std::string_view& line,
              std::string& word) {
    while (linesLeft > 0 && nextLine(deck.cursor, line)) {
        if (isCommentLine(line.substr(0, DispatcherLineWidth))) {
            takeComment(reader, line);
            continue;
        }
        --linesLeft;
        word = keywordOf(line.substr(0, DispatcherLineWidth));
        if (word == "REGION  ") word = "REGIONS ";
        return true;
    }
    return false;
}

std::size_t sectionRow(std::string_view word) {
    const auto* const found = std::find_if(Sections.begin(), Sections.end(), [word](const Section& section) {
        return padded(section.word, word.size()) == word;
    });
    return static_cast<std::size_t>(found - Sections.begin());
}

void passOver(SectionReader& reader, std::string_view line, std::string_view word) {
    if (skippedTitle(reader, {std::string(word), line}) || handleCommonKeyword(reader, word)) return;
    reportNotSupported(reader, line);
    skipKeywordData(reader);
}

void firstPass(DeckReading& deck) {
    const Console& console = deck.run.console;
    SectionReader reader = readerFor(deck, deck.cursor, "", "");
    int linesLeft = FirstPassLines;
    std::string_view line;
    std::string word;
    while (nextWord(deck, reader, linesLeft, line, word)) {
        if (word == "TUNEKVR ") {
            lineToBoth(console, "");
            stepBack(deck.cursor);
            return;
        }
        if (word == "END     ") {
            if (deck.run.options.outputMetric) copyEcho(reader, line);
            lineToBoth(console, "");
            lineToBoth(console, "FILE END DETECTED & CLOSED...");
            return;
        }
        const std::size_t row = sectionRow(word);
        if (row < Sections.size()) {
            echoLine(reader, line);
            readNamedSection(deck, row);
        } else {
            passOver(reader, line, word);
        }
    }
    lineToBoth(console, "FILE I/O -> END OF FILE DETECTED BEFORE STREAMLINE INFO..");
}

void secondPass(DeckReading& deck) {
    const Console& console = deck.run.console;
    SectionReader reader = readerFor(deck, deck.cursor, "", "");
    int linesLeft = SecondPassLines;
    std::string_view line;
    std::string word;
    while (nextWord(deck, reader, linesLeft, line, word)) {
        if (word == "TUNEKVR ") {
            echoLine(reader, line);
            bannerLine(console, "---- READ FROM STREAMLINE for KVR ----");
            SectionReader section = readerFor(deck, deck.cursor, "TUNEKVR", "STREAMLINE");
            readOptionSection(section, deck.run.options);
        } else if (word == "END     ") {
            lineToBoth(console, "FILE END DETECTED & CLOSED...");
            return;
        } else {
            passOver(reader, line, word);
        }
    }
    lineToBoth(console, "FILE I/O -> END OF FILE DETECTED AFTER STREAMLINE INFO..");
}

// --- before and behind them ------------------------------------------------------------------------

/// The names under which the deck is looked for, in order.
std::vector<std::string> deckNames(const RunOptions& options) {
    if (!options.deckFile.empty()) return {options.deckFile};
    if (!options.useRelativePath) return {"ECLIPSE.DATA", "FRONTSIM.DATA"};
    return {options.dataFileBase + ".DATA", options.dataFileBase + ".DAT", options.dataFileBase + ".ECL"};
}

[[noreturn]] void stopOnOpenFailure(const Console& console, const std::string& name, int status) {
    if (status == OpenErrorStatus)
        lineToBoth(console, "ERROR: File Open Error");
    else if (status == HandlingErrorStatus)
        lineToBoth(console, "ERROR: File handling Error at ECLIPSE input mode");
    else
        both(console, "ERROR: File handling error in ECLIPSE input mode, code = {}", status);
    both(console, "File {}", name);
    hardStop(console);
}

void openDeck(DeckReading& deck) {
    const std::vector<std::string> names = deckNames(deck.run.options);
    for (const std::string& name : names) {
        const std::string path = existingPath(name);
        if (path.empty()) continue;
        errno = 0;
        if (loadDeck(path, deck.cursor)) return;
        stopOnOpenFailure(deck.run.console, path, errno != 0 ? errno : HandlingErrorStatus);
    }
    stopOnOpenFailure(deck.run.console, names.front(), OpenErrorStatus);
}

/// Every cell gets the place of its PVT tables; one that names tables which the deck does not have stops.
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

std::string skippedText(const DeckReading& deck, const SkippedKeyword& row) {
    const std::string file = row.fileName == deck.cursor.fileName ? "" : row.fileName + ", ";
    return fmt::format("{} ({}line {})", row.name, file, row.lineNumber);
}

/// What the deck asked for and did not get, on one line.
void summariseSkipped(const DeckReading& deck) {
    std::string list;
    for (const SkippedKeyword& row : deck.sinks.skipped) {
        list += (list.empty() ? ": " : ", ") + skippedText(deck, row);
    }
    both(deck.run.console, "Keywords not supported: {}{}", deck.sinks.skipped.size(), list);
}

}  // namespace

void readDeck(Simulation& simulation) {
    DeckReading deck{simulation, {}, {}, {}};
    deck.sinks.console = &simulation.console;
    deck.sinks.metricCopy = stream(simulation.outputs, OutputFile::MetricCopy);
    deck.sinks.fieldCopy = stream(simulation.outputs, OutputFile::FieldCopy);
    openDeck(deck);
    firstPass(deck);
    closeMissingSections(deck, Sections.size());
    assignPvtRegions(simulation.console, simulation.grid, simulation.fluids);
    setOptionDefaults(simulation.options);
    secondPass(deck);
    finaliseOptions(simulation.console, simulation.grid, simulation.fluids, simulation.schedule,
                    simulation.options);
    summariseSkipped(deck);
}

}  // namespace kvr
