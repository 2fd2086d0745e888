#pragma once

#include "base/console.hpp"
#include "matching/sensitivity_rows.hpp"
#include "matching/well_match.hpp"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace kvr {

/// What the parts of a curve ask for, in place of one shift: the span of a well's observed times in equal
/// parts, each with the mean of observed minus calculated over its points.
struct CurveData {
    SensitivityRows rows;           // mean change of the part per unit of ln k, over the slope: days
    std::vector<double> misfit;     // of each row, over the slope: days; 0: matched
    std::vector<std::size_t> well;  // of each row, in the list of matches
};

/// Where the files of sensitivities stand, and whose they are.
struct CurveFiles {
    std::string folder;                  // blank, or ended by its separator
    std::vector<std::string> wellNames;  // every well of the run
    std::vector<double> stepEnds;        // days, of each report step
};

inline constexpr double MatchedMean = 1e-3;  // of a ratio: a part that is as close is matched

/// Part of a point among `parts` equal ones of the time from the first to the last.
std::size_t partOf(std::span<const double> times, std::size_t point, std::size_t parts);

/// Rows well after well, part after part; parts without a point, and wells whose curve does not rise, have
/// empty rows and no misfit. A sum for each row over all cells is held meanwhile.
CurveData curveRows(const Console& console, const MisfitSettings& settings, const CurveFiles& files,
                    std::size_t parts, const CellArray<std::uint8_t>& Active,
                    std::span<const WellMatch> wells);

}  // namespace kvr
