#include "pressure/solvers/dense.hpp"

#include "pressure/solvers/lapack.hpp"
#include "pressure/solvers/solver_memory.hpp"
#include "pressure/solvers/system_products.hpp"

#include <algorithm>
#include <new>
#include <sys/mman.h>
#include <unistd.h>

namespace kvr {

namespace {

constexpr int LargestDenseSize = 46340;  // n * n must fit the 32-bit index of LAPACK
constexpr int ParameterErrorCode = -1;
// Of OpenBLAS, 128 MB a thread, with room for what else the step takes; untouched pages cost nothing.
constexpr std::size_t WorkspaceBytes = std::size_t{144} << 20;

/// Asked beforehand: an allocation beyond the memory of the machine would be granted and only break
/// when it is filled.
bool fitsMemory(std::size_t bytes) {
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageSize = sysconf(_SC_PAGESIZE);
    if (pages <= 0 || pageSize <= 0) return true;
    return bytes / static_cast<std::size_t>(pageSize) < static_cast<std::size_t>(pages);
}

SolveResult failed(SolveFailure failure, int code = 0) {
    SolveResult result;
    result.failure = failure;
    result.code = code;
    return result;
}

/// A direct solution is judged by its residual: rounding can hide a singular matrix behind tiny pivots.
SolveResult judgeDirect(const LinearSystem& system, std::span<const double> solution, SolverMemory& memory) {
    memory.vectors.resize(system.size);
    SolveResult result = judgeSolution(system, solution, 1, memory.vectors.r);
    if (result.failure == SolveFailure::None && result.residual > accepted(system))
        result.failure = SolveFailure::Singular;
    return result;
}

/// Whether the address space has room for the library's work space.
bool findsWorkspace() {
    void* const place =
        mmap(nullptr, WorkspaceBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (place == MAP_FAILED) return false;
    munmap(place, WorkspaceBytes);
    return true;
}

}  // namespace

void requireDenseWorkspace() {
    thread_local const bool found = findsWorkspace();
    if (!found) throw std::bad_alloc();
}

DenseStatus factorDense(int n, std::span<double> A, std::span<int> pivot) {
    requireDenseWorkspace();
    int info = 0;
    dgetrf_(&n, &n, A.data(), &n, pivot.data(), &info);
    return info == 0 ? DenseStatus::Solved : DenseStatus::Singular;
}

void solveFactored(int n, std::span<const double> factors, std::span<const int> pivot, std::span<double> b) {
    const int columns = 1;
    int info = 0;
    dgetrs_("N", &n, &columns, factors.data(), &n, pivot.data(), b.data(), &n, &info);
}

DenseStatus LINEAR_SOLVE(int n, std::span<double> A, std::span<double> b) {
    const auto size = static_cast<std::size_t>(n < 0 ? 0 : n);
    if (n < 1 || n > LargestDenseSize || A.size() < size * size || b.size() < size)
        return DenseStatus::BadParameter;
    std::vector<int> pivot(size);
    const DenseStatus status = factorDense(n, A, pivot);
    if (status == DenseStatus::Solved) solveFactored(n, A, pivot, b);
    return status;
}

bool fitsDense(std::size_t n) {
    return n <= static_cast<std::size_t>(LargestDenseSize) && fitsMemory(n * n * sizeof(double));
}

bool assembleDense(const LinearSystem& system, DenseStorage& storage) {
    const auto n = static_cast<std::size_t>(system.size);
    if (!fitsDense(n)) return false;
    try {
        storage.matrix.assign(n * n, 0.0);
        storage.pivot.resize(n);
    } catch (const std::bad_alloc&) {
        return false;
    }
    for (std::size_t i = 0; i < n; ++i) {
        for (std::int64_t k = system.rowStart[i]; k < system.rowStart[i + 1]; ++k)
            storage.matrix[static_cast<std::size_t>(system.column[k]) * n + i] += system.value[k];
    }
    return true;
}

SolveResult solveInPlace(const LinearSystem& system, std::span<double> solution, SolverMemory& memory) {
    if (!assembleDense(system, memory.dense)) return failed(SolveFailure::Memory);
    std::copy(system.rhs.begin(), system.rhs.end(), solution.begin());
    const DenseStatus status = LINEAR_SOLVE(system.size, memory.dense.matrix, solution);
    if (status == DenseStatus::BadParameter) return failed(SolveFailure::Singular, ParameterErrorCode);
    if (status == DenseStatus::Singular) return failed(SolveFailure::Singular);
    return judgeDirect(system, solution, memory);
}

SolveResult solveDense(const LinearSystem& system, std::span<double> solution, SolverMemory& memory) {
    if (system.size == 0) return {};
    if (!assembleDense(system, memory.dense)) return failed(SolveFailure::Memory);
    if (factorDense(system.size, memory.dense.matrix, memory.dense.pivot) != DenseStatus::Solved)
        return failed(SolveFailure::Singular);
    std::copy(system.rhs.begin(), system.rhs.end(), solution.begin());
    solveFactored(system.size, memory.dense.matrix, memory.dense.pivot, solution);
    return judgeDirect(system, solution, memory);
}

}  // namespace kvr
