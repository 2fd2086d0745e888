#include "pressure/solvers/multigrid.hpp"

#include "pressure/solvers/bicgstab.hpp"
#include "pressure/solvers/galerkin.hpp"
#include "pressure/solvers/interpolation.hpp"
#include "pressure/solvers/row_order.hpp"
#include "pressure/solvers/row_scale.hpp"
#include "pressure/solvers/solver_memory.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <utility>

namespace kvr {

namespace {

constexpr int CoarsestRows = 200;        // a level of at most this many rows is not coarsened
constexpr int LargestFactored = 2000;    // the coarsest matrix is factored up to this size
constexpr double CoarseningHalt = 0.9;   // coarse over fine rows above which coarsening stops
constexpr int KeptWellShare = 4;         // wells stay coarse while they are below 1/4 of a level's rows
constexpr int MaxCycleIterations = 200;  // BiCGSTAB iterations before the second resort
constexpr int CyclePatience = 30;        // of them without halving the residual
constexpr int Starts = 4;                // of BiCGSTAB within one solve
constexpr int ExtraIterations = 3;       // tolerated beyond those of a fresh hierarchy
constexpr int MostOfUsual = 2;           // times of these that a kept hierarchy may take
constexpr double SetUpIterations = 6.0;  // that a set-up takes as long as, but for what later solves gain
constexpr double Remembered = 0.9;       // of how much slower a kept hierarchy was, behind a new one
constexpr double LeastDecades = 2.0;     // of a solve that tells the pace
constexpr int SmallSystem = 3000;        // rows up to which a dense factorisation is the last resort
constexpr std::size_t MaxEntries = std::numeric_limits<int>::max() / 8;  // 32-bit pointers on all levels

/// Scale of every row: the wells' own, and the balance of rows against columns.
void setUpRowScale(const LinearSystem& system, MultigridMemory& memory) {
    std::vector<double>& scale = memory.hierarchy.rowScale;
    formWellScale(system, memory.wellScale);
    balanceRows(system, memory.wellScale, scale);
    memory.wellBalance.assign(scale.begin() + system.cellRows, scale.end());
    for (std::size_t w = 0; w < memory.wellScale.size(); ++w)
        scale[system.cellRows + w] *= memory.wellScale[w];
}

/// The wells' scale for the system's present values; the balance stays.
void refreshRowScale(const LinearSystem& system, MultigridMemory& memory) {
    formWellScale(system, memory.wellScale);
    for (std::size_t w = 0; w < memory.wellScale.size(); ++w)
        memory.hierarchy.rowScale[system.cellRows + w] = memory.wellBalance[w] * memory.wellScale[w];
}

/// Row of the finest level for each row of the system.
std::vector<int> placesOf(const std::vector<int>& order) {
    std::vector<int> place(order.size());
    for (std::size_t i = 0; i < order.size(); ++i) place[order[i]] = static_cast<int>(i);
    return place;
}

/// The system as the finest matrix, rows in the order of the hierarchy and scaled.
SparseMatrix finestMatrix(const LinearSystem& system, const Hierarchy& hierarchy) {
    const std::vector<int>& order = hierarchy.order;
    const std::vector<int> place = placesOf(order);
    SparseMatrix matrix;
    matrix.rows = matrix.columns = system.size;
    matrix.start.resize(order.size() + 1);
    matrix.start[0] = 0;
    for (int i = 0; i < system.size; ++i) {
        const std::int64_t* start = &system.rowStart[order[i]];
        matrix.start[i + 1] = matrix.start[i] + static_cast<int>(start[1] - start[0]);
    }
    matrix.column.resize(system.column.size());
    matrix.value.resize(system.value.size());
    forRanges(cutRows(system.size, ShortestVectorRange), [&](RowRange range) {
        for (int i = range.first; i < range.end; ++i) {
            const int row = order[i];
            const double scale = hierarchy.rowScale[row];
            std::int64_t from = system.rowStart[row];
            for (int k = matrix.start[i]; k < matrix.start[i + 1]; ++k, ++from) {
                matrix.column[k] = place[system.column[from]];
                matrix.value[k] = scale * system.value[from];
            }
        }
    });
    return matrix;
}

void factorCoarsest(const SparseMatrix& matrix, Hierarchy& hierarchy) {
    hierarchy.coarsestFactored = false;
    if (matrix.rows > LargestFactored) return;
    const auto n = static_cast<std::size_t>(matrix.rows);
    hierarchy.coarsest.matrix.assign(n * n, 0.0);
    hierarchy.coarsest.pivot.resize(n);
    for (int i = 0; i < matrix.rows; ++i) {
        for (int k = matrix.start[i]; k < matrix.start[i + 1]; ++k)
            hierarchy.coarsest.matrix[static_cast<std::size_t>(matrix.column[k]) * n + i] += matrix.value[k];
    }
    hierarchy.coarsestFactored =
        factorDense(matrix.rows, hierarchy.coarsest.matrix, hierarchy.coarsest.pivot) == DenseStatus::Solved;
}

/// Interpolation to `matrix` from a coarser level; without rows where there is nothing to gain by one.
SparseMatrix interpolationTo(const SparseMatrix& matrix, int wells) {
    if (matrix.rows <= CoarsestRows + wells) return {};
    const StrengthGraph graph = strongDependence(matrix);
    SparseMatrix interpolation = extendedInterpolation(matrix, graph, chooseCoarsePoints(graph, wells));
    roundWeights(interpolation);
    const bool gains =
        interpolation.columns > 0 && interpolation.columns < CoarseningHalt * interpolation.rows;
    return gains ? interpolation : SparseMatrix{};
}

/// Preconditioned BiCGSTAB from the solution as it stands, started again where the residual of the
/// recurrence has parted from the true one.
void runCycles(const LinearSystem& system, int iterationLimit, std::span<double> solution,
               SolverMemory& memory, SolveResult& result) {
    MultigridMemory& grid = memory.multigrid;
    const auto precondition = [&](std::span<const double> r, std::span<double> z) {
        applyCycle(grid.hierarchy, r, z);
    };
    int left = iterationLimit;
    for (int start = 0; start < Starts && left > 0 && result.residual > system.tolerance; ++start) {
        const KrylovLimits limits{system.tolerance, left, CyclePatience};
        const KrylovOutcome outcome = bicgstab(system, limits, solution, memory.vectors, precondition);
        left -= outcome.iterations;
        result = judgeSolution(system, solution, result.iterations + outcome.iterations, memory.vectors.r);
    }
}

double decadesOf(double reduction) {
    return std::log10(std::max(reduction, 1.0));
}

/// Iterations that a reduction of the residual by so many decades is worth at the pace of the last fresh
/// hierarchy.
int usualIterations(const MultigridMemory& grid, double decades) {
    return static_cast<int>(std::ceil(grid.freshPace * decades)) + ExtraIterations;
}

/// Counts a solve with a kept hierarchy, unless it is so short that it tells little. Solves right behind the
/// set-up are as fast as that one: the slowest counts.
void notePace(int iterations, double decades, MultigridMemory& grid) {
    if (decades >= LeastDecades) grid.pace = std::max(grid.pace, iterations / decades);
}

/// Whether a new hierarchy would save more iterations over so many decades than it costs. What a kept one was
/// slower by fades with every new one, so that it is tried again now and then.
bool paysToRenew(const MultigridMemory& grid, double decades) {
    return (grid.pace - grid.freshPace) * decades > SetUpIterations;
}

/// Sets up and solves on from the solution as it stands; takes the pace.
void solveAfresh(const LinearSystem& system, std::span<double> solution, SolverMemory& memory,
                 SolveResult& result) {
    MultigridMemory& grid = memory.multigrid;
    setUpHierarchy(system, grid);
    const int before = result.iterations;
    const double start = result.residual;
    runCycles(system, MaxCycleIterations, solution, memory, result);
    grid.freshPace = (result.iterations - before) / std::max(1.0, std::log10(start / result.residual));
    grid.pace = grid.freshPace + Remembered * std::max(0.0, grid.pace - grid.freshPace);
    grid.worn = !(result.residual <= system.tolerance);
}

/// Solves with the kept hierarchy, or with a new one when there is none, it fails, or it has become so slow
/// that a new one pays within this solve.
void solveByCycles(const LinearSystem& system, std::span<double> solution, SolverMemory& memory,
                   SolveResult& result) {
    MultigridMemory& grid = memory.multigrid;
    const double decades = decadesOf(result.residual / system.tolerance);
    if (!grid.worn && samePattern(grid.key, system) && !paysToRenew(grid, decades)) {
        refreshFinest(system, grid);
        const double start = result.residual;
        runCycles(system, MostOfUsual * usualIterations(grid, decades), solution, memory, result);
        notePace(result.iterations, decadesOf(start / result.residual), grid);
        if (result.residual <= system.tolerance) return;
    }
    if (!(result.residual <= 1.0)) {
        std::fill(solution.begin(), solution.end(), 0.0);
        result = judgeSolution(system, solution, result.iterations, memory.vectors.r);
    }
    solveAfresh(system, solution, memory, result);
}

void resortToDense(const LinearSystem& system, std::span<double> solution, SolverMemory& memory,
                   SolveResult& result) {
    std::vector<double> direct(solution.size(), 0.0);
    const SolveResult attempt = solveDense(system, direct, memory);
    if (attempt.failure != SolveFailure::None) return;
    std::copy(direct.begin(), direct.end(), solution.begin());
    result.residual = attempt.residual;
    result.failure = SolveFailure::None;
}

SolveResult refusal(MultigridCode code) {
    SolveResult result;
    result.failure = code == MultigridCode::Memory ? SolveFailure::Memory : SolveFailure::BadMatrix;
    result.code = static_cast<int>(code);
    return result;
}

}  // namespace

MultigridCode checkRows(const LinearSystem& system) {
    const auto rows = static_cast<std::size_t>(system.size);
    if (system.rowStart.size() != rows + 1 || system.rowStart[0] != 0 ||
        system.rowStart[rows] != static_cast<std::int64_t>(system.column.size()))
        return MultigridCode::RowPointer;
    for (int i = 0; i < system.size; ++i) {
        const std::int64_t first = system.rowStart[i], end = system.rowStart[i + 1];
        if (end <= first || end > system.rowStart[rows]) return MultigridCode::RowPointer;
        for (std::int64_t k = first; k < end; ++k) {
            if (system.column[k] < 0 || system.column[k] >= system.size) return MultigridCode::ColumnIndex;
        }
        if (system.column[first] != i) return MultigridCode::DiagonalNotFirst;
        if (system.value[first] <= 0.0) return MultigridCode::DiagonalSign;
    }
    return system.column.size() > MaxEntries ? MultigridCode::Memory : MultigridCode::None;
}

void setUpHierarchy(const LinearSystem& system, MultigridMemory& memory) {
    int wells = system.size - system.cellRows;  // rows at the end that stay coarse
    setUpRowScale(system, memory);
    Hierarchy& hierarchy = memory.hierarchy;
    hierarchy.levels.clear();
    if (!samePattern(memory.key, system)) hierarchy.order = sweepOrder(system);
    SparseMatrix matrix = finestMatrix(system, hierarchy);
    const double finestEntries = matrix.entries();
    double entries = 0.0;
    for (bool coarsest = false; !coarsest;) {
        MultigridLevel& level = hierarchy.levels.emplace_back();
        entries += matrix.entries();
        splitForSweeps(matrix, wells, level.matrix);
        sizeVectors(level);
        if (wells * KeptWellShare >= matrix.rows) wells = 0;
        SparseMatrix interpolation = interpolationTo(matrix, wells);
        coarsest = interpolation.rows == 0;
        if (coarsest) break;
        SparseMatrix restriction = transposed(interpolation);
        matrix = galerkinProduct(matrix, interpolation, restriction);
        level.interpolation = transferOf(interpolation);
        level.restriction = transferOf(restriction);
    }
    factorCoarsest(matrix, hierarchy);
    hierarchy.operatorComplexity = entries / finestEntries;
    memory.key = patternKey(system);
    memory.worn = false;
}

void refreshFinest(const LinearSystem& system, MultigridMemory& memory) {
    refreshRowScale(system, memory);
    Hierarchy& hierarchy = memory.hierarchy;
    splitForSweeps(finestMatrix(system, hierarchy), system.size - system.cellRows,
                   hierarchy.levels.front().matrix);
}

SolveResult solveMultigrid(const LinearSystem& system, std::span<double> solution, SolverMemory& memory) {
    if (system.size == 0) return {};
    const MultigridCode code = checkRows(system);
    if (code != MultigridCode::None) return refusal(code);
    SolveResult result;
    try {
        memory.vectors.resize(system.size);
        result = judgeSolution(system, solution, 0, memory.vectors.r);
        if (result.residual > system.tolerance) solveByCycles(system, solution, memory, result);
        if (!(result.residual <= accepted(system))) resortToIncomplete(system, solution, memory, result);
        if (!(result.residual <= accepted(system)) && system.size <= SmallSystem)
            resortToDense(system, solution, memory, result);
    } catch (const std::bad_alloc&) {
        memory.multigrid = {};
        return refusal(MultigridCode::Memory);
    }
    judgeConvergence(system, result);
    return result;
}

}  // namespace kvr
