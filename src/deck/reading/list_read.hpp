#pragma once

#include "deck/reading/deck_cursor.hpp"

#include <cstdint>
#include <span>
#include <string>
#include <variant>

namespace kvr {

/// One target of a mixed list read. Text is stored as read, without quotes.
using ListTarget = std::variant<int*, double*, float*, std::string*>;

/// Codes shown to the user behind "File reading error, code =".
enum class ListError {
    None = 0,
    BadValue = 64,    // a value that is not of the target's type
    TooMany = 65,     // a repeat count that runs past an array
    TooFew = 66,      // an array that ended early
    TooManyRows = 67  // rows beyond a fixed limit of the section
};

/// How a list read ended.
struct ListEnd {
    int count = 0;  // targets passed, defaulted ones included
    std::int64_t surplus =
        0;               // values of the last repeat beyond the targets; dropped like the rest of its line
    int dropped = 0;     // values behind the last target that the rest of its line held
    bool slash = false;  // a slash ended the list or stood behind the last value; the rest is dropped
    bool endOfFile = false;
    ListError error = ListError::None;
    int errorLine = 0;
    std::string errorText;  // the offending token
};

/// List-directed read over as many lines as it needs, starting at the cursor's next line. Separators are
/// blanks, tabs, commas and line ends; `n*value` repeats, `n*` skips n targets, a slash ends the list,
/// text may stand in single or double quotes, exponents may be written with d, an unquoted token that
/// starts with "--" discards the rest of its line. Targets not reached keep their values. After the last
/// target the rest of the line is dropped, as a record read does; a slash in that rest is reported.
/// The cursor is left at the start of a line.
ListEnd readList(DeckCursor& cursor, std::span<const ListTarget> targets);

/// The same into arrays of one type, each value times `scale`; as fast as the number parser allows.
ListEnd readDoubles(DeckCursor& cursor, std::span<double> values, double scale = 1.0);
ListEnd readFloats(DeckCursor& cursor, std::span<float> values, double scale = 1.0);
ListEnd readIntegers(DeckCursor& cursor, std::span<int> values);

/// Where a list begins, and from there the line of its value with this number, from 0; repeats count.
struct ListStart {
    std::size_t position = 0;
    int lineNumber = 0;
};
ListStart listStart(const DeckCursor& cursor);
int lineOfValue(const DeckCursor& cursor, const ListStart& start, std::size_t number);

/// One text value; an unquoted one runs to a blank, so that a path keeps its slashes.
ListEnd readPath(DeckCursor& cursor, std::string& path);

}  // namespace kvr
