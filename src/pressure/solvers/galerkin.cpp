#include "pressure/solvers/galerkin.hpp"

#include <utility>

namespace kvr {

namespace {

constexpr int EntriesExpected = 24;  // of a coarse row; more only costs a reallocation

/// A sparse row under construction: values by place, places by column. Whether a column is new cannot be
/// foretold, so that adding has no branch on it: places beyond the last hold 0.
struct GatheredRow {
    std::vector<int> place;  // [columns] -1 where the column is not in the row
    std::vector<int> column;
    std::vector<double> value;
    int count = 0;

    explicit GatheredRow(int columns) : place(static_cast<std::size_t>(columns), -1) {}

    /// Adds factor times the entries first .. end - 1 of a matrix.
    void add(const SparseMatrix& matrix, int first, int end, double factor) {
        const auto needed = static_cast<std::size_t>(count) + static_cast<std::size_t>(end - first) + 1;
        if (value.size() < needed) {
            column.resize(2 * needed);
            value.resize(2 * needed, 0.0);
        }
        for (int k = first; k < end; ++k) {
            const int j = matrix.column[k];
            const int known = place[j];
            const int at = known < 0 ? count : known;
            count += known < 0 ? 1 : 0;
            place[j] = at;
            column[at] = j;
            value[at] += factor * matrix.value[k];
        }
    }
    void startWith(int j) {
        if (value.empty()) {
            column.resize(1);
            value.resize(1, 0.0);
        }
        place[j] = 0;
        column[0] = j;
        count = 1;
    }
    void clear() {
        for (int p = 0; p < count; ++p) {
            place[column[p]] = -1;
            value[p] = 0.0;
        }
        count = 0;
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
        work.fine.add(matrix, matrix.start[i], matrix.start[i + 1], restriction.value[r]);
    }
    work.coarse.startWith(row);  // the diagonal comes first
    for (int f = 0; f < work.fine.count; ++f) {
        const int i = work.fine.column[f];
        work.coarse.add(interpolation, interpolation.start[i], interpolation.start[i + 1],
                        work.fine.value[f]);
    }
}

void appendRow(const GatheredRow& row, SparseRows& rows) {
    rows.column.insert(rows.column.end(), row.column.begin(), row.column.begin() + row.count);
    rows.value.insert(rows.value.end(), row.value.begin(), row.value.begin() + row.count);
    closeRow(rows);
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
            reserveRows(ranges[r], EntriesExpected, piece);
            for (int row = ranges[r].first; row < ranges[r].end; ++row) {
                gatherRow(matrix, interpolation, restriction, row, work);
                appendRow(work.coarse, piece);
            }
            pieces[r] = std::move(piece);
        }
    }
    return joined(ranges, interpolation.columns, pieces);
}

}  // namespace kvr
