#pragma once

#include "pressure/solvers/solver_table.hpp"

#include <span>
#include <vector>

namespace kvr {

/// Storage of the dense routes, kept from solve to solve.
struct DenseStorage {
    std::vector<double> matrix;  // [n * n] column-major, the factors once factored
    std::vector<int> pivot;      // [n]
};

/// How a dense stage went.
enum class DenseStatus { Solved, BadParameter, Singular };

/// In-place direct solve: A (n by n, column-major) is overwritten by its LU factors, b by the solution.
/// BadParameter for n < 1 or spans that are too short, Singular for a zero pivot; b is then undefined.
DenseStatus LINEAR_SOLVE(int n, std::span<double> A, std::span<double> b);

/// Before the first dense or band solve of a thread: the library takes a work space of its own then, and
/// where it gets none it asks for ever. Throws std::bad_alloc instead.
void requireDenseWorkspace();

/// The two stages by themselves: LU factors with row pivoting in place, then a solve in place.
DenseStatus factorDense(int n, std::span<double> A, std::span<int> pivot);
void solveFactored(int n, std::span<const double> factors, std::span<const int> pivot, std::span<double> b);

/// Whether a full matrix of n rows is within the memory of the machine and the indices of LAPACK.
bool fitsDense(std::size_t n);

/// The system as a full matrix. False when n * n doubles are more than the machine or LAPACK can take.
bool assembleDense(const LinearSystem& system, DenseStorage& storage);

/// Route of `st` (LINEAR_SOLVE) and of `dgesl` and `dgesv` (LU factorisation, then solve). Failures:
/// Memory, Singular (a zero pivot, or a solution whose residual is above AcceptedResidual), NotANumber;
/// `code` -1 tells a parameter error of LINEAR_SOLVE.
SolveResult solveInPlace(const LinearSystem& system, std::span<double> solution, SolverMemory& memory);
SolveResult solveDense(const LinearSystem& system, std::span<double> solution, SolverMemory& memory);

}  // namespace kvr
