#include "pressure/solvers/galerkin.hpp"

namespace kvr {

namespace {

/// A sparse row under construction: values by place, places by column.
struct GatheredRow {
    std::vector<int> place;  // [columns] -1 where the column is not in the row
    std::vector<int> column;
    std::vector<double> value;

    explicit GatheredRow(int columns) : place(static_cast<std::size_t>(columns), -1) {}

    void add(int j, double a) {
        if (place[j] < 0) {
            place[j] = static_cast<int>(column.size());
            column.push_back(j);
            value.push_back(a);
        } else {
            value[place[j]] += a;
        }
    }
    void clear() {
        for (const int j : column) place[j] = -1;
        column.clear();
        value.clear();
    }
};

}  // namespace

SparseMatrix galerkinProduct(const SparseMatrix& matrix, const SparseMatrix& interpolation) {
    const SparseMatrix restriction = transposed(interpolation);
    SparseMatrix coarse;
    coarse.rows = coarse.columns = interpolation.columns;
    coarse.start.reserve(static_cast<std::size_t>(coarse.rows) + 1);
    coarse.column.reserve(matrix.column.size());
    coarse.value.reserve(matrix.value.size());
    coarse.start.push_back(0);
    GatheredRow fineRow(matrix.rows), coarseRow(coarse.columns);
    for (int row = 0; row < coarse.rows; ++row) {
        for (int r = restriction.start[row]; r < restriction.start[row + 1]; ++r) {
            const int i = restriction.column[r];
            const double weight = restriction.value[r];
            for (int k = matrix.start[i]; k < matrix.start[i + 1]; ++k)
                fineRow.add(matrix.column[k], weight * matrix.value[k]);
        }
        coarseRow.add(row, 0.0);  // the diagonal comes first
        for (std::size_t f = 0; f < fineRow.column.size(); ++f) {
            const int i = fineRow.column[f];
            for (int k = interpolation.start[i]; k < interpolation.start[i + 1]; ++k)
                coarseRow.add(interpolation.column[k], fineRow.value[f] * interpolation.value[k]);
        }
        coarse.column.insert(coarse.column.end(), coarseRow.column.begin(), coarseRow.column.end());
        coarse.value.insert(coarse.value.end(), coarseRow.value.begin(), coarseRow.value.end());
        coarse.start.push_back(static_cast<int>(coarse.column.size()));
        fineRow.clear();
        coarseRow.clear();
    }
    return coarse;
}

}  // namespace kvr
