#include "streamline/missed_blocks.hpp"

#include "base/constants.hpp"
#include "base/index.hpp"
#include "base/stopwatch.hpp"
#include "model/dual_porosity.hpp"
#include "streamline/diagnostics/line_output.hpp"
#include "streamline/line_threads.hpp"
#include "streamline/mapping/mapping.hpp"
#include "streamline/mapping/producer_rates.hpp"
#include "streamline/tracing/cell_line.hpp"

namespace kvr {

namespace {

constexpr double LeastMedium = MachineEpsilon;  // rb and md

struct MissedStage {
    CellId next = 1;     // first cell not looked at yet
    int additional = 0;  // lines so far
    int iterationsLeft = 0;
    bool only = false;          // mode "cel": no other lines
    std::vector<double> fresh;  // rb first entered by each line of the block
};

bool needsLine(const Simulation& s, CellId cell) {
    return s.mapping.CellVisited[cell] == 0 && s.grid.Active[cell] != 0 && !isMatrixCell(s.grid, cell) &&
           s.state.PoreVolume[cell] >= LeastMedium && s.grid.PERMX[cell] >= LeastMedium;
}

/// Traces lines until the block is full or the cells are through; where a line starts depends on where the
/// ones before it went.
void traceAhead(Simulation& s, MissedStage& stage) {
    TracedBlock& block = s.lines.ahead;
    block.count = 0;
    const auto room = static_cast<int>(block.records.size());
    for (; stage.next <= s.grid.NCELLS && block.count < room; ++stage.next) {
        if (!needsLine(s, stage.next)) continue;
        block.fresh[at(block.count)] = traceThroughCell(
            s.grid, s.lines.field.trace, s.state.PoreVolume, s.wells, stage.next, s.mapping.CellVisited,
            LegStandStill, s.lines.legs, block.records[at(block.count)]);
        ++block.count;
    }
}

/// The block traced ahead becomes the one that is worked. Returns the number of its lines.
int takeTracedBlock(LineStage& lines, MissedStage& stage) {
    for (int k = 0; k < lines.ahead.count; ++k) {
        lines.results[at(k)].solved = false;
        std::swap(lines.results[at(k)].record, lines.ahead.records[at(k)]);
    }
    stage.fresh.swap(lines.ahead.fresh);
    return lines.ahead.count;
}

/// Solves the lines of a block while one of the threads traces the next block.
void solveBlock(int count, Simulation& s, MissedStage& stage) {
    const auto solve = [&s](int k, LineWorker& worker) {
        LineResult& result = s.lines.results[at(k)];
        if (result.record.status == TraceStatus::ReachedWell)
            solveLine(s.grid, s.fluids, s.state, s.wells, s.lines.field, worker, result);
    };
    workLines(count, s.lines.workers, solve, [&s, &stage] { traceAhead(s, stage); });
}

/// Takes over one line's result; called in the order of the start cells.
void commitMissed(LineResult& result, double fresh, MissedStage& stage, Simulation& s) {
    ++s.launch.ActiveLines;
    ++stage.additional;
    keepPath(s.console, s.grid, result, s.eclipse.paths);
    putMissedLine(result, stage.iterationsLeft, s);
    if (!result.solved) return;
    const double crossing = result.record.NodeTof[at(result.record.nodeCount)];
    double flow = s.launch.LineFlux;
    if (stage.only && crossing > 0.0) {
        flow = fresh / crossing;
        scaleWeights(flow, result.contribution);
        addLineEnd(s.wells, result.end, flow, s.lines.outlets);
        if (s.lines.field.sensitivities)
            addSensitivity(result.sensitivity, flow / s.launch.LineFlux, s.lines.sensitivities);
    }
    if (s.lines.field.passes)
        addPassage(s.connections, result.contribution.cell, result.contribution.count, flow,
                   s.mapping.visitedSnapshot, result.passage, s.lines.transfer);
    accumulate(result.contribution, s.fluids.hasGas, true, s.mapping);
    s.lines.substeps += result.substeps;
    s.lines.newton += result.newton;
    ++s.lines.solvedLines;
    tellFronts(s.console, result);
    tellFinished(s.console, s.launch.ActiveLines, s.launch.ActiveLines);
}

}  // namespace

void sizeMissedBlocks(LineStage& lines) {
    sizeLegs(lines.nodeCapacity, lines.legs);
    lines.ahead.fresh.assign(lines.results.size(), 0.0);
    lines.ahead.records.resize(lines.results.size());
    for (StreamlineRecord& record : lines.ahead.records) sizeRecord(lines.nodeCapacity, record);
}

bool tracesMissedBlocks(const Simulation& simulation) {
    return simulation.options.traceMissed == "Yes" || simulation.launch.LaunchMode == "cel";
}

void traceMissedBlocks(Simulation& simulation, int iterationsLeft) {
    const double start = wallSeconds();
    lineToScreen(simulation.console, "-- Saturation calculation from missed blk --");
    const std::string mode = simulation.launch.LaunchMode;
    const bool fromInjector = simulation.lines.field.fromInjector;
    simulation.launch.LaunchMode = "inj";
    simulation.lines.field.fromInjector = true;
    simulation.mapping.visitedSnapshot = simulation.mapping.CellVisited;
    MissedStage stage;
    stage.iterationsLeft = iterationsLeft;
    stage.only = mode == "cel";
    stage.fresh.assign(simulation.lines.results.size(), 0.0);
    traceAhead(simulation, stage);
    while (const int count = takeTracedBlock(simulation.lines, stage)) {
        solveBlock(count, simulation, stage);
        for (int k = 0; k < count; ++k)
            commitMissed(simulation.lines.results[at(k)], stage.fresh[at(k)], stage, simulation);
    }
    simulation.launch.LaunchMode = mode;
    simulation.lines.field.fromInjector = fromInjector;
    both(simulation.console, "Additional Streamline  : {}", stage.additional);
    both(simulation.console, "time elapsed missedblk : {}", number(wallSeconds() - start));
}

}  // namespace kvr
