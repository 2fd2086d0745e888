#include "pressure/solvers/sparse_matrix.hpp"

namespace kvr {

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
