#include "deck/native_deck.hpp"

#include "base/hard_stop.hpp"
#include "base/text.hpp"
#include "deck/deck_opening.hpp"
#include "deck/deck_sections.hpp"
#include "deck/options/option_section.hpp"
#include "deck/reading/keyword_table.hpp"

#include <string>

namespace kvr {

namespace {

constexpr std::string_view ReservoirFile = NativeDeckFiles[0];
constexpr std::string_view WellFile = NativeDeckFiles[1];
constexpr std::string_view SimulationFile = NativeDeckFiles[2];

constexpr std::array ReservoirSections = {SectionRow::Runspec, SectionRow::Grid,    SectionRow::Edit,
                                          SectionRow::Props,   SectionRow::Regions, SectionRow::Solution};

/// Loads one of the files in place of the one before.
void openPart(DeckReading& deck, std::string_view name) {
    const Console& console = deck.run.console;
    const std::string path = deck.run.options.deckFolder + std::string(name);
    const int status = loadDeckFile(path, deck.cursor);
    if (status == 0) return;
    if (status < 0)
        lineToBoth(console, "ERROR: File handling Error for input file");
    else
        both(console, "ERROR: File handling error, code = {}", status);
    both(console, "File {}", path);
    lineToBoth(console, "Check input file and folder...");
    hardStop(console);
}

/// Reads on to the next line that is no comment and leaves it next; its word, blank at the end of the file.
std::string nextWordOf(DeckReading& deck) {
    SectionReader reader = readerFor(deck, deck.cursor, "", "");
    std::string_view line;
    while (nextLine(deck.cursor, line)) {
        if (isCommentLine(line)) {
            takeComment(reader, line);
            continue;
        }
        stepBack(deck.cursor);
        return keywordOf(line);
    }
    return {};
}

/// Reads over the word that opens a section; false where another one is next.
bool passWord(DeckReading& deck, std::string_view section) {
    const SectionReader reader = readerFor(deck, deck.cursor, section, "");
    const std::string word = nextWordOf(deck);
    if (word.empty() || !isOwnSectionWord(reader, word)) return false;
    std::string_view line;
    nextLine(deck.cursor, line);
    echoLine(reader, line);
    return true;
}

/// A section that the file does not have where it belongs gets the defaults of its end, with a warning.
void warnOfMissing(const DeckReading& deck, const DeckSection& section) {
    const DeckPlace place{deck.cursor.fileName, deck.cursor.lineNumber + 1};
    warnAt(deck.run.console, place, section.word,
           "WARNING :: SECTION {} IS NOT IN ITS PLACE, ITS DEFAULTS ARE TAKEN", section.word);
}

/// The readers of RUNSPEC, GRID and EDIT know their own word; RUNSPEC reads from the first line on.
void readReservoirSection(DeckReading& deck, SectionRow row) {
    const DeckSection& section = sectionOf(row);
    tellSection(deck.run.console, section);
    if (row != SectionRow::Runspec) {
        const bool isNext = section.namesItself ? nextWordOf(deck) == padded(section.word, FullKeyword)
                                                : passWord(deck, section.word);
        if (!isNext && section.closes) {
            warnOfMissing(deck, section);
            return closeSection(deck, row);
        }
    }
    readSection(deck, row);
}

/// What stands behind the last section of a file is not read.
void tellRest(DeckReading& deck) {
    const std::string word(trim(nextWordOf(deck)));
    if (word.empty() || word == "END") return;
    const DeckPlace place{deck.cursor.fileName, deck.cursor.lineNumber + 1};
    if (word == sectionOf(SectionRow::Summary).word)
        both(deck.run.console, "-> {} is not read from this file", word);
    else
        warnAt(deck.run.console, place, word,
               "WARNING :: {} AND WHAT STANDS BEHIND IT IS NOT READ, SECTIONS HAVE A FIXED ORDER HERE", word);
}

void readReservoir(DeckReading& deck) {
    openPart(deck, ReservoirFile);
    for (const SectionRow row : ReservoirSections) readReservoirSection(deck, row);
    assignPvtRegions(deck.run.console, deck.run.grid, deck.run.fluids);
    tellRest(deck);
}

void readWells(DeckReading& deck) {
    const DeckSection& section = sectionOf(SectionRow::Schedule);
    tellSection(deck.run.console, section);
    openPart(deck, WellFile);
    passWord(deck, section.word);
    readSection(deck, SectionRow::Schedule);
    tellRest(deck);
}

void readOptions(DeckReading& deck) {
    setOptionDefaults(deck.run.options);
    openPart(deck, SimulationFile);
    bannerLine(deck.run.console, OptionBanner);
    passWord(deck, OptionSection);
    SectionReader reader = readerForOptions(deck);
    readOptionSection(reader, deck.run.options);
    tellRest(deck);
}

/// An outside simulator reads one file: what its command gets is a name without one.
void warnOfCommand(const DeckReading& deck) {
    const RunOptions& options = deck.run.options;
    if (!options.traceFromRestart && !options.eclipseToTecplot && !options.eclipseToIx) return;
    warn(deck.run.console,
         "WARNING :: The command of the outside simulator gets the name {}, of which there is no deck",
         options.headerName);
}

}  // namespace

void readNativeDeck(Simulation& simulation) {
    DeckReading deck{simulation, {}, {}, {}};
    connectSinks(deck);
    readReservoir(deck);
    readWells(deck);
    readOptions(deck);
    warnOfCommand(deck);
    finishDeck(deck);
}

}  // namespace kvr
