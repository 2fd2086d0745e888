#pragma once

#include "deck/reading/section_reader.hpp"
#include "run/records/simulation.hpp"

#include <array>
#include <string_view>

/// The sections of a deck and what surrounds them, for every form that a deck may have.
namespace kvr {

/// One section: its word, and how it is read from the cursor's place up to the next section word.
struct DeckSection {
    std::string_view word;
    std::string_view errorName;  // in "Reading error, in ... Section"
    void (*read)(SectionReader&, Simulation&);
    bool needsGrid;    // holds data per cell
    bool closes;       // its end gives defaults that a run cannot do without
    bool namesItself;  // its reader takes its own word
    std::string_view note;
};

/// Rows of the sections, in the order in which a deck has them.
enum class SectionRow : std::size_t {
    Runspec,
    Grid,
    Edit,
    Props,
    Regions,
    Solution,
    Summary,
    Schedule,
    Count
};
inline constexpr auto SectionCount = static_cast<std::size_t>(SectionRow::Count);

const DeckSection& sectionOf(SectionRow row);
/// The section that a word of 8 characters opens; Count where it opens none. REGION opens REGIONS.
SectionRow sectionOfWord(std::string_view word);

/// The deck being read and the run that it fills.
struct DeckReading {
    Simulation& run;
    DeckSinks sinks;
    DeckCursor cursor;
    std::array<bool, SectionCount> done{};  // by row
    int openIncludes = 0;                   // files that include one another, sections and all
};

/// Connects the sinks with the log and the unit copies of the run.
void connectSinks(DeckReading& deck);

/// A reader at `cursor` for a section; for the lines between sections both names are blank.
SectionReader readerFor(DeckReading& deck, DeckCursor& cursor, std::string_view section,
                        std::string_view errorName);
SectionReader readerForOptions(DeckReading& deck);

/// A blank line and the text, on the screen.
void bannerLine(const Console& console, std::string_view text);
/// "---- READ FROM " and the section, with its note.
void tellSection(const Console& console, const DeckSection& section);
inline constexpr std::string_view OptionBanner = "---- READ FROM STREAMLINE for KVR ----";

/// Reads a section from the deck's place on; stops where it needs a grid and there is none.
void readSection(DeckReading& deck, SectionRow row);

/// Gives a section that the deck does not have the defaults of its end, or stops with its message.
void closeSection(DeckReading& deck, SectionRow row);

/// Sections before `end` that the deck does not have still close: their tables and arrays get their
/// defaults, with a warning each, or the run stops with the section's message.
void closeMissingSections(DeckReading& deck, SectionRow end);

/// Behind the sections: every cell gets the place of its tables of fluids; one that names tables which the
/// deck does not have stops.
void assignPvtRegions(const Console& console, const GridModel& grid, FluidTables& fluids);

/// Behind everything: the fall-backs and the echo of the options, and on one line what the deck asked for
/// and did not get.
void finishDeck(DeckReading& deck);

}  // namespace kvr
