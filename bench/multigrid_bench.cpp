/// The multigrid route against BoomerAMG with BiCGSTAB on the same matrices: those that the program
/// assembles for the decks named on the command line (folders that hold an ECLIPSE.DATA), and generated
/// variants (strongly anisotropic, homogeneous, one-sided multipliers) of 66 thousand cells, with --large
/// also of 1.1 million. Output: one line a matrix and solver with the wall time of set-up and solve and of
/// the second solve with the same pattern (s, median of the repeats) on one thread and on two, iterations,
/// true residual, operator complexity, growth of the resident size, and the ratio of times and sizes.
#include "bench_matrices.hpp"
#include "peer_multigrid.hpp"
#include "pressure/solvers/solver_memory.hpp"
#include "pressure/solvers/solver_table.hpp"
#include "resident_size.hpp"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fmt/format.h>
#include <omp.h>
#include <string_view>

namespace kvr::bench {
namespace {

constexpr int LargeSize = 1000000;

int repeatsFor(const LinearSystem& system) {
    return system.size < LargeSize ? 5 : 3;
}

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
    double megabytes = 0.0;
};

Timing timeOwn(const LinearSystem& system, int threads) {
    omp_set_num_threads(threads);
    std::vector<double> first, repeat, x(static_cast<std::size_t>(system.size));
    Timing timing;
    for (int k = 0; k < repeatsFor(system); ++k) {
        const double before = residentMegabytes();
        const SolverMemoryPointer memory = makeSolverMemory();
        std::fill(x.begin(), x.end(), 0.0);
        auto start = std::chrono::steady_clock::now();
        const SolveResult result = findSolver("amg")->route(system, x, *memory);
        first.push_back(secondsSince(start));
        timing.megabytes = residentMegabytes() - before;
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
    const Timing own = timeOwn(named.system, 1);
    fmt::print(
        "{:<28} {:>9} kvr   {:8.3f} s, again {:8.3f} s, {:3} iterations, residual {:.1e}, complexity "
        "{:.2f}, {:.0f} MB\n",
        named.name, named.system.size, own.first, own.repeat, own.iterations, own.residual, own.complexity,
        own.megabytes);
    const Timing two = timeOwn(named.system, 2);
    fmt::print("{:<28} {:>9} kvr 2 {:8.3f} s, again {:8.3f} s, faster {:.2f}, again {:.2f}\n", named.name,
               named.system.size, two.first, two.repeat, own.first / two.first, own.repeat / two.repeat);
    omp_set_num_threads(1);
    const PeerTiming peer = timePeer(named.system, repeatsFor(named.system));
    if (!peer.available) return;
    fmt::print(
        "{:<28} {:>9} peer  {:8.3f} s, {:3} iterations, residual {:.1e}, {:.0f} MB; kvr/peer {:.2f}, "
        "memory {:.2f}\n",
        named.name, named.system.size, peer.seconds, peer.iterations, peer.residual, peer.megabytes,
        own.first / peer.seconds, own.megabytes / peer.megabytes);
    std::fflush(stdout);
}

}  // namespace
}  // namespace kvr::bench

int main(int count, char** arguments) {
    using namespace kvr::bench;
    bool large = false;
    for (int k = 1; k < count; ++k) {
        if (std::string_view(arguments[k]) == "--large")
            large = true;
        else
            compare(assembledSystem(arguments[k]));
    }
    for (const NamedSystem& named : generatedSystems(large)) compare(named);
    return EXIT_SUCCESS;
}
