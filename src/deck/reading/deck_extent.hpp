#pragma once

#include "deck/reading/deck_cursor.hpp"

#include <cstdint>
#include <optional>
#include <string>

namespace kvr {

/// How many values the largest array of a deck has, repeat counts counted out, over its text and the files
/// that it includes from `folder`: the most cells that it can describe. Nothing where that is not bounded
/// (EQUALS or BOX fill cells that no array lists, an outside simulator's grid needs none) or where the text
/// alone is long enough for `enough` values, so that nothing need be counted.
std::optional<std::int64_t> largestArray(const DeckCursor& deck, const std::string& folder,
                                         std::int64_t enough);

}  // namespace kvr
