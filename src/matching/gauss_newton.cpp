#include "matching/gauss_newton.hpp"

#include "pressure/solvers/lapack.hpp"

#include <algorithm>
#include <new>

namespace kvr {

namespace {

constexpr double EigenvalueLimit = 1e-13;  // of the largest; smaller ones are rounding

/// Symmetric, column-major, both triangles filled.
struct DenseMatrix {
    std::size_t size = 0;
    std::vector<double> values;

    explicit DenseMatrix(std::size_t n) : size(n), values(n * n, 0.0) {}
    double& operator()(std::size_t i, std::size_t j) { return values[i + j * size]; }
};

struct Entry {
    std::size_t column;
    double value;
};

/// matrix = matrix + row^T row
void addOuterProduct(std::span<const Entry> row, DenseMatrix& matrix) {
    for (const Entry& right : row)
        for (const Entry& left : row) matrix(left.column, right.column) += left.value * right.value;
}

void addDataRows(const MatchingSystem& system, DenseMatrix& matrix) {
    const SensitivityRows& rows = system.data->rows;
    std::vector<Entry> entries;
    for (std::size_t row = 0; row < rows.count(); ++row) {
        entries.clear();
        for (std::size_t n = rows.start[row]; n < rows.start[row + 1]; ++n)
            entries.push_back({static_cast<std::size_t>(system.columnOf[rows.cell[n]]), rows.value[n]});
        addOuterProduct(entries, matrix);
    }
}

void addConstraintRows(const MatchingSystem& system, DenseMatrix& matrix) {
    const double norm = std::max(system.weights[constraint::Norm], 0.0);
    for (std::size_t column = 0; column < system.columns(); ++column) matrix(column, column) += norm * norm;
    for (std::size_t axis = 0; axis < AxisCount; ++axis) {
        const double weight = system.weights[axis < 2 ? constraint::Horizontal : constraint::Vertical];
        for (std::size_t column = 0; column < system.neighbours[axis].size(); ++column) {
            std::array<Entry, 3> row{Entry{column, weight}};
            std::size_t count = 1;
            const ColumnPair pair = system.neighbours[axis][column];
            for (const int neighbour : {pair.low, pair.high})
                if (neighbour != NoColumn)
                    row[count++] = {static_cast<std::size_t>(neighbour), -0.5 * weight};
            if (count > 1) addOuterProduct({row.data(), count}, matrix);
        }
    }
}

bool solveByCholesky(DenseMatrix& matrix, std::vector<double>& x) {
    const int n = static_cast<int>(matrix.size), one = 1;
    int info = 0;
    dposv_("L", &n, &one, matrix.values.data(), &n, x.data(), &n, &info);
    return info == 0;
}

/// x = matrix^+ x through eigenvectors; the least solution of a singular matrix.
bool solveByEigenvectors(DenseMatrix& matrix, std::vector<double>& x) {
    const int n = static_cast<int>(matrix.size), workLength = std::max(1, 34 * n);
    std::vector<double> eigenvalues(matrix.size), work(static_cast<std::size_t>(workLength));
    int info = 0;
    dsyev_("V", "L", &n, matrix.values.data(), &n, eigenvalues.data(), work.data(), &workLength, &info);
    if (info != 0) return false;
    std::vector<double> solution(matrix.size, 0.0);
    for (std::size_t e = 0; e < matrix.size; ++e) {
        if (eigenvalues[e] <= EigenvalueLimit * eigenvalues.back()) continue;
        const std::span<const double> vector(&matrix.values[e * matrix.size], matrix.size);
        double share = 0.0;
        for (std::size_t i = 0; i < matrix.size; ++i) share += vector[i] * x[i];
        for (std::size_t i = 0; i < matrix.size; ++i) solution[i] += share / eigenvalues[e] * vector[i];
    }
    x.swap(solution);
    return true;
}

/// Product of two rows, whose cells rise.
double rowProduct(const SensitivityRows& rows, std::size_t left, std::size_t right) {
    double sum = 0.0;
    std::size_t a = rows.start[left], b = rows.start[right];
    while (a < rows.start[left + 1] && b < rows.start[right + 1]) {
        if (rows.cell[a] == rows.cell[b])
            sum += rows.value[a++] * rows.value[b++];
        else if (rows.cell[a] < rows.cell[b])
            ++a;
        else
            ++b;
    }
    return sum;
}

bool solveInDataSpace(const MatchingSystem& system, std::vector<double>& x) {
    const SensitivityRows& rows = system.data->rows;
    if (rows.count() == 0) return true;
    DenseMatrix products(rows.count());
    for (std::size_t i = 0; i < rows.count(); ++i)
        for (std::size_t j = 0; j < rows.count(); ++j) products(i, j) = rowProduct(rows, i, j);
    std::vector<double> multipliers = system.data->rightSide;
    if (!solveByEigenvectors(products, multipliers)) return false;
    apply_At(system, multipliers, x);
    return true;
}

bool solveInCellSpace(const MatchingSystem& system, std::vector<double>& x) {
    DenseMatrix matrix(system.columns());
    addDataRows(system, matrix);
    addConstraintRows(system, matrix);
    std::vector<double> rightSide(rowCount(system), 0.0);
    std::copy(system.data->rightSide.begin(), system.data->rightSide.end(), rightSide.begin());
    apply_At(system, rightSide, x);
    return constraintsHoldAll(system) ? solveByCholesky(matrix, x) : solveByEigenvectors(matrix, x);
}

bool isFree(const MatchingSystem& system) {
    return std::all_of(system.weights.begin(), system.weights.end(), [](double w) { return w <= 0.0; });
}

}  // namespace

bool gaussNewtonFits(const MatchingSystem& system) {
    return isFree(system) || system.columns() <= MostDenseUnknowns;
}

bool solveByGaussNewton(const MatchingSystem& system, std::vector<double>& x) {
    bool solved = false;
    try {
        x.assign(system.columns(), 0.0);
        if (x.empty()) return true;
        solved = isFree(system) ? solveInDataSpace(system, x) : solveInCellSpace(system, x);
    } catch (const std::bad_alloc&) {
        solved = false;
    }
    if (!solved) std::fill(x.begin(), x.end(), 0.0);
    return solved;
}

}  // namespace kvr
