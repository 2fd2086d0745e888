#pragma once

#include "base/cell_array.hpp"
#include "base/console.hpp"
#include "deck/options.hpp"
#include "matching/match_record.hpp"
#include "matching/sensitivity_rows.hpp"
#include "model/grid.hpp"

#include <cstdint>
#include <span>

namespace kvr {

/// One row of sensitivities.
struct RowFigures {
    std::size_t nonzeros = 0;
    double sum = 0.0, mean = 0.0, least = 0.0, most = 0.0, variance = 0.0;  // over the values that are not 0
    double sumOfSizes = 0.0;
};
RowFigures rowFigures(const SensitivityRows& rows, std::size_t row);

/// The change of ln k that a misfit asks for at the average sensitivity, misfit / sum; 0 where the sum is.
/// The sum is that of the sizes: where a field of fixed rates answers to a pattern of permeability and not to
/// its level, the plain sum of a row is next to nothing.
double expectedChange(double misfit, double sum);

/// Multiplier of a row whose expected change is above the limit, so that it meets it; 1 for any other row,
/// and without a limit (0).
double constraintMultiplier(double expected, double limit);

void scaleRow(double factor, std::size_t row, SensitivityRows& rows);

/// What bounds an update, in the order in which it acts.
struct UpdateLimits {
    double global = 0.0;   // g: below 1 the update is divided by it, above 1 by r + 1 where
                           // r = g sum|dlnk| / sum|lnk| is above 1; 0: none
    double grid = 0.0;     // of a cell: |dlnk| <= grid |lnk|; 0: none
    double divisor = 1.0;  // plain; 0 or less: none
};
UpdateLimits updateLimits(const RunOptions& options);

/// What a cell may hold, md.
struct ParameterBounds {
    double least = 0.0, most = 0.0;
};
ParameterBounds parameterBounds(const RunOptions& options);

/// Bounds `dlnk`, and tells what it was divided by.
void limitUpdate(const Console& console, const UpdateLimits& limits, const CellArray<double>& lnk,
                 CellArray<double>& dlnk);

/// ln of a permeability by cell; 0 where it is not above 0.
CellArray<double> logarithms(const CellArray<double>& permeability);

/// Cells that updates may change: active ones with a permeability; with a radius above 0 those that are not
/// farther than it (in cells, i j k) from a completion.
CellArray<std::uint8_t> updateRegion(const GridModel& grid, double radius, std::span<const CellId> completed);

/// Permeabilities behind an update: x within the bounds exp(ln x + share dlnk), y and z by the same ratio.
/// Cells without a change keep theirs.
void applyUpdate(const Permeabilities& base, const CellArray<double>& dlnk, double share,
                 const ParameterBounds& bounds, GridModel& grid);

/// Size of an update.
struct UpdateFigures {
    double least = 0.0, most = 0.0;  // of dlnk
    double magnitude = 0.0;          // sum |dlnk| / sum |lnk|
    double largest = 0.0;            // |dlnk|
    int huge = 0;                    // cells whose |dlnk| / |lnk| is above 100
};
UpdateFigures updateFigures(const CellArray<std::uint8_t>& Active, const CellArray<double>& lnk,
                            const CellArray<double>& dlnk);

}  // namespace kvr
