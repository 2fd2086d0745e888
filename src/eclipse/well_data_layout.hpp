#pragma once

#include "base/number_writer.hpp"

#include <array>
#include <span>
#include <string>
#include <string_view>

namespace kvr {

/// Columns of WELL_CALCULATED.DATA and WELL_OBSERVED.DATA; mole fractions of components stand behind them.
inline constexpr std::array<std::string_view, 8> WellDataColumns = {"WNAME", "TIME", "WOPR", "WWPR",
                                                                    "WGPR",  "WBHP", "WWCT", "WGOR"};

/// "WZMF_0001", the column of component c = 1, 2, ...
std::string fractionColumn(int component);

/// Names of the columns, each in 21 characters; with components a second line with theirs.
void putWellDataHead(int componentCount, NumberWriter& writer);

/// Name of the well in 8 characters and 4 blanks, then each value in scientific notation, 12 digits behind
/// the point, in 20 characters and a blank.
void putWellDataRow(std::string_view well, std::span<const double> values, NumberWriter& writer);

}  // namespace kvr
