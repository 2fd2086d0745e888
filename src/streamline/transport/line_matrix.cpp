#include "streamline/transport/line_matrix.hpp"

#include "base/index.hpp"
#include "pressure/solvers/dense.hpp"

#include <algorithm>
#include <cmath>
#include <span>
#include <utility>

namespace kvr {

namespace {

constexpr int LargestFull = 4000;                // rows of a full matrix, 128 MB
constexpr std::string_view SparseWord = "bicg";  // takes matrices without symmetry

/// Divisions first: they do not wait for each other, the substitution behind them does.
bool forwardScalar(LineMatrix& matrix) {
    const std::size_t count = at(matrix.nodes);
    double* const rhs = matrix.rhs.data();
    double* const lower = matrix.lower.data();
    const double* const diagonal = matrix.diagonal.data();
    bool good = true;
    for (std::size_t n = 0; n < count; ++n) {
        good = good && std::abs(diagonal[n]) > 0.0;
        const double inverse = 1.0 / diagonal[n];
        rhs[n] *= inverse;
        lower[n] *= inverse;
    }
    for (std::size_t n = 1; n < count; ++n) rhs[n] -= lower[n] * rhs[n - 1];
    return good;
}

bool forwardBlocks(LineMatrix& matrix) {
    const int m = matrix.unknowns;
    const std::size_t size = at(m * m);
    for (std::size_t n = 0; n < at(matrix.nodes); ++n) {
        double* b = &matrix.rhs[n * at(m)];
        for (int r = 0; r < m && n > 0; ++r)
            for (int c = 0; c < m; ++c) b[r] -= matrix.lower[n * size + at(r * m + c)] * b[c - m];
        std::array<double, 9> block{};
        std::copy_n(&matrix.diagonal[n * size], size, block.begin());
        if (!solveBlock(m, block, b)) return false;
    }
    return true;
}

bool solveForward(LineMatrix& matrix) {
    return matrix.unknowns == 1 ? forwardScalar(matrix) : forwardBlocks(matrix);
}

/// Calls visit(row, column, value) for every stored entry.
template <class Visit>
void forEntries(const LineMatrix& matrix, Visit visit) {
    const int m = matrix.unknowns;
    for (int n = 0; n < matrix.nodes; ++n) {
        const int from = n > 0 ? -1 : 0;
        const int to = !matrix.upstreamOnly && n + 1 < matrix.nodes ? 1 : 0;
        for (int r = 0; r < m; ++r)
            for (int offset = from; offset <= to; ++offset)
                for (int c = 0; c < m; ++c) {
                    const int row = n * m + r;
                    const int column = (n + offset) * m + c;
                    visit(row, column, entryAt(matrix, row, column));
                }
    }
}

/// A scalar row of the elimination: what it holds in the columns of a node, of the next one and of the one
/// behind that, where rows put in each other's place reach, and its right-hand side.
template <std::size_t M>
using PanelRow = std::array<double, 3 * M + 1>;

/// Rows under elimination: those left of the nodes before, and those of the node that comes.
template <std::size_t M>
using Panel = std::array<PanelRow<M>, 2 * M>;

/// The block row of a node from rows[0] on, its diagonal block from column `diagonal` on; 0: nothing is left
/// of a node before.
template <std::size_t M>
void loadBlockRow(const LineMatrix& matrix, std::size_t node, std::size_t diagonal, PanelRow<M>* rows) {
    const bool looksDown = !matrix.upstreamOnly && node + 1 < at(matrix.nodes);
    for (std::size_t r = 0; r < M; ++r) {
        rows[r] = {};
        for (std::size_t c = 0; c < M; ++c) {
            const std::size_t place = (node * M + r) * M + c;
            if (diagonal > 0) rows[r][c] = matrix.lower[place];
            rows[r][diagonal + c] = matrix.diagonal[place];
            if (looksDown) rows[r][diagonal + M + c] = matrix.upper[place];
        }
        rows[r][3 * M] = matrix.rhs[node * M + r];
    }
}

/// Eliminates the first M columns from the first `rows` rows; false where a pivot vanishes or is not a
/// number.
template <std::size_t M>
bool eliminateColumns(std::size_t rows, Panel<M>& panel) {
    for (std::size_t k = 0; k < M; ++k) {
        std::size_t best = k;
        for (std::size_t r = k + 1; r < rows; ++r)
            if (std::abs(panel[r][k]) > std::abs(panel[best][k])) best = r;
        if (!(std::abs(panel[best][k]) > 0.0)) return false;
        if (best != k) std::swap(panel[best], panel[k]);
        const double inverse = 1.0 / panel[k][k];
        for (std::size_t r = k + 1; r < rows; ++r) {
            const double factor = panel[r][k] * inverse;
            for (std::size_t c = k + 1; c < panel[r].size(); ++c) panel[r][c] -= factor * panel[k][c];
        }
    }
    return true;
}

/// Gauss elimination with row pivoting on blocks of M by M in three diagonals: what LAPACK does with the same
/// matrix in band storage, with loops of known length.
template <std::size_t M>
bool solveTridiagonal(LineMatrix& matrix) {
    const std::size_t count = at(matrix.nodes);
    constexpr std::size_t Width = std::tuple_size_v<PanelRow<M>>;
    matrix.full.resize(std::max(matrix.full.size(), count * M * Width));
    Panel<M> panel{};
    loadBlockRow<M>(matrix, 0, 0, panel.data());
    for (std::size_t n = 0; n < count; ++n) {
        const bool last = n + 1 == count;
        if (!last) loadBlockRow<M>(matrix, n + 1, M, &panel[M]);
        if (!eliminateColumns<M>(last ? M : 2 * M, panel)) return false;
        double* factor = &matrix.full[n * M * Width];
        for (std::size_t r = 0; r < M; ++r) {
            factor = std::copy(panel[r].begin(), panel[r].end(), factor);
            const PanelRow<M>& left = panel[r + M];
            PanelRow<M>& next = panel[r];
            std::copy(left.begin() + M, left.begin() + 3 * M, next.begin());
            std::fill(next.begin() + 2 * M, next.begin() + 3 * M, 0.0);
            next[3 * M] = left[3 * M];
        }
    }
    const std::size_t size = count * M;
    for (std::size_t row = size; row-- > 0;) {
        const double* factor = &matrix.full[row * Width];
        const std::size_t first = row - row % M;
        double value = factor[3 * M];
        for (std::size_t c = row + 1; c < std::min(first + 3 * M, size); ++c)
            value -= factor[c - first] * matrix.rhs[c];
        matrix.rhs[row] = value / factor[row - first];
    }
    return true;
}

bool solveBanded(LineMatrix& matrix) {
    return matrix.unknowns == 1 ? solveTridiagonal<1>(matrix) : solveTridiagonal<3>(matrix);
}

bool solveFull(LineMatrix& matrix) {
    const int size = matrix.nodes * matrix.unknowns;
    if (size > LargestFull) return solveBanded(matrix);
    matrix.full.assign(at(size) * at(size), 0.0);
    forEntries(matrix, [&](int row, int column, double value) {
        matrix.full[at(column) * at(size) + at(row)] = value;
    });
    matrix.pivot.assign(at(size), 0);
    if (factorDense(size, matrix.full, matrix.pivot) != DenseStatus::Solved) return false;
    solveFactored(size, matrix.full, matrix.pivot, std::span<double>(matrix.rhs).first(at(size)));
    return true;
}

/// Compressed rows with the diagonal first.
void gatherRows(LineMatrix& matrix) {
    LinearSystem& system = matrix.sparse;
    system.size = system.cellRows = matrix.nodes * matrix.unknowns;
    system.patternStamp += 1;
    system.rowStart.assign(1, 0);
    system.column.clear();
    system.value.clear();
    int row = 0;
    const auto close = [&] { system.rowStart.push_back(static_cast<std::int64_t>(system.column.size())); };
    const auto put = [&](int column) {
        system.column.push_back(column);
        system.value.push_back(entryAt(matrix, row, column));
    };
    put(0);
    forEntries(matrix, [&](int r, int column, double) {
        if (r != row) {
            close();
            row = r;
            put(row);
        }
        if (column != row) put(column);
    });
    close();
    system.rhs.assign(matrix.rhs.begin(), matrix.rhs.begin() + system.size);
}

bool solveSparse(LineMatrix& matrix) {
    gatherRows(matrix);
    if (matrix.memory == nullptr) matrix.memory = makeSolverMemory();
    matrix.solution.assign(at(matrix.sparse.size), 0.0);
    const SolveResult result = findSolver(SparseWord)->route(matrix.sparse, matrix.solution, *matrix.memory);
    if (result.failure != SolveFailure::None) return false;
    std::copy(matrix.solution.begin(), matrix.solution.end(), matrix.rhs.begin());
    return true;
}

}  // namespace

LineRoute lineRouteOf(std::string_view word) {
    if (word == "dgesv") return LineRoute::Dense;
    return word == "amg" ? LineRoute::Sparse : LineRoute::Forward;
}

void sizeLineMatrix(int unknowns, int nodes, LineMatrix& matrix) {
    matrix.unknowns = unknowns;
    matrix.nodes = nodes;
    const std::size_t blocks = at(nodes) * at(unknowns * unknowns);
    if (matrix.diagonal.size() < blocks)
        for (std::vector<double>* values : {&matrix.lower, &matrix.diagonal, &matrix.upper})
            values->resize(blocks);
    if (matrix.rhs.size() < at(nodes) * at(unknowns)) matrix.rhs.resize(at(nodes) * at(unknowns));
}

double entryAt(const LineMatrix& matrix, int row, int column) {
    const int m = matrix.unknowns;
    const int node = row / m;
    const std::size_t place = at(node * m * m + (row % m) * m + column % m);
    switch (column / m - node) {
        case -1:
            return matrix.lower[place];
        case 0:
            return matrix.diagonal[place];
        case 1:
            return matrix.upstreamOnly ? 0.0 : matrix.upper[place];
        default:
            return 0.0;
    }
}

bool solveBlock(int m, std::array<double, 9>& a, double* b) {
    for (int k = 0; k < m; ++k) {
        int best = k;
        for (int r = k + 1; r < m; ++r)
            if (std::abs(a[at(r * m + k)]) > std::abs(a[at(best * m + k)])) best = r;
        if (!(std::abs(a[at(best * m + k)]) > 0.0)) return false;
        if (best != k) {
            for (int c = 0; c < m; ++c) std::swap(a[at(best * m + c)], a[at(k * m + c)]);
            std::swap(b[best], b[k]);
        }
        for (int r = k + 1; r < m; ++r) {
            const double factor = a[at(r * m + k)] / a[at(k * m + k)];
            for (int c = k + 1; c < m; ++c) a[at(r * m + c)] -= factor * a[at(k * m + c)];
            b[r] -= factor * b[k];
        }
    }
    for (int r = m - 1; r >= 0; --r) {
        for (int c = r + 1; c < m; ++c) b[r] -= a[at(r * m + c)] * b[c];
        b[r] /= a[at(r * m + r)];
    }
    return true;
}

bool solveLineMatrix(LineRoute route, LineMatrix& matrix) {
    if (matrix.nodes < 1) return true;
    switch (route) {
        case LineRoute::Forward:
            return matrix.upstreamOnly ? solveForward(matrix) : solveBanded(matrix);
        case LineRoute::Banded:
            return solveBanded(matrix);
        case LineRoute::Dense:
            return solveFull(matrix);
        case LineRoute::Sparse:
            return solveSparse(matrix);
    }
    return false;
}

}  // namespace kvr
