#include "pressure/solvers/sparse_matrix.hpp"

#include <algorithm>

namespace kvr {

SparseMatrix joined(const RowRanges& ranges, int columns, std::vector<SparseRows>& pieces) {
    SparseMatrix matrix;
    matrix.rows = ranges.rows;
    matrix.columns = columns;
    std::vector<int> offset(1, 0);
    for (const SparseRows& piece : pieces)
        offset.push_back(offset.back() + static_cast<int>(piece.column.size()));
    matrix.start.resize(static_cast<std::size_t>(ranges.rows) + 1);
    matrix.start[0] = 0;
    matrix.column.resize(static_cast<std::size_t>(offset.back()));
    const bool valued =
        std::any_of(pieces.begin(), pieces.end(), [](const SparseRows& p) { return !p.value.empty(); });
    if (valued) matrix.value.resize(static_cast<std::size_t>(offset.back()));
#pragma omp parallel for schedule(static) if (ranges.count > 1)
    for (int r = 0; r < ranges.count; ++r) {
        SparseRows& piece = pieces[r];
        const RowRange range = ranges[r];
        for (int i = range.first; i < range.end; ++i)
            matrix.start[i + 1] = offset[r] + piece.end[i - range.first];
        std::copy(piece.column.begin(), piece.column.end(), matrix.column.begin() + offset[r]);
        std::copy(piece.value.begin(), piece.value.end(), matrix.value.begin() + offset[r]);
        piece = {};
    }
    return matrix;
}

SparseMatrix transposed(const SparseMatrix& matrix) {
    SparseMatrix result;
    result.rows = matrix.columns;
    result.columns = matrix.rows;
    result.start.assign(static_cast<std::size_t>(matrix.columns) + 2, 0);
    result.column.resize(matrix.column.size());
    result.value.resize(matrix.value.size());
    for (const int j : matrix.column) ++result.start[j + 2];
    for (int j = 0; j < matrix.columns; ++j) result.start[j + 2] += result.start[j + 1];
    for (int i = 0; i < matrix.rows; ++i) {
        for (int k = matrix.start[i]; k < matrix.start[i + 1]; ++k) {
            const int place = result.start[matrix.column[k] + 1]++;
            result.column[place] = i;
            result.value[place] = matrix.value[k];
        }
    }
    result.start.pop_back();
    return result;
}

}  // namespace kvr
