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
/// `text` cut or padded with blanks to `width` characters.
std::string padded(std::string_view text, std::size_t width);

}  // namespace kvr
