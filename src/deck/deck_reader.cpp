#include "deck/deck_reader.hpp"

#include "base/text.hpp"
#include "deck/deck_opening.hpp"
#include "deck/deck_sections.hpp"
#include "deck/options/option_section.hpp"
#include "deck/reading/keyword_table.hpp"
#include "deck/reading/unit_copies.hpp"

#include <algorithm>
#include <string>
#include <utility>

namespace kvr {

namespace {

constexpr int FirstPassLines = 10000;  // lines tested by the dispatcher, at most
constexpr int SecondPassLines = 1000;
constexpr std::size_t DispatcherLineWidth = 2048;

// --- the two passes --------------------------------------------------------------------------------

void readNamedSection(DeckReading& deck, SectionRow row) {
    tellSection(deck.run.console, sectionOf(row));
    if (row == SectionRow::Runspec && std::count(deck.done.begin(), deck.done.end(), true) > 0) {
        lineToBoth(deck.run.console, "ERROR :: A SECOND RUNSPEC WOULD TAKE BACK WHAT STANDS BEFORE IT");
        stopAtPlace(readerFor(deck, deck.cursor, "RUNSPEC", ""));
    }
    // Wells are built at the end of SCHEDULE, from everything that stands before it.
    if (row == SectionRow::Schedule) closeMissingSections(deck, SectionRow::Schedule);
    readSection(deck, row);
}

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
        return true;
    }
    return false;
}

void passOver(SectionReader& reader, std::string_view line, std::string_view word) {
    if (skippedTitle(reader, {std::string(word), line}) || handleCommonKeyword(reader, word)) return;
    reportNotSupported(reader, line);
    skipKeywordData(reader);
}

constexpr IncludeTexts BetweenSections{"ERROR: INCLUDE File Open Error at RUNSPEC section",
                                       "File I/O Error, in RUNSPEC Section",
                                       "INCLUDE FILE FINISHED, RUNSPEC SECTION"};

bool readSections(DeckReading& deck);

/// Reads the sections of another file, and goes on in the present one.
void readSectionsOf(DeckReading& deck, DeckCursor file) {
    if (++deck.openIncludes > DeepestInclude) stopAtEndlessIncludes(readerFor(deck, file, "", ""));
    std::swap(deck.cursor, file);
    readSections(deck);
    std::swap(deck.cursor, file);
    --deck.openIncludes;
}

/// What included files hold behind the section that included them, the innermost first.
void readRests(DeckReading& deck) {
    for (DeckCursor& rest : std::exchange(deck.sinks.rests, {})) readSectionsOf(deck, std::move(rest));
}

/// The first pass through one file; false when its end came before END and before options.
bool readSections(DeckReading& deck) {
    const Console& console = deck.run.console;
    SectionReader reader = readerFor(deck, deck.cursor, "", "");
    int linesLeft = FirstPassLines;
    std::string_view line;
    std::string word;
    while (nextWord(deck, reader, linesLeft, line, word)) {
        if (word == "TUNEKVR ") {
            lineToBoth(console, "");
            stepBack(deck.cursor);
            return true;
        }
        if (word == "END     ") {
            if (deck.run.options.outputMetric) copyEcho(reader, line);
            lineToBoth(console, "");
            lineToBoth(console, "FILE END DETECTED & CLOSED...");
            return true;
        }
        const SectionRow row = sectionOfWord(word);
        if (row != SectionRow::Count) {
            echoLine(reader, line);
            readNamedSection(deck, row);
            readRests(deck);
        } else if (word == "INCLUDE " && reader.commonForm && mayInclude(reader)) {
            readSectionsOf(deck, openInclude(reader, BetweenSections));
        } else {
            passOver(reader, line, word);
        }
    }
    return false;
}

void firstPass(DeckReading& deck) {
    if (!readSections(deck))
        lineToBoth(deck.run.console, "FILE I/O -> END OF FILE DETECTED BEFORE STREAMLINE INFO..");
}

/// Options behind the END that closes the second pass are not read.
void tellOptionsBehindEnd(DeckReading& deck, SectionReader& reader) {
    std::string_view line;
    for (int n = 0; n < SecondPassLines && nextLine(deck.cursor, line); ++n) {
        if (keywordOf(line.substr(0, DispatcherLineWidth)) != "TUNEKVR ") continue;
        reader.keyword = "TUNEKVR";
        return warnHere(reader, "WARNING :: A SECOND TUNEKVR BEHIND END IS NOT READ");
    }
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
            bannerLine(console, OptionBanner);
            SectionReader section = readerForOptions(deck);
            readOptionSection(section, deck.run.options);
        } else if (word == "END     ") {
            lineToBoth(console, "FILE END DETECTED & CLOSED...");
            tellOptionsBehindEnd(deck, reader);
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

}  // namespace

void readDeck(Simulation& simulation) {
    DeckReading deck{simulation, {}, {}, {}};
    connectSinks(deck);
    deck.sinks.readsRests = true;
    openFirstDeck(simulation.console, deckNames(simulation.options), deck.cursor);
    firstPass(deck);
    closeMissingSections(deck, SectionRow::Count);
    assignPvtRegions(simulation.console, simulation.grid, simulation.fluids);
    setOptionDefaults(simulation.options);
    secondPass(deck);
    finishDeck(deck);
}

}  // namespace kvr
