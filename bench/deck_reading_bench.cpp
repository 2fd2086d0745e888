/// Reading of the deck in the working folder (ECLIPSE.DATA), once: seconds of one core, bytes of the arrays
/// that were filled, and the peak of the process over them.
///
///     bench_deck_reading
///
/// The arrays are those of the grid and of the initial state; what the process held before the reading began
/// is taken off the peak. One row of name=value pairs.
#include "base/stopwatch.hpp"
#include "deck/deck_reader.hpp"
#include "run/input_detection.hpp"

#include <cstdlib>
#include <fmt/format.h>
#include <fstream>
#include <string>

namespace kvr::bench {
namespace {

constexpr double BytesPerKilobyte = 1024.0;
constexpr double Million = 1e6;

/// Largest resident size of this program so far; what getrusage tells counts the shell that started it too.
double peakBytes() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;)
        if (double kilobytes = 0.0; word == "VmHWM:" && status >> kilobytes)
            return kilobytes * BytesPerKilobyte;
    return 0.0;
}

template <class T>
double bytesOf(const std::vector<T>& values) {
    return static_cast<double>(values.capacity() * sizeof(T));
}

template <class... Arrays>
double bytesOfAll(const Arrays&... arrays) {
    return (bytesOf(arrays.slots) + ...);
}

double bytesOfGrid(const GridModel& g) {
    return bytesOfAll(g.CellI, g.CellJ, g.CellK, g.Active, g.CellCentre, g.DX, g.DY, g.DZ, g.TOPS, g.PORV,
                      g.BulkVolume, g.PORO, g.NTG, g.PERMX, g.PERMY, g.PERMZ, g.JFactor, g.SATNUM) +
           bytesOf(g.COORD) + bytesOf(g.ZCORN) + bytesOf(g.xyz_3d) + bytesOf(g.NodeX) + bytesOf(g.NodeY) +
           bytesOf(g.NodeZ);
}

void measure() {
    Simulation simulation;
    detectInput(simulation.console, simulation.command, simulation.options);
    openOutputs(simulation.options.workingFolder, simulation.outputs, simulation.console);
    const double before = peakBytes();
    const double start = cpuSeconds();
    readDeck(simulation);
    const double seconds = cpuSeconds() - start;
    const double filled = bytesOfGrid(simulation.grid);
    const double peak = peakBytes() - before;
    closeOutputs(simulation.outputs);
    fmt::print("\ndeck reading: cells={} seconds={:.3f} filled_MB={:.1f} peak_MB={:.1f} peak/filled={:.3f}\n",
               simulation.grid.NCELLS, seconds, filled / Million, peak / Million, peak / filled);
}

}  // namespace
}  // namespace kvr::bench

int main() {
    kvr::bench::measure();
    return EXIT_SUCCESS;
}
