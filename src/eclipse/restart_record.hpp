#pragma once

#include <string>
#include <vector>

namespace kvr {

/// What the reader of outside restarts keeps from call to call.
struct RestartRecord {
    bool wellsFromFile = false;           // the deck has none: the wells are those of the restarts
    std::vector<std::string> namedWells;  // wells of the line files, where they come from restarts
};

}  // namespace kvr
