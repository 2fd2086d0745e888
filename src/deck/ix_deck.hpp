#pragma once

#include "base/console.hpp"
#include "deck/options.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace kvr {

/// A file that an .afi file names, with its kind ("ixf_model", "resqml", ...).
struct IxInclude {
    std::string type;
    std::string path;
};

/// The names under which the .afi file of a run is looked for, in order.
std::vector<std::string> ixDeckNames(const RunOptions& options);

/// The file that a line with INCLUDE names: its path is the first text in double quotes, its kind the next
/// one where the word type stands between them. Blank where the line has none.
IxInclude ixIncludeOf(std::string_view line);

/// Reads the .afi file of the run, which tells how the run is laid out: every INCLUDE is told with kind and
/// path, every other line as not supported. The files themselves are not read. Stops where there is none.
std::vector<IxInclude> readIxDeck(const Console& console, const RunOptions& options);

}  // namespace kvr
