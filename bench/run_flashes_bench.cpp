/// Flashes of a running simulation: takes a run with components, keeps a sample of what its flashes were
/// asked with the last state of their place, and takes them again.
///
///     bench_run_flashes DECK
///
/// One row of name=value pairs: the flashes of the run, the share of those that start from last K-values, and
/// the million a second of one core, of all and of each kind.
#include "base/stopwatch.hpp"
#include "fluid/components/flash.hpp"
#include "run/command_line.hpp"
#include "run/driver.hpp"

#include <atomic>
#include <cstdlib>
#include <fmt/format.h>
#include <mutex>
#include <vector>

// The linker puts the one in the place of the other (--wrap).
#define FLASH "_ZN3kvr7FlashPTERKNS_12ComponentSetERKSt5arrayIdLm12EEdRNS_10FlashStateE"
void wrappedFlash(const kvr::ComponentSet&, const kvr::Composition&, double,
                  kvr::FlashState&) asm("__wrap_" FLASH);
void ownFlash(const kvr::ComponentSet&, const kvr::Composition&, double,
              kvr::FlashState&) asm("__real_" FLASH);

namespace kvr::bench {
namespace {

constexpr long Stride = 61;  // one in so many is kept
constexpr std::size_t MostKept = 100000;
constexpr double LeastSeconds = 1.0;
constexpr double Million = 1e6;

struct Asked {
    ComponentSet set;
    Composition feed;
    double pressure;
    FlashState last;
};

std::atomic<long> flashes{0}, fromLastK{0};
std::mutex keeping;
std::vector<Asked> kept;

/// Million flashes a second of the kept ones of a kind, over and over for a second.
double rateOf(bool all, bool hasK) {
    long done = 0;
    double seconds = 0.0;
    FlashState state;
    while (seconds < LeastSeconds) {
        const long before = done;
        const double start = cpuSeconds();
        for (const Asked& asked : kept) {
            if (!all && asked.last.hasK != hasK) continue;
            state = asked.last;
            ownFlash(asked.set, asked.feed, asked.pressure, state);
            ++done;
        }
        seconds += cpuSeconds() - start;
        if (done == before) return 0.0;
    }
    return static_cast<double>(done) / seconds / Million;
}

int measure(int count, char** arguments) {
    Simulation simulation;
    if (const auto status = readCommandLine(count, arguments, simulation.command)) return *status;
    if (const int status = runSimulation(simulation)) return status;
    const double share = flashes > 0 ? static_cast<double>(fromLastK) / static_cast<double>(flashes) : 0.0;
    fmt::print("\nflashes: components={} flashes={} fromK={:.3f} all={:.3f} withK={:.3f} withoutK={:.3f}\n",
               kept.empty() ? 0 : kept.front().set.count, flashes.load(), share, rateOf(true, true),
               rateOf(false, true), rateOf(false, false));
    return EXIT_SUCCESS;
}

}  // namespace
}  // namespace kvr::bench

void wrappedFlash(const kvr::ComponentSet& set, const kvr::Composition& feed, double pressure,
                  kvr::FlashState& state) {
    using namespace kvr::bench;
    const long number = ++flashes;
    if (state.hasK) ++fromLastK;
    if (number % Stride == 0) {
        const std::lock_guard lock(keeping);
        if (kept.size() < MostKept) kept.push_back({set, feed, pressure, state});
    }
    ownFlash(set, feed, pressure, state);
}

int main(int count, char** arguments) {
    return kvr::bench::measure(count, arguments);
}
