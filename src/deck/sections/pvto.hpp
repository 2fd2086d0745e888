#pragma once

#include "deck/reading/section_reader.hpp"
#include "fluid/tables.hpp"

#include <string_view>
#include <vector>

namespace kvr {

/// The live-oil table as the deck gives it, in deck units: the saturated row of every Rs, and the
/// under-saturated rows of the last Rs only.
struct PvtoTable {
    Column Rs, pressure, fvf, viscosity;
    Column underPressure, underFvf, underViscosity;
    std::vector<int> lines;  // of the deck, by saturated row
    std::vector<std::vector<double>>
        records;  // by Rs: it, its saturated row and all rows under it, for copies
};
inline constexpr std::size_t PvtoRowValues = 3;  // pressure, Bo, viscosity

/// The numbers of one line up to its slash. `slash` tells whether it has one. Stops on what is no number.
std::vector<double> readLineNumbers(SectionReader& reader, std::string_view line, bool& slash);

/// Reads one PVTO table line by line: 1 + 3n numbers start an Rs with its saturated row, 3n numbers are
/// under-saturated rows of the Rs before; numbers that are neither go on in the next line. A slash ends
/// the Rs; a line of only a slash, a comment or blank line behind a row, the next keyword or the end of
/// the file end the table. Stops on a record of another length.
PvtoTable readPvtoTable(SectionReader& reader);

}  // namespace kvr
