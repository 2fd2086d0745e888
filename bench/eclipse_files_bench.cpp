// Writing and reading the binary files of a model of 60 x 220 x 85 cells, 1.12 million.

#include "eclipse/activity_reader.hpp"
#include "eclipse/grid_file.hpp"
#include "eclipse/init_file.hpp"
#include "eclipse/init_reader.hpp"
#include "eclipse/restart_file.hpp"
#include "unit/eclipse/small_case.hpp"

#include <benchmark/benchmark.h>

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

BENCHMARK(writeBinarySet)->Unit(benchmark::kMillisecond);
BENCHMARK(readBinarySet)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace kvr

BENCHMARK_MAIN();
