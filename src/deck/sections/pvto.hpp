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
    std::vector<int> lines;                  // of the deck, by saturated row
    std::vector<std::vector<int>> rowLines;  // of the deck, by Rs: of its saturated row and all rows under it
    std::vector<std::vector<double>>
        records;  // by Rs: it, its saturated row and all rows under it, for copies
};
inline constexpr std::size_t PvtoRowValues = 3;  // pressure, Bo, viscosity

/// The numbers of one line up to its slash. `slash` tells whether it has one. Stops on what is no number.
std::vector<double> readLineNumbers(SectionReader& reader, std::string_view line, bool& slash);

/// Reads one PVTO table, record by record: 1 + 3n numbers are an Rs with its saturated row and the rows above
/// its bubble point, 3n numbers further rows of the Rs before. A slash ends a record, wherever its numbers
/// stand; a line of only a slash, the next keyword or the end of the file ends the table, and a comment or
/// blank line between records where such lines end rows. Stops on a record of another length.
PvtoTable readPvtoTable(SectionReader& reader);

/// Tests the rows of every Rs: pressures that do not rise and factors that are none stop the run.
void checkRowsOfRs(const SectionReader& reader, std::size_t table, const PvtoTable& live);

}  // namespace kvr
