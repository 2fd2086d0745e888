#include "pressure/solvers/solver_table.hpp"

#include "pressure/solvers/bicg.hpp"
#include "pressure/solvers/dense.hpp"
#include "pressure/solvers/multigrid.hpp"
#include "pressure/solvers/solver_memory.hpp"

/// Present where LAPACK is OpenBLAS. Its threads would make the last bits of a dense solution depend on
/// the machine, and contend with ours.
extern "C" __attribute__((weak)) void openblas_set_num_threads(int count);

namespace kvr {

namespace {

constexpr SolverRow SolverRows[] = {
    {"amg", solveMultigrid, "algebraic multigrid with BiCGSTAB"},
    {"samg", solveMultigrid, "the same as amg"},
    {"st", solveInPlace, "dense elimination in place"},
    {"dgesl", solveDense, "dense LU factorisation, then a solve"},
    {"dgesv", solveDense, "the same as dgesl"},
    {"gmres", solveBicg, "biconjugate gradients with incomplete LU"},
    {"cg", solveBicg, "the same as gmres"},
    {"bicg", solveBicg, "the same as gmres"},
};

}  // namespace

void SolverMemoryDeleter::operator()(SolverMemory* memory) const {
    delete memory;
}

SolverMemoryPointer makeSolverMemory() {
    if (openblas_set_num_threads != nullptr) openblas_set_num_threads(1);
    return SolverMemoryPointer(new SolverMemory);
}

const SolverRow* findSolver(std::string_view word) {
    for (const SolverRow& row : SolverRows) {
        if (row.word == word) return &row;
    }
    return nullptr;
}

}  // namespace kvr
