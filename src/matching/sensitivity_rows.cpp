#include "matching/sensitivity_rows.hpp"

#include <cmath>

namespace kvr {

void reserveRows(std::size_t count, CellId cells, SensitivityRows& rows) {
    const std::size_t values = rows.value.size() + count * static_cast<std::size_t>(cells);
    rows.cell.reserve(values);
    rows.value.reserve(values);
}

double rowTimes(const SensitivityRows& rows, std::size_t row, const CellArray<double>& field) {
    double sum = 0.0;
    for (std::size_t n = rows.start[row]; n < rows.start[row + 1]; ++n)
        sum += rows.value[n] * field[rows.cell[n]];
    return sum;
}

void addRow(const CellArray<double>& sensitivity, const CellArray<std::uint8_t>& Active,
            SensitivityRows& rows) {
    for (CellId cell = 1; cell <= sensitivity.count(); ++cell) {
        if (Active[cell] == 0 || sensitivity[cell] == 0.0 || !std::isfinite(sensitivity[cell])) continue;
        rows.cell.push_back(cell);
        rows.value.push_back(sensitivity[cell]);
    }
    rows.start.push_back(rows.cell.size());
}

}  // namespace kvr
