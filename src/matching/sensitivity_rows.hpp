#pragma once

#include "base/cell_array.hpp"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kvr {

/// Sensitivities of data to ln k of the cells, row by row; only values other than 0 are held. The values of
/// row r (0-based) stand at start[r] .. start[r + 1] - 1.
struct SensitivityRows {
    std::vector<std::size_t> start{0};
    std::vector<CellId> cell;   // of each value, rising in a row
    std::vector<double> value;  // unit of the datum, per unit of ln k

    [[nodiscard]] std::size_t count() const { return start.size() - 1; }
};

/// Room for so many more rows of so many values, taken at once: growing on demand takes up to twice as much.
void reserveRows(std::size_t count, CellId cells, SensitivityRows& rows);

/// The sum of a row's values times those of the field.
double rowTimes(const SensitivityRows& rows, std::size_t row, const CellArray<double>& field);

/// Appends the values of the active cells that are not 0 and are numbers. `sensitivity` has one value a cell;
/// a datum that is not to be matched has a row without values.
void addRow(const CellArray<double>& sensitivity, const CellArray<std::uint8_t>& Active,
            SensitivityRows& rows);

}  // namespace kvr
