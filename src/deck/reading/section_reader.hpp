#pragma once

#include "base/console.hpp"
#include "base/messages.hpp"
#include "base/units.hpp"
#include "deck/reading/deck_cursor.hpp"
#include "deck/reading/list_read.hpp"
#include "model/grid.hpp"

#include <array>
#include <cstdio>
#include <limits>
#include <span>
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
    bool keywordCopied = false;       // the handler of the present keyword has written its own copy
    std::vector<SkippedKeyword> skipped;
    bool readsRests = false;        // sections may begin anywhere: in three files each has its place
    std::vector<DeckCursor> rests;  // of included files in which another section begins, the innermost first
};

/// BOX, until ENDBOX or the end of its section: the cells that arrays of one value per cell fill, and that
/// rows of array arithmetic without a box of their own stand for.
struct InputBox {
    bool isSet = false;
    CellBox cells;
};

/// The keywords of a section as the deck has them, included files in their places.
struct KeptSource {
    std::span<const std::string_view> without;  // keywords that are left out
    std::string text;
};

/// What every section reader works with. One per open file; an INCLUDE gets its own.
struct SectionReader {
    DeckCursor* cursor = nullptr;
    DeckSinks* sinks = nullptr;
    std::string_view section;    // the section's word: "RUNSPEC", "GRID", ...
    std::string_view errorName;  // the name in "Reading error, in ... Section" (some differ on purpose)
    bool insideInclude = false;
    int includeDepth = 0;       // files that include one another on the way here
    std::string workingFolder;  // joined directly to INCLUDE names
    bool outputMetric = false;  // numbers go to the unit copies as well
    const UnitSystem* units = nullptr;
    int keywordCount = 0;
    std::array<int, 3> gridSize{};  // cells along x, y, z; zero before DIMENS
    InputBox box;
    KeptSource* kept = nullptr;  // where the section's text is wanted again
    // A deck from anywhere: comments and blank lines stand between any two rows, rows of array arithmetic act
    // where they stand, included files include others. Without it a comment behind a row ends the rows.
    bool commonForm = false;
    bool halfRepeats = false;  // DPGRID: an array by cell given for the upper half holds for both halves
    std::string keyword;       // the keyword whose data are being read, for messages
};

inline const Console& consoleOf(const SectionReader& reader) {
    return *reader.sinks->console;
}

/// Section words end a section, wherever they are met. `word` is 8 characters as `keywordOf` makes it.
bool isSectionWord(std::string_view word);

/// A line as the keyword test sees it: leading blanks off, first word (to a blank, tab or slash) cut or
/// padded to 8 characters.
std::string keywordOf(std::string_view line);

// --- line helpers --------------------------------------------------------------------------------

/// A line to the log and to both unit copies.
void echoLine(const SectionReader& reader, std::string_view line);
/// A comment line: echoed; inside RUNSPEC the one that asks for unit copies sets `outputMetric`.
void takeComment(SectionReader& reader, std::string_view line);
/// Reads comment and blank lines, echoing them, until another line is next. At most 1000. The end of the
/// file prints "FILE I/O -> END OF FILE..".
void skipCommentLines(SectionReader& reader);
/// Drops lines while each is a comment or blank or holds a slash or an asterisk. At most 10000.
void skipKeywordData(SectionReader& reader);
/// Counts comment, blank and slash-first lines up to the next data line; `slashSeen` tells whether one of
/// them began with a slash.
int consumeSlashLines(SectionReader& reader, bool* slashSeen = nullptr);
/// The next line, its leading blanks off, without moving the cursor; false at the end of the file.
bool peekLine(const SectionReader& reader, std::string_view& line);
/// The first number of a line, `otherwise` where it begins with none.
double firstNumber(std::string_view line, double otherwise);
/// The next line starts with a letter that is not quoted (the next keyword), or the file has ended.
/// The cursor does not move.
bool nextLineIsKeyword(const SectionReader& reader);
/// The same for data whose rows may start with an unquoted name: the next line is one unquoted word
/// alone (a comment may stand behind it), or a section word, or the file has ended.
bool nextLineIsLoneWord(const SectionReader& reader);

// --- messages ------------------------------------------------------------------------------------

