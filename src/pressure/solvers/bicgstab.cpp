#include "pressure/solvers/bicgstab.hpp"

#include "pressure/solvers/ilu.hpp"
#include "pressure/solvers/solver_memory.hpp"

namespace kvr {

namespace {
constexpr int Restarts = 4;
}

void judgeConvergence(const LinearSystem& system, SolveResult& result) {
    if (result.failure == SolveFailure::None && result.residual > accepted(system))
        result.failure = SolveFailure::NotConverged;
}

void resortToIncomplete(const LinearSystem& system, std::span<double> solution, SolverMemory& memory,
                        SolveResult& result) {
    factorIncomplete(system, memory.factors);
    const auto precondition = [&memory](std::span<const double> r, std::span<double> z) {
        applyIncomplete(memory.factors, r, z);
    };
    int left = SolverIterations;
    for (int restart = 0; restart < Restarts && left > 0; ++restart) {
        if (!(result.residual <= 1.0)) std::fill(solution.begin(), solution.end(), 0.0);
        const KrylovLimits limits{system.tolerance, left};
        const KrylovOutcome outcome = bicgstab(system, limits, solution, memory.vectors, precondition);
        left -= outcome.iterations;
        result = judgeSolution(system, solution, result.iterations + outcome.iterations, memory.vectors.r);
        if (result.residual <= system.tolerance) return;
    }
}

}  // namespace kvr
