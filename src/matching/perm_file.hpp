#pragma once

#include "base/cell_array.hpp"
#include "base/console.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace kvr {

/// Values of one keyword in a file of deck text: where they stand, and what they are.
struct PermBlock {
    std::size_t begin = 0, end = 0;  // of the text, from behind the keyword to the slash
    std::vector<double> values;      // by cell, 0-based
};

/// The file that an outside simulator takes permeability from, as a match found it.
struct PermFile {
    std::string path;
    std::string text;
    std::vector<PermBlock> blocks;  // of PERMX, PERMY, PERMZ, in the order of the text
};

/// Finds the values of PERMX, PERMY and PERMZ in deck text; "n*v" stands for n values, two dashes begin a
/// comment. False where a block holds something else or has no slash.
bool findPermBlocks(std::string_view text, std::vector<PermBlock>& blocks);

/// Reads the file and finds its values. Stops where it cannot be read, where it has no PERMX, and where a
/// block does not have a value for each of `cells`.
PermFile readPermFile(const Console& console, const std::string& path, CellId cells);

/// The file with each value times the ratio of its cell; everything else in it stays.
void writePermFile(const Console& console, const PermFile& file, const CellArray<double>& ratio);

}  // namespace kvr
