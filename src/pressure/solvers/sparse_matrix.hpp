#pragma once

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

/// Rows and columns exchanged; rows of the result have their columns in rising order.
SparseMatrix transposed(const SparseMatrix& matrix);

}  // namespace kvr
