#pragma once

#include "base/console.hpp"
#include "eclipse/sensitivity_files.hpp"
#include "matching/curve_rows.hpp"
#include "matching/most_probable.hpp"
#include "matching/well_match.hpp"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace kvr {

/// One datum of a well's history: what it lacks, and how its sensitivity follows from those of the report
/// steps.
struct HistoryDatum {
    std::size_t well = 0;         // in the list of matches
    std::vector<double> weights;  // of each report step
    double misfit = 0.0;          // mean of observed minus calculated, unit of the history
    double error = 1.0;           // deviation, likewise
};

/// A list of histories in equal parts of their time, each with the mean over its points.
struct HistoryParts {
    const std::vector<double>& (*values)(const MisfitSettings&, const WellSeries&) = nullptr;
    std::size_t parts = 1;
    double after = 0.0;         // points count whose time, as a share of the last one, is above it
    bool measuredOnly = false;  // values of 0 or less, on either side, do not count
    double error = 1.0;         // of the mean of a part: what a model is wrong by does not average out
    bool relative = false;      // the error is a share of the mean observed value of the part
};

/// Data of the parts that have points, well after well. Wells with fewer than two points have none.
std::vector<HistoryDatum> historyData(const MisfitSettings& settings, const HistoryParts& parts,
                                      std::span<const double> stepEnds, std::span<const WellMatch> wells);

/// Appends one row of sensitivities for each datum; those that no cell changes are left out. `before`: number
/// of data ahead of these in the list of all. Each sum is given up as its row is made.
void appendRows(std::vector<CellArray<double>> sums, const CellArray<std::uint8_t>& Active,
                std::span<const HistoryDatum> data, std::size_t before, ErrorData& to);

/// Appends the rows of data from the files of a kind; those that no cell changes are left out. `before`:
/// number of data ahead of these in the list of all. A sum over all cells is held for each datum meanwhile.
void addHistoryRows(const Console& console, SensitivityKind kind, const CurveFiles& files,
                    const CellArray<std::uint8_t>& Active, std::span<const WellMatch> wells,
                    std::span<const HistoryDatum> data, std::size_t before, ErrorData& to);

}  // namespace kvr
