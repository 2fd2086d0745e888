#pragma once

#include "base/console.hpp"

#include <string>

namespace kvr {

/// Writes the example deck with every option and its comment to `path`, replacing any file there.
void writeExampleDeck(const Console& console, const std::string& path);

}  // namespace kvr
