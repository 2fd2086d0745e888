#include "streamline/line_worker.hpp"

#include "base/index.hpp"
#include "streamline/transport/component_fronts.hpp"
#include "streamline/transport/line_gravity.hpp"

#include <algorithm>
#include <utility>

namespace kvr {

namespace {

void takeTrace(LineResult& result) {
    const StreamlineRecord& record = result.record;
    result.solved = false;
    // Node 1 is the launching cell; the cells from node 2 on were entered. A line that reaches a well lies in
    // its own launching cell as well, so that lines of missed cells do not bring that cell's flow again.
    const int first = record.status == TraceStatus::ReachedWell ? 1 : 2;
    result.enteredCount = std::max(0, record.enteredNodes + 1 - first);
    std::copy_n(record.NodeCell.begin() + first, at(result.enteredCount), result.entered.begin());
}

void loadLine(const GridModel& grid, const FluidTables& fluids, const CellState& state,
              const WellRecord& wells, const LineField& field, const StreamlineRecord& record,
              SolverLine& line) {
    takeTracedLine(grid, record, !field.fromInjector, field.trace.referenceCube, line);
    layNodes(field.nodeControl, field.nodeFactor, field.mergeFactor, line);
    loadNodes(field.nodes, fluids, state.tracer, field.passes, line);
    const CellTagKind firstTag = field.trace.cells[at(line.tracedCell[1])].tag;
    line.hasGravity = field.gravity;
    if (field.gravity) loadLineGravity(grid, state, line);
    loadInlet(field.nodes, fluids, wells, firstTag == CellTagKind::Injector, line);
}

/// Nodes stay as the cells are; what they would let out tells the make-up of the flow at the end.
void showLine(bool hasGas, SolverLine& line) {
    startOutlet(line);
    evaluateFluxes(hasGas, line.nodeCount, line.nodeCount, line);
    const FlowNode& last = line.nodes[at(line.nodeCount)];
    addOutlet({last.Fw, last.Fo, hasGas ? last.Fg : 0.0, 0.0, 0.0, 0.0}, 1.0, line);
}

/// Transport on a loaded line by the solver of the field.
void advanceLine(const FluidTables& fluids, const LineField& field, LineWorker& worker,
                 NewtonCounts& counts) {
    SolverLine& line = worker.line;
    switch (field.solver) {
        case LineSolver::None:
            return;
        case LineSolver::Analytic:
            return advanceAnalytic(fluids, field.profile, field.step, field.endTime, line);
        case LineSolver::Explicit:
            return advanceExplicit(fluids, field.control, field.step, worker.scratch, line);
        case LineSolver::Implicit:
            return advanceImplicit(fluids, field.implicitControl, field.step, worker.newton, counts, line);
        case LineSolver::Hybrid:
            return advanceHybrid(fluids, field.control, field.implicitControl, field.step, worker.newton,
                                 counts, line);
        case LineSolver::Still:
            return showLine(fluids.hasGas, line);
    }
}

/// The producing end: where a line from an injector arrived, where a line from a producer began.
LineEnd lineEnd(const LineField& field, TraceStatus status, const SolverLine& line) {
    LineEnd end;
    const bool arrived = !field.fromInjector || status == TraceStatus::ReachedWell;
    end.well = arrived ? line.producer : 0;
    end.cell = line.tracedCell[at(line.tracedNodeCount)];
    end.water = line.outletWater;
    end.oil = line.outletOil;
    end.gas = line.outletGas;
    end.waterFraction = line.outletWater * line.nodes[at(line.nodeCount)].Bw;
    end.oilFraction = line.outletOil * line.nodes[at(line.nodeCount)].Bo;
    return end;
}

/// What a line of components carries out, as surface volumes per reservoir volume, from `out`.
LineEnd mixtureEnd(const LineField& field, TraceStatus status, const SolverLine& line,
                   const ComponentFlow& out, ComponentLine& components) {
    LineEnd end;
    const bool arrived = !field.fromInjector || status == TraceStatus::ReachedWell;
    end.well = arrived ? line.producer : 0;
    end.cell = line.tracedCell[at(line.tracedNodeCount)];
    const ComponentNode& last = components.nodes[at(line.nodeCount)];
    const int count = field.components.stage->set.count;
    double moles = 0.0;
    for (std::size_t i = 0; i < at(count); ++i) moles += out.moles[i];
    end.water = out.water;
    end.waterFraction = end.water * last.Bw;
    end.oilFraction = 1.0 - end.waterFraction;
    if (!(moles > 0.0)) return end;
    Composition feed{};
    for (std::size_t i = 0; i < at(count); ++i) feed[i] = out.moles[i] / moles;
    components.surface = {};
    const PhaseVolumes volumes = surfaceVolumes(*field.components.surface, feed, components.surface);
    end.oil = moles * volumes.liquid / field.components.volumeFactor;
    end.gas = moles * volumes.vapour / field.components.volumeFactor;
    return end;
}

/// Transport of a loaded line, or the fronts of the stream at its inlet; a line that no stream enters has
/// none and goes explicitly. False where a front was not a number.
bool advanceMixture(const GridModel& grid, const FluidTables& fluids, const CellState& state,
                    const LineField& field, LineWorker& worker) {
    SolverLine& line = worker.line;
    const ComponentField& mixtures = field.components;
    if (field.solver == LineSolver::Analytic && mixtures.inlet[line.tracedCell[1]] >= 0) {
        // Fronts are known at every place: nodes are those of the cells, where longer ones would tell
        // nothing.
        layNodes(NodeControl::Irregular, 1.0, 1.0, line);
        return trackFronts(grid, state, mixtures, field.step, line, worker.components);
    }
    layNodes(field.nodeControl, field.nodeFactor, field.mergeFactor, line);
    joinShortNodes(field.step, line);
    loadComponentLine(grid, fluids, state, mixtures, line, worker.components);
    const double step = field.solver == LineSolver::Still ? 0.0 : field.step;
    advanceComponentLine(fluids, mixtures, field.control, step, line, worker.components);
    return true;
}

void solveMixtureLine(const GridModel& grid, const FluidTables& fluids, const CellState& state,
                      const LineField& field, LineWorker& worker, LineResult& result) {
    SolverLine& line = worker.line;
    ComponentLine& components = worker.components;
    const int count = field.components.stage->set.count;
    takeTracedLine(grid, result.record, !field.fromInjector, field.trace.referenceCube, line);
    result.isNumber = advanceMixture(grid, fluids, state, field, worker);
    const double step = field.solver == LineSolver::Still ? 0.0 : field.step;
    takeContribution(line, fluids.hasGas, result.contribution);
    takeHeld(count, line, components, result.contribution);
    if (field.keepPaths)
        takePath(grid, result.record, field.fromInjector, field.trace.referenceCube, line,
                 result.contribution, result.path);
    takeMixturePassage(count, line, components, result.passage);
    const ComponentNode& last = components.nodes[at(line.nodeCount)];
    ComponentFlow out = last.flux;
    if (step > 0.0) {
        for (std::size_t i = 0; i < at(count); ++i) out.moles[i] = last.passed.moles[i] / step;
        out.water = last.passed.water / step;
    }
    result.end = mixtureEnd(field, result.record.status, line, out, components);
    result.substeps = line.substeps;
    result.newton = {};
    result.solved = true;
}

}  // namespace

LineSolver lineSolverOf(std::string_view word) {
    constexpr std::pair<std::string_view, LineSolver> Words[] = {{"btf", LineSolver::Analytic},
                                                                 {"mas", LineSolver::Explicit},
                                                                 {"imp", LineSolver::Implicit},
                                                                 {"hyb", LineSolver::Hybrid}};
    for (const auto& [known, solver] : Words)
        if (word == known) return solver;
    return LineSolver::None;
}

void sizeWorker(const RunOptions& options, int tracedNodes, LineWorker& worker) {
    const double factor = nodeControlOf(options) == NodeControl::Regular ? options.nodeFactor : 1.0;
    sizeSolverLine(tracedNodes, factor, options.tracerActive ? options.tracerCount : 0, worker.line);
}

void sizeResult(int tracedNodes, int tracerCount, LineResult& result) {
    sizeRecord(tracedNodes, result.record);
    result.entered.assign(at(tracedNodes) + 2, 0);
    sizeContribution(tracedNodes, tracerCount, result.contribution);
}

void solveLine(const GridModel& grid, const FluidTables& fluids, const CellState& state,
               const WellRecord& wells, const LineField& field, LineWorker& worker, LineResult& result) {
    if (field.solver == LineSolver::None) return;
    if (field.components.stage != nullptr)
        return solveMixtureLine(grid, fluids, state, field, worker, result);
    SolverLine& line = worker.line;
    loadLine(grid, fluids, state, wells, field, result.record, line);
    result.newton = {};
    advanceLine(fluids, field, worker, result.newton);
    takeContribution(line, fluids.hasGas, result.contribution);
    if (field.keepPaths)
        takePath(grid, result.record, field.fromInjector, field.trace.referenceCube, line,
                 result.contribution, result.path);
    if (field.passes) takePassage(line, result.passage);
    result.end = lineEnd(field, result.record.status, line);
    result.end.told = !field.passes || result.passage.told[at(line.tracedNodeCount)] != 0;
    result.substeps = line.substeps;
    if (field.sensitivities)
        takeSensitivity(field.sensitivityForms, grid, state, wells, fluids.hasGas, field.lineFlux, line,
                        result.sensitivity);
    result.solved = true;
}

void workLine(const GridModel& grid, const FluidTables& fluids, const CellState& state,
              const WellRecord& wells, const LineField& field, const LineStart& start, LineWorker& worker,
              LineResult& result) {
    traceLine(grid, field.trace, start, field.fromInjector, result.record);
    takeTrace(result);
    if (result.record.status != TraceStatus::Rejected)
        solveLine(grid, fluids, state, wells, field, worker, result);
}

void tellFronts(const Console& console, const LineResult& result) {
    if (!result.isNumber) lineToScreen(console, "Problem :: NaN Found @ Comp Ftrack");
}

void keepPath(const Console& console, const GridModel& grid, LineResult& result, LinePaths& paths) {
    if (!paths.wanted) return;
    if (!result.solved) takeEmptyPath(grid, result.record, result.path);
    addPath(console, result.path, paths);
}

}  // namespace kvr
