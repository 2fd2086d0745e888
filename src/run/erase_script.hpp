#pragma once

#include "base/console.hpp"

#include <string>

namespace kvr {

/// Writes 0EraseData.bat, which deletes what a run leaves behind: "@echo off", then one "del" line per
/// result name. `folder` is joined directly to the name, which takes the prefix of the run; stops with the
/// open-failure texts when the file cannot be written.
void writeEraseScript(const Console& console, const std::string& folder, const std::string& prefix = {});

}  // namespace kvr
