#pragma once

#include "base/text.hpp"
#include "deck/reading/section_reader.hpp"
#include "deck/reading/source_copies.hpp"
#include "deck/reading/unit_copies.hpp"

#include <algorithm>
#include <span>
#include <string>
#include <string_view>

/// A section is a table of keywords and one loop over it. A section file holds, in this order: the
/// handlers, the table, the section's INCLUDE texts, and the section routine:
///
///     namespace {
///
///     void readNtg(SectionReader& reader, GridRecords& records) {
///         announce(reader, reader.keyword);               // READ -> NTG
///         skipCommentLines(reader);
///         readCellArray(reader, records.grid.NTG.cells());
///     }
///
///     void readEquil(SectionReader& reader, SolutionRecords& records) {
///         announce(reader, reader.keyword);
///         skipCommentLines(reader);
///         std::array<double, 5> items{};                  // defaults first: `n*` leaves them
///         checkRead(reader, readDoubles(*reader.cursor, items));
///     }
///
///     constexpr std::array GridKeywords = {
///         KeywordRow<GridRecords>{"NTG", readNtg, "net to gross ratio, one value per cell"},
///         KeywordRow<GridRecords>{"RPTGRID", neglect<GridRecords>, "neglected"},
///     };
///     constexpr IncludeTexts Texts{"ERROR: INCLUDE File Open Error at GRID section",
///                                  "File I/O Error, in GRID Section", "INCLUDE FILE FINISHED, GRID
///                                  SECTION"};
///
///     }  // namespace
///
///     void readGridSection(SectionReader& reader, GridRecords& records) {
///         dispatchSection<GridRecords>(reader, records, GridKeywords, Texts);
///         ...end of the section...
///     }
///
/// The loop does everything that all sections share: the line rule, comments to the echo sinks, lines
/// that start with a slash, the keyword count, TITLE and its line, INCLUDE (not listed in the table),
/// section words, " -> not surpported  ". `reader.keyword` is set before a handler is called.
namespace kvr {

inline constexpr int FullKeyword = 8;  // characters of a keyword that are compared

/// One keyword of a section. `Records` is the section's struct of references to what it writes.
template <class Records>
struct KeywordRow {
    std::string_view name;
    void (*handler)(SectionReader&, Records&);
    std::string_view documentation;  // one line, for the user guide
    int significant = FullKeyword;   // characters compared
};

/// Handler of a keyword that is read over with its message.
template <class Records>
void neglect(SectionReader& reader, Records&) {
    neglectKeyword(reader);
}

/// Handler of RPTRST, the same in every section that has it.
template <class Records>
void neglectRestartReports(SectionReader& reader, Records&) {
    announce(reader, "RPTRST, is neglected");
    announce(reader, "RPTRST, output is saved in Tecplot or Text file by KVR, only primary variable");
    noteUnused(consoleOf(reader), reader.keyword, placeOf(reader), reader.section);
    skipKeywordData(reader);
}

/// A keyword that every section takes.
struct CommonKeyword {
    std::string_view name;
    void (*handler)(SectionReader&);
    std::string_view documentation;
};

/// Reads the keyword if it is one that every section takes.
bool handleCommonKeyword(SectionReader& reader, std::string_view word);

/// Texts of INCLUDE that differ from section to section. A section without INCLUDE passes `NoInclude`.
struct IncludeTexts {
    std::string_view openError;          // "ERROR: INCLUDE File Open Error at RUNSPEC section"
    std::string_view ioError;            // "File I/O Error, in RUNSPEC Section"
    std::string_view finished;           // "INCLUDE FILE FINISHED, RUNSPEC SECTION"
    bool statusBehindOpenError = false;  // where the status of the failure stands: first or second line
};
inline constexpr IncludeTexts NoInclude{};

/// Outcome of one keyword test of a section loop.
enum class SectionEvent { Keyword, SectionWord, EndOfFile };

/// The line of a keyword test. `line` lives as long as the cursor.
struct KeywordLine {
    std::string word;  // 8 characters
    std::string_view line;
};

/// Keyword tests of one section loop, at most.
inline constexpr int MaxKeywordLines = 10000;

/// Reads on to the next keyword line by the line rule. Comments are echoed, slash-first lines ignored.
/// `tested` counts the keyword lines of the loop: more than MaxKeywordLines end it like a section word,
/// with a warning. Section words are only reported: whether one ends the section is the loop's affair.
SectionEvent nextKeyword(SectionReader& reader, int& tested, KeywordLine& found);

/// TITLE and its one line of text, which is no keyword whatever it says.
bool skippedTitle(SectionReader& reader, const KeywordLine& found);

/// INCLUDE of a main-deck section reader up to the opened file; stops when it cannot be opened.
DeckCursor openInclude(SectionReader& reader, const IncludeTexts& texts);

/// Whether INCLUDE opens a file here: in an included file only in the common form, and not without end.
bool mayInclude(const SectionReader& reader);
inline constexpr int DeepestInclude = 20;
[[noreturn]] void stopAtEndlessIncludes(SectionReader reader);

/// Behind the reading of an included file: in the common form what it holds from another section's word on
/// goes to the sinks. True where there is such a rest, of this file or of one that it included.
bool leaveRest(const SectionReader& inner, DeckCursor& file);

/// The word is the section's own.
bool isOwnSectionWord(const SectionReader& reader, std::string_view word);

/// The name as it is compared, against a padded word of the deck.
bool matchesKeyword(std::string_view name, int significant, std::string_view word);

/// Keeps what stands between the keyword before, which began at `pending`, and the present line, of which
/// `event` and `word` tell. `pending` moves to it, or to npos where it is not kept.
void keepSource(SectionReader& reader, SectionEvent event, std::string_view word, std::size_t& pending);

inline constexpr std::string_view OptionSection = "TUNEKVR";

/// A line that names the keyword that may have been meant, kept for the end of the run.
void tellMeant(const SectionReader& reader, std::string_view meant);

template <class Records>
void dispatchSection(SectionReader& reader, Records& records, std::span<const KeywordRow<Records>> table,
                     const IncludeTexts& texts);

/// The section's dispatcher on a second file: the same table, less INCLUDE but in the common form. That form
/// reads what stands in the file behind another section's word as well: it is left with the sinks, and true
/// says that the section has ended.
template <class Records>
bool readIncludeFile(SectionReader& reader, Records& records, std::span<const KeywordRow<Records>> table,
                     const IncludeTexts& texts) {
    DeckCursor file = openInclude(reader, texts);
    SectionReader inner = reader;
    inner.cursor = &file;
    inner.insideInclude = true;
    ++inner.includeDepth;
    dispatchSection(inner, records, table, texts);
    reader.keywordCount = inner.keywordCount;
    reader.outputMetric = inner.outputMetric;
    reader.box = inner.box;
    reader.halfRepeats = inner.halfRepeats;
    lineToBoth(consoleOf(reader), texts.finished);
    return leaveRest(inner, file);
}

template <class Records>
bool handleKeyword(SectionReader& reader, Records& records, std::span<const KeywordRow<Records>> table,
                   std::string_view word) {
    for (const KeywordRow<Records>& row : table) {
        if (!matchesKeyword(row.name, row.significant, word)) continue;
        reader.keyword = row.name;
        row.handler(reader, records);
        return true;
    }
    return false;
}

/// Letters in which a word may differ from the option that was meant.
inline constexpr std::size_t MostTypos = 2;

/// Names the option that an unknown word of the option section looks like. The other sections have keywords
/// of other programs, whose names differ in one letter and mean something else.
template <class Records>
void suggestKeyword(const SectionReader& reader, std::span<const KeywordRow<Records>> table,
                    std::string_view word) {
    if (reader.section != OptionSection) return;
    std::string_view meant;
    std::size_t fewest = MostTypos + 1;
    for (const KeywordRow<Records>& row : table) {
        const std::size_t typos = editDistance(toUpper(trim(word)), row.name);
        if (typos >= std::min(fewest, row.name.size() / 2)) continue;
        fewest = typos;
        meant = row.name;
    }
    if (!meant.empty()) tellMeant(reader, meant);
}

/// The loop of every section. Returns in front of the section word that ended it, or at the end of the
/// file.
template <class Records>
void dispatchSection(SectionReader& reader, Records& records, std::span<const KeywordRow<Records>> table,
                     const IncludeTexts& texts) {
    int tested = 0;
    std::size_t pending = std::string::npos;
    KeywordLine found;
    for (;;) {
        const SectionEvent event = nextKeyword(reader, tested, found);
        keepSource(reader, event, found.word, pending);
        if (event == SectionEvent::EndOfFile) return;
        ++reader.keywordCount;
        reader.sinks->keywordCopied = false;
        const std::size_t begin = reader.cursor->position;
        if (handleKeyword(reader, records, table, found.word) || handleCommonKeyword(reader, found.word)) {
            copySource(reader, found.line, begin);
            continue;
        }
        if (found.word == "INCLUDE " && mayInclude(reader) && !texts.openError.empty()) {
            if (readIncludeFile(reader, records, table, texts)) return;
            continue;
        }
        --reader.keywordCount;
        if (event == SectionEvent::SectionWord && !isOwnSectionWord(reader, found.word)) {
            stepBack(*reader.cursor);
            return;
        }
        if (skippedTitle(reader, found)) continue;
        reportNotSupported(reader, found.line);
        suggestKeyword(reader, table, found.word);
        skipKeywordData(reader);
    }
}

}  // namespace kvr
