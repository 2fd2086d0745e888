#include "base/constants.hpp"
#include "model/block_grid.hpp"
#include "model/grid_memory.hpp"
#include "report/block_zone.hpp"
#include "report/point_file.hpp"
#include "report/slices.hpp"

#include <benchmark/benchmark.h>
#include <cmath>

namespace kvr {
namespace {

/// Blocks of 20 by 10 by 2 ft, in the numbers of a layered reservoir of 66 thousand or 1.1 million cells.
GridModel layeredBlocks(int layers) {
    GridModel grid;
    grid.NX = 60;
    grid.NY = 220;
    grid.NZ = layers;
    allocateGrid(grid);
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        grid.DX[cell] = 20.0;
        grid.DY[cell] = 10.0;
        grid.DZ[cell] = 2.0;
        grid.TOPS[cell] = 8000.0;
    }
    fillTopsBelow(grid);
    buildBlockGrid(grid, CubicFeetPerBarrel);
    return grid;
}

/// Values of nine digits, as a pressure map has them.
CellArray<double> longNumbers(const GridModel& grid) {
    CellArray<double> values;
    values.assign(grid.NCELLS, 0.0);
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) values[cell] = 4000.0 + 500.0 * std::sin(0.37 * cell);
    return values;
}

/// One map by `write(stream, grid, values)`; the stream ends nowhere, so that the disk is not measured.
template <class Write>
void writeMap(benchmark::State& state, const Write& write) {
    const GridModel grid = layeredBlocks(static_cast<int>(state.range(0)));
    const CellArray<double> values = longNumbers(grid);
    std::FILE* nowhere = std::fopen("/dev/null", "w");
    for (auto _ : state) write(nowhere, grid, values);
    std::fclose(nowhere);
    state.counters["cells"] = grid.NCELLS;
}

void blockZone(benchmark::State& state) {
    writeMap(state, [](std::FILE* file, const GridModel& grid, const CellArray<double>& values) {
        writeBlockZone(file, grid, ZoneNodes::Shared, values, 50.0, "p");
    });
}
void cornerZone(benchmark::State& state) {
    writeMap(state, [](std::FILE* file, const GridModel& grid, const CellArray<double>& values) {
        writeBlockZone(file, grid, ZoneNodes::PerCell, values, 50.0, "p");
    });
}
void pointFile(benchmark::State& state) {
    writeMap(state, [](std::FILE* file, const GridModel& grid, const CellArray<double>& values) {
        writePointFile(file, grid, values, "p");
    });
}
void slices(benchmark::State& state) {
    writeMap(state, [](std::FILE* file, const GridModel& grid, const CellArray<double>& values) {
        writeSlices(file, grid, values, 50.0, "p");
    });
}

BENCHMARK(blockZone)->Arg(5)->Arg(85)->Unit(benchmark::kMillisecond);
BENCHMARK(cornerZone)->Arg(5)->Arg(85)->Unit(benchmark::kMillisecond);
BENCHMARK(pointFile)->Arg(5)->Arg(85)->Unit(benchmark::kMillisecond);
BENCHMARK(slices)->Arg(5)->Arg(85)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace kvr

BENCHMARK_MAIN();
