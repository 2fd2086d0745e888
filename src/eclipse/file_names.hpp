#pragma once

#include "deck/options.hpp"

#include <string>
#include <string_view>

namespace kvr {

/// Path of a file of the run's set beside the deck: the deck's path without extension, then `extension`.
std::string runFile(const RunOptions& options, std::string_view extension);

/// The same with four digits behind the letters of the extension: ".X" and 7 give ".X0007".
std::string runFile(const RunOptions& options, std::string_view letters, int step);

/// Folder of an outside run: that of the deck, wherever the results of this run go. Ends with its separator;
/// blank for the present folder.
const std::string& outsideFolder(const RunOptions& options);

/// Path of a file that an outside run left in its folder under `header`.
std::string outsideFile(const RunOptions& options, std::string_view header, std::string_view extension);
std::string outsideFile(const RunOptions& options, std::string_view header, std::string_view letters,
                        int step);

bool fileExists(const std::string& path);

}  // namespace kvr
