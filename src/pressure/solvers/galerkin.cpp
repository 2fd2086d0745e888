#include "pressure/solvers/galerkin.hpp"

#include <utility>

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

/// What a thread needs for its rows.
struct RowWork {
    GatheredRow fine, coarse;
};

/// Row `row` of P' A P into work.coarse.
void gatherRow(const SparseMatrix& matrix, const SparseMatrix& interpolation, const SparseMatrix& restriction,
               int row, RowWork& work) {
    work.fine.clear();
    work.coarse.clear();
    for (int r = restriction.start[row]; r < restriction.start[row + 1]; ++r) {
        const int i = restriction.column[r];
        const double weight = restriction.value[r];
        for (int k = matrix.start[i]; k < matrix.start[i + 1]; ++k)
            work.fine.add(matrix.column[k], weight * matrix.value[k]);
    }
    work.coarse.add(row, 0.0);  // the diagonal comes first
    for (std::size_t f = 0; f < work.fine.column.size(); ++f) {
        const int i = work.fine.column[f];
        for (int k = interpolation.start[i]; k < interpolation.start[i + 1]; ++k)
            work.coarse.add(interpolation.column[k], work.fine.value[f] * interpolation.value[k]);
    }
}

}  // namespace

SparseMatrix galerkinProduct(const SparseMatrix& matrix, const SparseMatrix& interpolation,
                             const SparseMatrix& restriction) {
    const RowRanges ranges = cutRows(interpolation.columns, ShortestSetUpRange);
    std::vector<SparseRows> pieces(static_cast<std::size_t>(ranges.count));
#pragma omp parallel if (ranges.count > 1)
    {
        RowWork work{GatheredRow(matrix.rows), GatheredRow(interpolation.columns)};
#pragma omp for schedule(dynamic, 1)
        for (int r = 0; r < ranges.count; ++r) {
            SparseRows piece;
            for (int row = ranges[r].first; row < ranges[r].end; ++row) {
                gatherRow(matrix, interpolation, restriction, row, work);
                piece.column.insert(piece.column.end(), work.coarse.column.begin(), work.coarse.column.end());
                piece.value.insert(piece.value.end(), work.coarse.value.begin(), work.coarse.value.end());
                closeRow(piece);
            }
            pieces[r] = std::move(piece);
        }
    }
    return joined(ranges, interpolation.columns, pieces);
}

}  // namespace kvr
