#pragma once

#include "pressure/solvers/linear_system.hpp"

#include <memory>
#include <span>
#include <string_view>

namespace kvr {

/// What the routes keep from one solve to the next: the multigrid hierarchy, factor storage, scratch.
struct SolverMemory;
struct SolverMemoryDeleter {
    void operator()(SolverMemory* memory) const;
};
using SolverMemoryPointer = std::unique_ptr<SolverMemory, SolverMemoryDeleter>;
SolverMemoryPointer makeSolverMemory();

inline constexpr int SolverIterations = 1000;  // of the iterative routes

/// One route: solves system for `solution` (which enters as 0).
using SolverRoute = SolveResult (*)(const LinearSystem& system, std::span<double> solution,
                                    SolverMemory& memory);

struct SolverRow {
    std::string_view word;  // "st", "dgesl", "dgesv", "gmres", "amg", "cg", "samg", "bicg"
    SolverRoute route;
    std::string_view documentation;
};

/// The row of a solver word, null for a word that is not on the list.
const SolverRow* findSolver(std::string_view word);

}  // namespace kvr
