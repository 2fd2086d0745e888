#include "matching/sensitivity_rows.hpp"

#include <cmath>

namespace kvr {

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
