#pragma once

#include "base/console.hpp"
#include "deck/reading/deck_cursor.hpp"

#include <string>
#include <vector>

namespace kvr {

/// Loads the first of the files that exists. Stops by the status of the failure: none exists, or the one
/// that does cannot be read.
void openFirstDeck(const Console& console, const std::vector<std::string>& names, DeckCursor& cursor);

/// The same for one file, without the stop: 0, OpenErrorStatus where there is none, HandlingErrorStatus or
/// the system's code where it cannot be read.
int loadDeckFile(const std::string& name, DeckCursor& cursor);

}  // namespace kvr
