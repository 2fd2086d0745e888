#pragma once

#include "base/console.hpp"

#include <string>

namespace kvr {

/// Writes the batch file that deletes what a run leaves behind: "@echo off", then one "del" line per
/// result name. Stops with the open-failure texts when `path` cannot be written.
void writeEraseScript(const Console& console, const std::string& path);

}  // namespace kvr
