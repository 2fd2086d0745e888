#pragma once

#include "base/row_ranges.hpp"

#include <span>
#include <vector>

namespace kvr {

/// Compressed rows; square ones store the diagonal first in each row.
struct SparseMatrix {
    int rows = 0;
    int columns = 0;
    std::vector<int> start;   // [rows + 1]
    std::vector<int> column;  // 0-based
    std::vector<double> value;

    [[nodiscard]] int entries() const { return start.empty() ? 0 : start.back(); }
};

/// Consecutive rows of a matrix under construction.
struct SparseRows {
    std::vector<int> end;  // of each row, in the two lists below
    std::vector<int> column;
    std::vector<double> value;  // may stay empty: a pattern
};

/// Ends the row in work.
inline void closeRow(SparseRows& rows) {
    rows.end.push_back(static_cast<int>(rows.column.size()));
}

/// Room for the rows of a range with so many entries each.
inline void reserveRows(RowRange range, int entries, SparseRows& rows) {
    const auto count = static_cast<std::size_t>(range.end - range.first);
    rows.end.reserve(count);
    rows.column.reserve(count * static_cast<std::size_t>(entries));
    rows.value.reserve(count * static_cast<std::size_t>(entries));
}

/// The rows of the ranges one after the other; the pieces are used up.
SparseMatrix joined(const RowRanges& ranges, int columns, std::vector<SparseRows>& pieces);

/// Rows and columns exchanged; rows of the result have their columns in rising order.
SparseMatrix transposed(const SparseMatrix& matrix);

}  // namespace kvr
