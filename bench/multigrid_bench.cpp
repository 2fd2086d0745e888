/// The multigrid route against BoomerAMG with BiCGSTAB on the same matrices: those that the program
/// assembles for the decks named on the command line (folders that hold an ECLIPSE.DATA), and generated
/// variants (strongly anisotropic, homogeneous, one-sided multipliers) of both field sizes.
/// Output: one line a matrix and solver with set-up and solve time (s, median of the repeats), iterations,
/// true residual, operator complexity, and the ratio of the times.
#include "bench_matrices.hpp"
#include "peer_multigrid.hpp"
#include "pressure/solvers/solver_memory.hpp"
#include "pressure/solvers/solver_table.hpp"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fmt/format.h>

namespace kvr::bench {
namespace {

constexpr int Repeats = 5;

double medianOf(std::vector<double> seconds) {
    std::sort(seconds.begin(), seconds.end());
    return seconds[seconds.size() / 2];
}

double secondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

struct Timing {
    double first = 0.0;   // s, set-up and solve
    double repeat = 0.0;  // s, solve of the same pattern again
    int iterations = 0;
    double residual = 0.0;
    double complexity = 0.0;
};

Timing timeOwn(const LinearSystem& system) {
    std::vector<double> first, repeat, x(static_cast<std::size_t>(system.size));
    Timing timing;
    for (int k = 0; k < Repeats; ++k) {
        const SolverMemoryPointer memory = makeSolverMemory();
        std::fill(x.begin(), x.end(), 0.0);
        auto start = std::chrono::steady_clock::now();
        const SolveResult result = findSolver("amg")->route(system, x, *memory);
        first.push_back(secondsSince(start));
        timing.iterations = result.iterations;
        timing.residual = result.residual;
        timing.complexity = memory->multigrid.hierarchy.operatorComplexity;
        std::fill(x.begin(), x.end(), 0.0);
        start = std::chrono::steady_clock::now();
        findSolver("amg")->route(system, x, *memory);
        repeat.push_back(secondsSince(start));
    }
    timing.first = medianOf(first);
    timing.repeat = medianOf(repeat);
    return timing;
}

void compare(const NamedSystem& named) {
    const Timing own = timeOwn(named.system);
    fmt::print(
        "{:<28} {:>9} kvr   {:8.3f} s, again {:8.3f} s, {:3} iterations, residual {:.1e}, complexity "
        "{:.2f}\n",
        named.name, named.system.size, own.first, own.repeat, own.iterations, own.residual, own.complexity);
    const PeerTiming peer = timePeer(named.system, Repeats);
    if (!peer.available) return;
    fmt::print("{:<28} {:>9} peer  {:8.3f} s, {:3} iterations, residual {:.1e}; kvr/peer {:.2f}\n",
               named.name, named.system.size, peer.seconds, peer.iterations, peer.residual,
               own.first / peer.seconds);
    std::fflush(stdout);
}

}  // namespace
}  // namespace kvr::bench

int main(int count, char** arguments) {
    using namespace kvr::bench;
    for (int k = 1; k < count; ++k) compare(assembledSystem(arguments[k]));
    for (const NamedSystem& named : generatedSystems()) compare(named);
    return EXIT_SUCCESS;
}