/// "READ -> " and the text behind it, usually the keyword.
void announce(const SectionReader& reader, std::string_view text);
/// A blank, the first 8 characters and " -> not surpported  ", and a row in the list of skipped keywords
/// if the text starts with a letter. Takes a line or a word.
void reportNotSupported(SectionReader& reader, std::string_view line);
/// Stops with the read-error texts of the section, then file, line and keyword, when the read failed.
/// The end of the file prints "FILE I/O -> END OF FILE.." with the place and returns.
void checkRead(const SectionReader& reader, const ListEnd& end);
/// Where the reader stands.
DeckPlace placeOf(const SectionReader& reader);
/// A warning with the reader's place and keyword on the line behind it, kept for the end of the run.
template <class... Args>
void warnHere(const SectionReader& reader, fmt::format_string<Args...> format, Args&&... args) {
    warnAt(consoleOf(reader), placeOf(reader), reader.keyword, format, std::forward<Args>(args)...);
}
/// A line that names file, line number and keyword of the present position; for hard stops on deck data.
void tellPlace(const SectionReader& reader);
/// `tellPlace` and the hard stop. The messages are already out.
[[noreturn]] void stopAtPlace(const SectionReader& reader);
/// "READ -> ", the keyword and ", is neglected"; its data are skipped.
void neglectKeyword(SectionReader& reader);

// --- arrays --------------------------------------------------------------------------------------

/// A whole array: list read, each value times `factor` (deck to internal units), and the checks. Fewer values
/// than cells, or a repeat past the last cell, stop with the read-error texts and the place; the end of the
/// file returns with the values as they stand. With `halfRepeats` the upper half of an array by cell or layer
/// may stand for both. With `outputMetric` the keyword and its numbers go to the unit
/// copies, `copyFactor` taking the deck's unit into the other one's (UnitSystem::copyLength, copyPressure,
/// ...; 1 for numbers without a unit).
void readArray(SectionReader& reader, std::span<double> values, double factor = 1.0, double copyFactor = 1.0);
void readArray(SectionReader& reader, std::span<float> values, double factor = 1.0, double copyFactor = 1.0);
void readArray(SectionReader& reader, std::span<int> values);

/// What values of an array may be; others are told in one line, with the first of them and its own place.
struct ValueRule {
    double low, high;
    bool stops;  // others stop the run, or they become the nearest value allowed
};

/// "cell 12 (I 2, J 3, K 1)", as far as the size of the grid is known.
std::string cellText(const SectionReader& reader, std::size_t cell);

/// The same for one value per cell of the grid: while a BOX is set it is given for the cells of the box
/// alone, and the others keep theirs.
void readCellArray(SectionReader& reader, std::span<double> values, double factor = 1.0,
                   double copyFactor = 1.0);
void readCellArray(SectionReader& reader, std::span<int> values);
/// The same with a rule for what the deck may say; `factor` as above, the rule in units of the deck.
void readCheckedArray(SectionReader& reader, const ValueRule& rule, std::span<double> values,
                      double factor = 1.0, double copyFactor = 1.0);

// --- rows ----------------------------------------------------------------------------------------

/// How the rows of a keyword begin: names may be unquoted, and then look like a keyword.
enum class RowStart { Number, Name };
/// What a slash behind a row says.
enum class RowSlash { EndsTable, EndsRow };

/// Walks the rows of tables and of the lists that a comment, blank or slash line ends.
///
///     RowLoop rows{RowSlash::EndsTable, RowStart::Number};      // SWOF, SGOF, PVDO, PVDG, RSVD, ZMFVD
///     RowLoop rows{RowSlash::EndsRow, RowStart::Name};          // EQUALS, COPY, MULTIPLY, TRACER, ...
///     while (nextTableRow(reader, rows)) {
///         rows.last = readDoubles(*reader.cursor, row);
///         checkRead(reader, rows.last);
///         ...keep the row...
///     }
struct RowLoop {
    RowSlash slash = RowSlash::EndsTable;
    RowStart start = RowStart::Number;
    ListEnd last{};  // of the row read last, set by the caller
    int rows = 0;    // rows begun
    double axis =
        std::numeric_limits<double>::quiet_NaN();  // of a table: first value of that row, deck units
};

/// True when another row is to be read now. Comments before the first row are skipped; behind a row a
/// comment, blank or slash line ends the walk, as do the next keyword and the end of the file. In the
/// common form comments and blank lines are skipped there too, as long as what follows them goes on: a
/// row, in a table one whose first value lies above `axis`. In a table a slash at the end of a row ends it
/// too, unless the first row had one: then slashes are row ends.
bool nextTableRow(SectionReader& reader, RowLoop& loop);

/// Rows of lists whose every row ends with its own slash and that comments do not end (COMPDAT,
/// WELSPECS, WCONPROD, ...): skips comment lines; false at a slash-first line (consumed), at the end of
/// the file, or when the next keyword stands there.
///
///     while (nextRow(reader)) { checkRead(reader, readList(*reader.cursor, targets)); ... }
bool nextRow(SectionReader& reader, RowStart start = RowStart::Name);

}  // namespace kvr
