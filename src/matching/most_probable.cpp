#include "matching/most_probable.hpp"

#include "pressure/solvers/lapack.hpp"

#include <numeric>

namespace kvr {

namespace {

double product(const CellArray<double>& a, const CellArray<double>& b) {
    const auto first = a.cells(), second = b.cells();
    return std::inner_product(first.begin(), first.end(), second.begin(), 0.0);
}

std::span<const double> factorsOf(const SecantTerms& shown, std::size_t row) {
    return {shown.factor.data() + row * shown.fields.size(), shown.fields.size()};
}

void addRowTo(const SensitivityRows& rows, const SecantTerms& shown, std::size_t row, double factor,
              CellArray<double>& field) {
    for (std::size_t n = rows.start[row]; n < rows.start[row + 1]; ++n)
        field[rows.cell[n]] += factor * rows.value[n];
    const std::span<const double> factors = factorsOf(shown, row);
    for (std::size_t n = 0; n < factors.size(); ++n)
        for (CellId cell = 1; cell <= field.count(); ++cell)
            field[cell] += factor * factors[n] * shown.fields[n][cell];
}

}  // namespace

std::vector<double> foretold(const SensitivityRows& rows, const SecantTerms& shown,
                             const CellArray<double>& change) {
    std::vector<double> result(rows.count()), along;
    for (const CellArray<double>& field : shown.fields) along.push_back(product(field, change));
    for (std::size_t row = 0; row < rows.count(); ++row) {
        const std::span<const double> factors = factorsOf(shown, row);
        result[row] = rowTimes(rows, row, change) +
                      std::inner_product(factors.begin(), factors.end(), along.begin(), 0.0);
    }
    return result;
}

bool mostProbableChange(const PriorCovariance& prior, const ErrorData& data, const ProbableStep& step,
                        const CellArray<double>& present, CellArray<double>& change) {
    const std::size_t count = data.rows.count();
    std::vector<double> matrix, multipliers = foretold(data.rows, step.shown, present), scratch;
    matrix.reserve(count * count);
    for (std::size_t column = 0; column < count; ++column) {
        change.assign(present.count(), 0.0);
        addRowTo(data.rows, step.shown, column, 1.0, change);
        applyPriorCovariance(prior, change, scratch);
        const std::vector<double> products = foretold(data.rows, step.shown, change);
        matrix.insert(matrix.end(), products.begin(), products.end());
        matrix[column + column * count] += step.error[column] * step.error[column];
        multipliers[column] = data.misfit[column] + step.pull * multipliers[column];
    }
    const int n = static_cast<int>(count), one = 1;
    int info = 0;
    if (n > 0) dposv_("L", &n, &one, matrix.data(), &n, multipliers.data(), &n, &info);
    if (info != 0) {
        change = present;
        return false;
    }
    change.assign(present.count(), 0.0);
    for (std::size_t row = 0; row < count; ++row)
        addRowTo(data.rows, step.shown, row, multipliers[row], change);
    applyPriorCovariance(prior, change, scratch);
    for (CellId cell = 1; cell <= change.count(); ++cell) change[cell] += (1.0 - step.pull) * present[cell];
    return true;
}

}  // namespace kvr
