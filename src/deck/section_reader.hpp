#pragma once

#include "base/console.hpp"
#include "base/units.hpp"
#include "deck/deck_cursor.hpp"
#include "deck/list_read.hpp"

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace kvr {

/// Keywords that a run did not honour, each with where it was met first.
struct SkippedKeyword {
    std::string name;
    std::string fileName;
    int lineNumber = 0;
    int count = 1;
};

/// The sinks that receive the deck as it is read, and what reading leaves for the user.
struct DeckSinks {
    Console* console = nullptr;       // its log receives comment and section lines
    std::FILE* metricCopy = nullptr;  // the deck rewritten in metric units
    std::FILE* fieldCopy = nullptr;   // the deck rewritten in field units
    std::vector<SkippedKeyword> skipped;
};

/// What every section reader works with. One per open file; an INCLUDE gets its own.
struct SectionReader {
    DeckCursor* cursor = nullptr;
    DeckSinks* sinks = nullptr;
    std::string_view section;    // the section's word: "RUNSPEC", "GRID", ...
    std::string_view errorName;  // the name in "Reading error, in ... Section" (some differ on purpose)
    bool insideInclude = false;
    std::string workingFolder;  // joined directly to INCLUDE names
    bool outputMetric = false;  // numbers go to the unit copies as well
    const UnitSystem* units = nullptr;
    int keywordCount = 0;
    std::string keyword;  // the keyword whose data are being read, for messages
    int keywordLine = 0;
};

/// Section words end a section, wherever they are met.
bool isSectionWord(std::string_view word);

/// A line as the keyword test sees it: leading blanks off, first word cut or padded to 8 characters.
std::string keywordOf(std::string_view line);

// --- line helpers --------------------------------------------------------------------------------

/// A line to the log and to both unit copies.
void echoLine(const SectionReader& reader, std::string_view line);
/// Reads comment and blank lines, echoing them, until another line is next. At most 1000. The end of the
/// file prints "FILE I/O -> END OF FILE..".
void skipCommentLines(SectionReader& reader);
/// Drops lines while each is a comment or blank or holds a slash or an asterisk. At most 10000.
void skipKeywordData(SectionReader& reader);
/// Lines before the next slash-first line; the cursor stays on that line, so that the next read returns it.
int countLinesToSlash(SectionReader& reader);
/// Counts comment, blank and slash-first lines up to the next data line.
int consumeSlashLines(SectionReader& reader);
/// The same where the test is a slash anywhere in the line.
int consumeLinesWithSlash(SectionReader& reader);
/// 1-based position of the last case-insensitive match of the blank-trimmed pattern, 0 if none.
int findLast(std::string_view text, std::string_view pattern);
/// The next line starts with a letter that is not quoted (the next keyword), or the file has ended.
/// The cursor does not move.
bool nextLineIsKeyword(const SectionReader& reader);

// --- messages ------------------------------------------------------------------------------------

/// "READ -> " and the keyword.
void announce(const SectionReader& reader, std::string_view keyword);
/// A blank, the first 8 characters and " -> not surpported  ", and a row in the list of skipped keywords.
void reportNotSupported(SectionReader& reader, std::string_view word);
/// Stops with the read-error texts of the section, then file, line and keyword, when the read failed.
void checkRead(const SectionReader& reader, const ListEnd& end);
/// A line that names file, line number and keyword of the present position; for hard stops on deck data.
void tellPlace(const SectionReader& reader);

// --- rows ----------------------------------------------------------------------------------------

/// Rows of lists whose every row ends with its own slash (EQUALS, COMPDAT, WELSPECS, ...): skips comment
/// lines; false at a slash-first line (consumed), at the end of the file, or when the next line starts
/// with an unquoted keyword that is not a row (`rowsStartQuotedOrData`).
bool nextRow(SectionReader& reader);

}  // namespace kvr
