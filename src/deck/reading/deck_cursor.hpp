#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kvr {

/// A deck file in memory, positioned at a line, with a one-line step back. Lines end with LF or CR LF.
struct DeckCursor {
    std::string fileName;          // as messages name it
    std::string text;              // the whole file
    std::size_t position = 0;      // start of the next unread byte
    std::size_t previousLine = 0;  // start of the line read last
    int lineNumber = 0;            // number of the line read last, 1-based
};

/// Loads a file. False when it cannot be opened or read; the cursor is then empty.
bool loadDeck(const std::string& path, DeckCursor& cursor);

/// The path under which a file of this name exists: the name as given, or with its backslashes turned
/// into slashes. Empty when there is no such file.
std::string existingPath(const std::string& path);

/// The next line without its end; false at the end of the file. The view lives as long as the cursor.
bool nextLine(DeckCursor& cursor, std::string_view& line);

/// Makes the line read last the next one again.
void stepBack(DeckCursor& cursor);

/// A comment by the line rule: after leading blanks are removed it starts with "--" or is empty.
bool isCommentLine(std::string_view line);
/// The first character behind leading blanks is a slash.
bool isSlashLine(std::string_view line);

}  // namespace kvr
