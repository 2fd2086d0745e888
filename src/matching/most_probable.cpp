#include "matching/most_probable.hpp"

#include "pressure/solvers/lapack.hpp"

namespace kvr {

namespace {

double rowTimes(const SensitivityRows& rows, std::size_t row, const CellArray<double>& field) {
    double sum = 0.0;
    for (std::size_t n = rows.start[row]; n < rows.start[row + 1]; ++n)
        sum += rows.value[n] * field[rows.cell[n]];
    return sum;
}

void addRowTo(const SensitivityRows& rows, std::size_t row, double factor, CellArray<double>& field) {
    for (std::size_t n = rows.start[row]; n < rows.start[row + 1]; ++n)
        field[rows.cell[n]] += factor * rows.value[n];
}

}  // namespace

bool mostProbableChange(const PriorCovariance& prior, const ErrorData& data, const CellArray<double>& present,
                        double pull, CellArray<double>& change) {
    const std::size_t count = data.rows.count();
    std::vector<double> matrix(count * count), multipliers(count), scratch;
    for (std::size_t column = 0; column < count; ++column) {
        change.assign(present.count(), 0.0);
        addRowTo(data.rows, column, 1.0, change);
        applyPriorCovariance(prior, change, scratch);
        for (std::size_t row = column; row < count; ++row)
            matrix[row + column * count] = rowTimes(data.rows, row, change);
        matrix[column + column * count] += data.error[column] * data.error[column];
        multipliers[column] = data.misfit[column] + pull * rowTimes(data.rows, column, present);
    }
    const int n = static_cast<int>(count), one = 1;
    int info = 0;
    if (n > 0) dposv_("L", &n, &one, matrix.data(), &n, multipliers.data(), &n, &info);
    if (info != 0) {
        change = present;
        return false;
    }
    change.assign(present.count(), 0.0);
    for (std::size_t row = 0; row < count; ++row) addRowTo(data.rows, row, multipliers[row], change);
    applyPriorCovariance(prior, change, scratch);
    for (CellId cell = 1; cell <= change.count(); ++cell) change[cell] += (1.0 - pull) * present[cell];
    return true;
}

}  // namespace kvr
