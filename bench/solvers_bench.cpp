#include "pressure/solvers/bicg.hpp"
#include "pressure/solvers/solver_memory.hpp"
#include "pressure/solvers/solver_table.hpp"
#include "unit/pressure/solvers/generated_systems.hpp"

#include <algorithm>
#include <benchmark/benchmark.h>

namespace kvr {
namespace {

/// Field sizes of a layered reservoir: 66 thousand and 1.1 million cells.
constexpr test::Box Boxes[] = {{60, 220, 5}, {60, 220, 85}};

/// Layers of lognormal permeability, vertical couplings weakened by kv/kh and raised by flat cells.
LinearSystem benchmarkSystem(const test::Box& box) {
    const std::vector<double> field = test::lognormalField(box.cells(), 2.0, 2024);
    LinearSystem system = boxSystem(box, field, {1.0, 4.0, 30.0}, 1e-6, test::fiveSpotWells(box, field));
    for (int w = system.cellRows; w < system.size; ++w) system.rhs[w] = w % 2 == 0 ? 1000.0 : -1000.0;
    return system;
}

void solveFresh(benchmark::State& state, const char* word, bool keepMemory) {
    const LinearSystem system = benchmarkSystem(Boxes[state.range(0)]);
    SolverMemoryPointer memory = makeSolverMemory();
    std::vector<double> x(static_cast<std::size_t>(system.size));
    SolveResult result;
    if (keepMemory) findSolver(word)->route(system, x, *memory);
    for (auto _ : state) {
        if (!keepMemory) memory = makeSolverMemory();
        std::fill(x.begin(), x.end(), 0.0);
        result = findSolver(word)->route(system, x, *memory);
    }
    state.counters["cells"] = system.cellRows;
    state.counters["iterations"] = result.iterations;
    state.counters["residual"] = result.residual;
    state.counters["complexity"] = memory->multigrid.hierarchy.operatorComplexity;
}

void multigridSetUp(benchmark::State& state) {
    const LinearSystem system = benchmarkSystem(Boxes[state.range(0)]);
    MultigridMemory memory;
    for (auto _ : state) setUpHierarchy(system, memory);
    state.counters["levels"] = static_cast<double>(memory.hierarchy.levels.size());
    state.counters["complexity"] = memory.hierarchy.operatorComplexity;
}

/// Twenty iterations of ILU(0)-BiCG, factors at hand.
void bicgIterations(benchmark::State& state) {
    constexpr int Iterations = 20;
    const LinearSystem system = benchmarkSystem(Boxes[state.range(0)]);
    SolverMemory memory;
    memory.vectors.resizeBoth(system.size);
    factorIncomplete(system, memory.factors);
    std::vector<double> x(static_cast<std::size_t>(system.size));
    for (auto _ : state) {
        std::fill(x.begin(), x.end(), 0.0);
        bicg(system, memory.factors, {SolverTolerance, Iterations}, x, memory.vectors);
    }
    state.SetItemsProcessed(state.iterations() * Iterations);
}

void incompleteFactors(benchmark::State& state) {
    const LinearSystem system = benchmarkSystem(Boxes[state.range(0)]);
    IncompleteFactors factors;
    for (auto _ : state) factorIncomplete(system, factors);
}

BENCHMARK_CAPTURE(solveFresh, amg, "amg", false)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(solveFresh, amg_kept_hierarchy, "amg", true)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(solveFresh, bicg, "bicg", false)->Arg(0)->Unit(benchmark::kMillisecond);
BENCHMARK(bicgIterations)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(incompleteFactors)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(multigridSetUp)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace kvr

BENCHMARK_MAIN();
