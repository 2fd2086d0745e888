/// Lines of the first step of a deck, as the program works them: tracing with node positions, explicit
/// transport on lines held in memory, and the maps of the flow diagnostics.
///
///     bench_lines FOLDER... [--benchmark_...]
///
/// Every folder holds an ECLIPSE.DATA. Rows are called by the folder's name. Counters: cell crossings, and
/// updates of one node by one substep, per second of one core.
#include "step_field.hpp"
#include "streamline/diagnostics/flow_diagnostics.hpp"
#include "streamline/line_worker.hpp"
#include "streamline/tracing/trace.hpp"
#include "streamline/transport/explicit_transport.hpp"
#include "streamline/transport/line_grid.hpp"
#include "streamline/transport/node_data.hpp"

#include <benchmark/benchmark.h>
#include <vector>

namespace kvr::bench {
namespace {

constexpr std::size_t HeldLines = 200;     // transport works on so many lines
constexpr int RealisticNodes = 200;        // of a line of a large field
constexpr const char* Rate = "million/s";  // name of the counters
constexpr double Million = 1e6;
constexpr double TransportStep = 1000.0;  // days: many substeps on every line

benchmark::Counter perSecond(double count) {
    return {count / Million, benchmark::Counter::kIsRate};
}

void traceLines(benchmark::State& state, const Simulation& s) {
    StreamlineRecord record;
    sizeRecord(maxNodes(s.options, s.grid), record);
    double crossings = 0.0;
    for (auto _ : state)
        for (const LineStart& start : s.launch.starts) {
            traceLine(s.grid, s.lines.field.trace, start, s.lines.field.fromInjector, record);
            crossings += record.enteredNodes - 1;
        }
    state.counters[Rate] = perSecond(crossings);
}

/// A solved line of the step on evenly spaced nodes, ready to be advanced; false where there is none.
bool loadedLine(const Simulation& s, const std::vector<NodeData>& nodes, const LineStart& start,
                SolverLine& line) {
    const LineField& field = s.lines.field;
    StreamlineRecord record;
    const int most = maxNodes(s.options, s.grid);
    sizeRecord(most, record);
    traceLine(s.grid, field.trace, start, field.fromInjector, record);
    if (record.status != TraceStatus::ReachedWell) return false;
    const double factor = std::max(1.0, static_cast<double>(RealisticNodes) / record.nodeCount);
    sizeSolverLine(record.nodeCount, factor, 0, line);
    takeTracedLine(s.grid, record, !field.fromInjector, field.trace.referenceCube, line);
    layNodes(NodeControl::Regular, factor, 1.0, line);
    loadNodes(nodes, s.fluids, s.state.tracer, true, line);
    loadInlet(nodes, s.fluids, s.wells, true, line);
    return true;
}

std::vector<SolverLine> loadedLines(const Simulation& s) {
    std::vector<NodeData> nodes;
    gatherNodeData(s.fluids, s.grid, s.state, s.timeLevel, s.velocity, s.wells,
                   storageOf(s.options, s.fluids), s.clock.workDt, nodes);
    std::vector<SolverLine> lines;
    const std::size_t every = std::max<std::size_t>(1, s.launch.starts.size() / HeldLines);
    for (std::size_t l = 0; l < s.launch.starts.size(); l += every)
        if (SolverLine line; loadedLine(s, nodes, s.launch.starts[l], line)) lines.push_back(std::move(line));
    return lines;
}

/// On even nodes a line goes as one piece, so every substep updates each of its nodes once.
void moveLines(benchmark::State& state, const Simulation& s) {
    std::vector<SolverLine> lines = loadedLines(s);
    std::vector<std::vector<FlowNode>> start;
    for (const SolverLine& line : lines) start.push_back(line.nodes);
    const ExplicitControl control = explicitControl(s.options, s.clock.dt);
    ExplicitScratch scratch;
    double updates = 0.0;
    for (auto _ : state) {
        state.PauseTiming();
        for (std::size_t l = 0; l < lines.size(); ++l) lines[l].nodes = start[l];
        state.ResumeTiming();
        for (SolverLine& line : lines) {
            advanceExplicit(s.fluids, control, TransportStep, scratch, line);
            updates += static_cast<double>(line.substeps) * line.nodeCount;
        }
    }
    state.counters[Rate] = perSecond(updates);
    state.counters["lines"] = static_cast<double>(lines.size());
}

void diagnoseFlow(benchmark::State& state, const Simulation& s) {
    DiagnosticMaps maps;
    int lines = 0;
    for (auto _ : state)
        lines = traceDiagnostics(s.grid, s.lines.field.trace, s.state.PoreVolume, s.wells, s.lines.pairs,
                                 maxNodes(s.options, s.grid), s.options.meanTimeMaps, maps);
    state.counters["lines"] = lines;
}

void registerCase(const std::string& name, Simulation& s) {
    const auto add = [&name](const char* what, const auto& run) {
        benchmark::RegisterBenchmark((std::string(what) + "/" + name).c_str(), run)
            ->Unit(benchmark::kMillisecond);
    };
    add("tracing", [&s](benchmark::State& state) { traceLines(state, s); });
    add(s.fluids.hasGas ? "explicit transport, three-phase" : "explicit transport, two-phase",
        [&s](benchmark::State& state) { moveLines(state, s); });
    if (!s.lines.field.trace.referenceCube) return;
    clearPairs(s.wells, s.options.saveEndNode, s.lines.pairs);
    add("flow diagnostics", [&s](benchmark::State& state) { diagnoseFlow(state, s); });
}

}  // namespace
}  // namespace kvr::bench

int main(int count, char** arguments) {
    using namespace kvr::bench;
    benchmark::Initialize(&count, arguments);
    std::vector<std::unique_ptr<kvr::Simulation>> cases;
    for (int k = 1; k < count; ++k) {
        cases.push_back(firstStepField(arguments[k]));
        registerCase(caseName(arguments[k]), *cases.back());
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
