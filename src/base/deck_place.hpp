#pragma once

#include <string>

namespace kvr {

/// Where a row stands in the deck, for messages that come after the reading.
struct DeckPlace {
    std::string fileName;
    int lineNumber = 0;  // 1-based; 0: at no place of the input
};

}  // namespace kvr
