// Writing and reading the binary files of a model of 60 x 220 x 85 cells, 1.12 million, and a restart of as
// many cells with face fluxes as the velocity field of a run.

#include "eclipse/activity_reader.hpp"
#include "eclipse/grid_file.hpp"
#include "eclipse/init_file.hpp"
#include "eclipse/init_reader.hpp"
#include "eclipse/restart_file.hpp"
#include "eclipse/restart_velocity.hpp"
#include "resident_size.hpp"
#include "unit/eclipse/small_case.hpp"
#include "unit/pressure/small_run.hpp"

#include <benchmark/benchmark.h>
#include <cmath>
#include <filesystem>
#include <sys/resource.h>

namespace kvr {
namespace {

SmallCase& bigCase() {
    static SmallCase big(60, 220, 85);
    return big;
}

void writeSet(const Simulation& run) {
    writeGridFile(run.console, run.options, run.grid);
    writeInitFile(run.console, run.options, run.units, run.grid, run.connections);
    writeRestartFile(run.console, run.options, run.clock, run.grid, run.state,
                     {run.units, run.connections, run.velocity}, run.lines.diagnostics);
}

void writeBinarySet(benchmark::State& state) {
    const Simulation& run = bigCase().run;
    for (auto _ : state) writeSet(run);
}

/// Every block of a file into memory.
void readWhole(const std::string& path, benchmark::State& state) {
    RecordReader reader;
    BlockHeader header;
    BlockData data;
    if (open_read(path, ByteOrder::Big, reader) != 0) state.SkipWithError("no file");
    while (read_header(reader, header) == ReadResult::Ok)
        if (read_block(reader, header, data) != ReadResult::Ok) state.SkipWithError("not read");
    close(reader);
}

void readBinarySet(benchmark::State& state) {
    SmallCase& big = bigCase();
    Simulation& run = big.run;
    writeSet(run);
    for (auto _ : state) {
        input_ACTNUM_EGRID(run.console, run.options, "CASE", run.grid);
        input_INIT_TRANS(run.console, run.options, run.units, "CASE", run.grid, run.connections);
        readWhole(big.path(".X0001"), state);
    }
}

/// A waterflood of the same size with a field, ready to write a restart and to read it back.
SmallCase& floodCase() {
    static SmallCase flood(60, 220, 85);
    Simulation& run = flood.run;
    if (!run.velocity.CellFaceFlux.slots.empty()) return flood;
    run.fluids = sample::waterAndOil(1e-6);
    run.options.hasOil = run.options.hasWater = true;
    for (CellId cell = 1; cell <= run.grid.NCELLS; ++cell) {
        run.state.Pressure[cell] = 3000.0 + 50.0 * std::sin(1e-3 * cell);
        run.state.Sw[cell] = 0.5 + 0.2 * std::sin(1e-2 * cell);
        run.state.So[cell] = 1.0 - run.state.Sw[cell];
    }
    refreshProperties(run.grid, run.fluids, run.state);
    AllocateVelocity(run.console, run.grid.NCELLS, run.connections.flowDirections, false, run.velocity);
    BuildVelocityFromPressure(run.options, run.units, run.grid, run.connections, run.state, {}, run.velocity);
    writeRestartFile(run.console, run.options, run.clock, run.grid, run.state,
                     {run.units, run.connections, run.velocity}, run.lines.diagnostics);
    return flood;
}

/// The largest resident size of this process so far.
double peakMegabytes() {
    constexpr double KilobytesPerMegabyte = 1024.0;
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / KilobytesPerMegabyte;
}

/// Reading and field. Counters: size of the file, and what the reading takes above what stood before it.
void readRestartField(benchmark::State& state) {
    constexpr double Megabyte = 1048576.0;
    SmallCase& flood = floodCase();
    const double before = bench::residentMegabytes();
    std::FILE* clear = std::fopen("/proc/self/clear_refs", "w");  // the peak counts from here
    if (clear != nullptr) {
        std::fputs("5", clear);
        std::fclose(clear);
    }
    for (auto _ : state) {
        flood.run.clock.time = 0.0;
        if (!input_RST2Velocity(flood.run, "CASE", 1).hasFluxes) state.SkipWithError("no fluxes");
    }
    state.counters["file_MB"] =
        static_cast<double>(std::filesystem::file_size(flood.path(".X0001"))) / Megabyte;
    state.counters["above_MB"] = peakMegabytes() - before;
}

BENCHMARK(writeBinarySet)->Unit(benchmark::kMillisecond);
BENCHMARK(readBinarySet)->Unit(benchmark::kMillisecond);
BENCHMARK(readRestartField)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace kvr

BENCHMARK_MAIN();
