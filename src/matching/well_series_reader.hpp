#pragma once

#include "base/console.hpp"
#include "matching/well_series.hpp"

#include <span>
#include <string>
#include <vector>

namespace kvr {

/// Which of the two files is read; they differ in the words of their messages.
enum class WellDataSide { Observed, Calculated };

/// Reads WELL_OBSERVED.DATA or WELL_CALCULATED.DATA in a folder (blank, or ended by its separator): a header
/// that names the columns, WNAME and TIME among them, in a run with components a second line of it, then rows
/// in any order of wells. Columns are known by the first four letters, so that WOPRH is WOPR; the rest of a
/// name is not looked at. Numbers stand between blanks, tabs or commas, exponents may be written with D.
///
/// Gives one series for each of `wells`, the producers of the run, in their order; one without rows is empty.
/// A missing cut column is formed from water and oil rates, a missing gas-oil ratio from gas and oil rates;
/// other missing columns are 0. Rows are not sorted.
///
/// Stops on a file that cannot be opened, a header without the columns above or with one twice, a row with
/// more or fewer values than columns, a value that is not a finite number, and a time below 0, with file and
/// line. Warns of columns that are not known, of wells that are none of `wells` (their rows are left out),
/// and for the first of each well of times that do not rise, rates or ratios below 0 and cuts outside 0 to 1.
std::vector<WellSeries> readWellSeries(const Console& console, const std::string& folder, WellDataSide side,
                                       std::span<const std::string> wells, int componentCount);

}  // namespace kvr
