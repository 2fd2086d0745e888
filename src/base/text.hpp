#pragma once

#include <string>
#include <string_view>

namespace kvr {

/// Blanks and tabs off both ends; a carriage return counts as a blank.
std::string_view trim(std::string_view text);
/// Leading blanks and tabs off.
std::string_view trimLeft(std::string_view text);
/// Characters up to the first blank, tab or slash.
std::string_view firstWord(std::string_view text);
std::string toUpper(std::string_view text);
std::string toLower(std::string_view text);
/// Letters to be changed, dropped, put in, or swapped with their neighbour to turn one word into the other.
std::size_t editDistance(std::string_view a, std::string_view b);
/// `text` cut or padded with blanks to `width` characters.
std::string padded(std::string_view text, std::size_t width);

}  // namespace kvr
