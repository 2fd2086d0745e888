#include "pressure/solvers/bicgstab.hpp"
#include "pressure/solvers/block_ilu.hpp"
#include "pressure/solvers/block_memory.hpp"
#include "pressure/solvers/block_system.hpp"
#include "pressure/solvers/pressure_stage.hpp"

#include <algorithm>
#include <cmath>
#include <new>

namespace kvr {

namespace {

constexpr int Starts = 4;          // of BiCGSTAB within one solve
constexpr int Patience = 40;       // iterations without halving the residual
constexpr int SmallSystem = 3000;  // unknowns up to which dense factors are the last resort

template <int N>
BlockOperator<N> operatorOf(const BlockSystem& system, const ScaledBlocks& scaled) {
    return {&system, &scaled, scaled.rhs};
}

template <int N>
void judge(const BlockOperator<N>& blocks, std::span<const double> x, KrylovVectors& work,
           SolveResult& result) {
    result.residual = formResidual<N>(blocks, x, work.r) / rightSideSize<N>(blocks);
}

/// BiCGSTAB from the x given, started again where the residual of the recurrence has parted from the true
/// one. Adds its iterations to those of `result`.
template <int N, class Preconditioner>
void iterate(const BlockOperator<N>& blocks, const BlockSolveLimits& limits, std::span<double> x,
             KrylovVectors& work, const Preconditioner& precondition, SolveResult& result) {
    int left = limits.iterations;
    for (int start = 0; start < Starts && left > 0 && result.residual > limits.tolerance; ++start) {
        const KrylovLimits krylov{limits.tolerance, left, Patience};
        const KrylovOutcome outcome = bicgstab(blocks, krylov, x, work, precondition);
        left -= outcome.iterations;
        result.iterations += outcome.iterations;
        judge<N>(blocks, x, work, result);
    }
    if (std::isfinite(result.residual)) return;
    std::fill(x.begin(), x.end(), 0.0);
    judge<N>(blocks, x, work, result);
}

template <int N>
void iterateWithIlu(const BlockOperator<N>& blocks, const BlockSolveLimits& limits, std::span<double> x,
                    BlockSolverMemory& memory, SolveResult& result) {
    const auto precondition = [&](std::span<const double> r, std::span<double> z) {
        applyBlockFactors<N>(*blocks.pattern, memory.factors, r, z);
    };
    iterate<N>(blocks, limits, x, memory.vectors, precondition, result);
}

/// z = M^-1 r: the pressure stage first, then ILU(0) on what it leaves of r.
template <int N>
void applyTwoStages(const BlockOperator<N>& blocks, std::span<const double> r, std::span<double> z,
                    BlockSolverMemory& memory) {
    const std::span<double> rest = memory.vectors.pt;
    applyPressureStage<N>(*blocks.scaled, r, memory.pressure);
    std::copy(r.begin(), r.end(), rest.begin());
    subtractPressureProduct<N>(blocks, memory.pressure.pressure, rest);
    applyBlockFactors<N>(*blocks.pattern, memory.factors, rest, z);
    for (int i = 0; i < blocks.pattern->rows; ++i)
        z[static_cast<std::size_t>(i) * N] += memory.pressure.pressure[i];
}

template <int N>
void iterateWithTwoStages(const BlockOperator<N>& blocks, const BlockSolveLimits& limits, std::span<double> x,
                          BlockSolverMemory& memory, SolveResult& result) {
    const int before = result.iterations;
    const bool renewed =
        formPressureStage<N>(*blocks.pattern, *blocks.scaled, memory.choice.hierarchyWorn, memory.pressure);
    const auto precondition = [&](std::span<const double> r, std::span<double> z) {
        applyTwoStages<N>(blocks, r, z, memory);
    };
    iterate<N>(blocks, limits, x, memory.vectors, precondition, result);
    noteHierarchy(renewed, result.iterations - before, memory.choice);
}

template <int N>
SolveResult solveScaled(const BlockSystem& system, const BlockSolveLimits& limits, std::span<double> x,
                        BlockSolverMemory& memory) {
    const BlockOperator<N> blocks = operatorOf<N>(system, memory.scaled);
    memory.vectors.resizeBoth(system.rows * N);
    std::fill(x.begin(), x.end(), 0.0);
    SolveResult result;
    result.residual = euclideanNorm(blocks.rhs) > 0.0 ? 1.0 : 0.0;
    if (result.residual == 0.0) return result;
    factorBlocks<N>(system, memory.scaled, memory.factors);
    const bool automatic = limits.preconditioner == BlockPreconditioner::Automatic;
    const bool twoStages =
        automatic ? memory.choice.twoStages : limits.preconditioner == BlockPreconditioner::TwoStage;
    const auto run = [&](bool two) {
        two ? iterateWithTwoStages<N>(blocks, limits, x, memory, result)
            : iterateWithIlu<N>(blocks, limits, x, memory, result);
    };
    run(twoStages);
    if (!automatic) return result;
    noteSolve(twoStages, result.iterations, memory.choice);
    if (result.residual > limits.tolerance) run(!twoStages);
    return result;
}

/// All rows, wells behind the cells, column by column.
void assembleAll(const BlockSystem& system, const ScaledBlocks& scaled, std::size_t n,
                 std::vector<double>& matrix) {
    const auto size = static_cast<std::size_t>(system.blockSize);
    matrix.assign(n * n, 0.0);
    for (int i = 0; i < system.rows; ++i) {
        for (int k = system.rowStart[i]; k < system.rowStart[i + 1]; ++k) {
            for (std::size_t e = 0; e < size; ++e) {
                for (std::size_t u = 0; u < size; ++u)
                    matrix[(system.column[k] * size + u) * n + i * size + e] =
                        scaled.value[(static_cast<std::size_t>(k) * size + e) * size + u];
            }
        }
    }
    for (std::size_t w = 0; w < system.wells.size(); ++w) {
        const WellBorder& well = system.wells[w];
        const std::size_t row = static_cast<std::size_t>(system.rows) * size + w;
        matrix[row * n + row] = wellDiagonal(well);
        for (std::size_t c = 0; c < well.cells.size(); ++c) {
            const std::size_t cell = static_cast<std::size_t>(well.cells[c]) * size;
            for (std::size_t e = 0; e < size; ++e) {
                matrix[row * n + cell + e] = well.columnBlocks[c * size + e] * scaled.rowScale[cell + e];
                matrix[(cell + e) * n + row] =
                    well.rowBlocks[c * size + e] * (e == 0 ? scaled.pressureScale : 1.0);
            }
        }
    }
}

SolveResult failed(SolveFailure failure) {
    SolveResult result;
    result.residual = 1.0;
    result.failure = failure;
    return result;
}

/// Dense solution of the scaled system into x, [rows * N]; the wells' pressures follow from it.
SolveResult solveDensely(const BlockSystem& system, std::span<double> x, BlockSolverMemory& memory) {
    const std::size_t cells = x.size(), n = cells + system.wells.size();
    if (!fitsDense(n)) return failed(SolveFailure::Memory);
    std::vector<double> b(n);
    try {
        assembleAll(system, memory.scaled, n, memory.dense.matrix);
        memory.dense.pivot.resize(n);
    } catch (const std::bad_alloc&) {
        return failed(SolveFailure::Memory);
    }
    for (std::size_t i = 0; i < cells; ++i) b[i] = system.rhs[i] * memory.scaled.rowScale[i];
    for (std::size_t w = 0; w < system.wells.size(); ++w) b[cells + w] = system.wells[w].rhs;
    const int size = static_cast<int>(n);
    if (factorDense(size, memory.dense.matrix, memory.dense.pivot) != DenseStatus::Solved)
        return failed(SolveFailure::Singular);
    solveFactored(size, memory.dense.matrix, memory.dense.pivot, b);
    std::copy(b.begin(), b.begin() + static_cast<std::ptrdiff_t>(cells), x.begin());
    return {};
}

/// ||r|| / ||b|| of x in the scaled system.
double scaledResidual(const BlockSystem& system, std::span<const double> x, BlockSolverMemory& memory) {
    memory.vectors.resizeBoth(static_cast<int>(x.size()));
    SolveResult result;
    if (system.blockSize == 2) {
        judge<2>(operatorOf<2>(system, memory.scaled), x, memory.vectors, result);
    } else {
        judge<3>(operatorOf<3>(system, memory.scaled), x, memory.vectors, result);
    }
    return result.residual;
}

}  // namespace

void BlockSolverMemoryDeleter::operator()(BlockSolverMemory* memory) const {
    delete memory;
}

BlockSolverMemoryPointer makeBlockSolverMemory() {
    return BlockSolverMemoryPointer(new BlockSolverMemory);
}

SolveResult solveBlockSystem(const BlockSystem& system, const BlockSolveLimits& limits,
                             std::span<double> solution, std::span<double> bhp, BlockSolverMemory& memory) {
    if (!scaleBlocks(system, memory.scaled)) return failed(SolveFailure::NotANumber);
    SolveResult result = system.blockSize == 2 ? solveScaled<2>(system, limits, solution, memory)
                                               : solveScaled<3>(system, limits, solution, memory);
    const bool small = solution.size() + system.wells.size() <= SmallSystem;
    if (!(result.residual <= limits.tolerance) && small) {
        std::vector<double> direct(solution.size());
        if (solveDensely(system, direct, memory).failure == SolveFailure::None) {
            const double residual = scaledResidual(system, direct, memory);
            if (residual < result.residual) {
                result.residual = residual;
                std::copy(direct.begin(), direct.end(), solution.begin());
            }
        }
    }
    if (!(result.residual <= limits.tolerance)) result.failure = SolveFailure::NotConverged;
    restoreUnits(system, memory.scaled, solution, bhp);
    return result;
}

SolveResult solveBlockSystemDense(const BlockSystem& system, std::span<double> solution,
                                  std::span<double> bhp, BlockSolverMemory& memory) {
    if (!scaleBlocks(system, memory.scaled)) return failed(SolveFailure::NotANumber);
    SolveResult result = solveDensely(system, solution, memory);
    if (result.failure != SolveFailure::None) return result;
    result.iterations = 1;
    result.residual = scaledResidual(system, solution, memory);
    if (!std::isfinite(result.residual)) {
        result.failure = SolveFailure::NotANumber;
    } else if (result.residual > AcceptedResidual) {
        result.failure = SolveFailure::Singular;
    }
    restoreUnits(system, memory.scaled, solution, bhp);
    return result;
}

}  // namespace kvr
