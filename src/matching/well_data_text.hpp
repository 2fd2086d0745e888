#pragma once

#include "base/console.hpp"
#include "base/deck_place.hpp"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kvr {

/// Text of a file of well data, word by word.
struct WellDataText {
    DeckPlace place;                     // of the present line
    std::string_view left;               // lines not yet read
    std::vector<std::string_view> line;  // words of the present line
};

/// The whole file. Stops the run where it cannot be opened or read, with its path.
std::string readWellData(const Console& console, const std::string& path);

/// Splits the next line that is not blank into its words, which stand between blanks, tabs or commas; false
/// at the end of the text.
bool nextLine(WellDataText& text);

/// Passes over the next line whatever stands in it, nothing included.
void skipLine(WellDataText& text);

/// A finite number, its exponent with E or D; nothing where the word is none. Too small to be held is 0.
std::optional<double> numberOf(std::string_view word);

}  // namespace kvr
