#pragma once

#include "base/console.hpp"

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kvr {

/// Files of a compositional run that give the observed data quantity by quantity.
inline constexpr std::array<std::string_view, 6> QuantityFiles = {
    "WOPRH_OBSERVED.DATA", "WWPRH_OBSERVED.DATA", "WGPRH_OBSERVED.DATA",
    "WBHPH_OBSERVED.DATA", "WWCTH_OBSERVED.DATA", "WGORH_OBSERVED.DATA"};
inline constexpr std::size_t MostQuantityRows = 2;

/// One row: a time and one value for each well.
struct QuantityRow {
    double time = 0.0;           // days
    std::vector<double> values;  // by well, units of the file
};

struct QuantityRows {
    std::array<std::vector<QuantityRow>, QuantityFiles.size()> files;  // in the order of QuantityFiles
    std::size_t rowsKept = 0;                                          // the most of any file
};

/// Reads the six files in a folder (blank, or ended by its separator): a label, then rows of a time and
/// `wellCount` values, of which the first two are taken and nothing behind them is looked at. Stops on a file
/// that cannot be opened, and on a row that is short or holds a word that is no number, with file and line.
QuantityRows readQuantityFiles(const Console& console, const std::string& folder, std::size_t wellCount);

}  // namespace kvr
