#include "streamline/streamline_step.hpp"

#include "base/hard_stop.hpp"
#include "base/stopwatch.hpp"
#include "eclipse/line_files.hpp"
#include "fluid/black_oil.hpp"
#include "model/dual_porosity.hpp"
#include "pressure/cell_transport.hpp"
#include "pressure/properties.hpp"
#include "streamline/diagnostics/flow_diagnostics.hpp"
#include "streamline/diagnostics/line_output.hpp"
#include "streamline/line_threads.hpp"
#include "streamline/mapping/amounts_update.hpp"
#include "streamline/mapping/component_mapping.hpp"
#include "streamline/mapping/mapping.hpp"
#include "streamline/mapping/producer_rates.hpp"
#include "streamline/missed_blocks.hpp"
#include "streamline/tracing/cell_tags.hpp"
#include "streamline/tracing/exit_flags.hpp"
#include "streamline/tracing/launch.hpp"
#include "streamline/transport/component_fronts.hpp"

#include <algorithm>
#include <cmath>
#include <new>
#include <omp.h>

namespace kvr {

namespace {

constexpr int LinesPerThread = 32;  // of one block: enough to even out long and short lines
constexpr double EndSlack = 1e-8;   // days to a report or to the end of the run that count as none

std::size_t at(int n) {
    return static_cast<std::size_t>(n);
}

int tracerCount(const RunOptions& options) {
    return options.tracerActive ? options.tracerCount : 0;
}

std::string_view solverWord(const RunOptions& options, const RunClock& clock) {
    const auto count = static_cast<int>(options.solverPhaseName.size());
    if (count == 0) return {};
    return options.solverPhaseName[at(std::clamp(clock.solverPhaseIndex, 1, count) - 1)];
}

/// The matrices of implicit lines are dumped; lines are then worked one by one.
bool dumpsMatrices(const RunOptions& options) {
    return options.outputSaturationMatrix && options.debugOutput;
}

/// Number of this mapping sub-step within its pressure step, from 1.
int substepNumber(const RunClock& clock, double remainingToEnd) {
    if (clock.workDt <= 0.0) return 1;
    return static_cast<int>(std::lround((clock.endTime - remainingToEnd - clock.time) / clock.workDt));
}

void mapStep(Simulation& s) {
    mapToCells(s.options, s.fluids, s.grid, s.mapping, s.state);
}

void prepareSolver(Simulation& s, double remainingToEnd) {
    LineField& field = s.lines.field;
    field.solver = lineSolverOf(solverWord(s.options, s.clock));
    field.step = s.clock.workDt;
    field.keepPaths = s.eclipse.paths.wanted;
    field.endTime = s.clock.endTime - remainingToEnd;
    field.control = explicitControl(s.options, s.clock.time);
    field.implicitControl = implicitControl(s.options);
    if (dumpsMatrices(s.options)) {
        s.lines.dump = {&s.console, outputPath(s.outputs, ""), s.clock.time};
        field.implicitControl.newton.dump = &s.lines.dump;
    }
    field.nodeControl = nodeControlOf(s.options);
    field.nodeFactor = s.options.nodeFactor;
    field.mergeFactor = s.options.mergeFactor;
    field.gravity = s.options.orthogonalProjection && s.options.lineGravity;
    if (field.solver != LineSolver::Analytic || s.options.componentCount > 0) return;
    const double p = s.pressure.AveragePressure;
    buildAnalyticTable(s.fluids, s.options.analyticRelPermPoints, OilViscosity(s.fluids, p, p),
                       field.analytic);
    buildProfile(s.fluids, field.analytic, field.profile);
}

void launch(Simulation& s) {
    countLines(s.console, s.wells, s.connections, s.velocity, s.tags, s.launch);
    placeLines(s.grid, s.wells, {s.options.gridDimensionality, s.options.cornerPointTracing}, s.launch);
    s.lines.field.fromInjector = s.launch.LaunchMode != "prd";
}

void printMethod(const Simulation& s) {
    screen(s.console, "SL  Numerical method : {}", solverWord(s.options, s.clock));
    screen(s.console, "CFL condition for 1D : {}", number(s.options.cfl));
}

/// Sums and cells of lines that carry components.
void prepareMixtures(Simulation& s) {
    LineField& field = s.lines.field;
    prepareComponentField(s.units, s.grid, s.state, s.velocity, s.wells, s.components, field.components);
    if (!s.options.lineCompressibility) field.components.expansion.assign(s.grid.NCELLS, 0.0);
    if (field.solver == LineSolver::Analytic)
        prepareFronts(s.grid, s.fluids, s.state, s.options.cfl, field.components);
    field.passes = true;
    const int count = s.components.stage.set.count;
    clearTransfer(s.grid.NCELLS, s.lines.transfer, count);
    s.mapping.mixture.assign(s.grid.NCELLS, count + 1, 0.0);
}

/// `storage`: how cells hold their fluids at the start of the step.
void prepareFields(Storage storage, Simulation& s) {
    prepareExitFlags(s.console, s.connections, s.velocity, s.exitFlags);
    buildTraceField(s.options, s.grid, s.state, s.velocity, s.wells, s.tags, s.exitFlags,
                    s.lines.field.trace);
    LineField& field = s.lines.field;
    if (s.options.componentCount > 0) return prepareMixtures(s);
    gatherNodeData(s.fluids, s.grid, s.state, s.timeLevel, s.velocity, s.wells, storage, s.clock.workDt,
                   field.nodes);
    field.passes = carriesAmounts(s.options);
    if (!field.passes) return;
    if (storage == Storage::Whole) addCarriedAmounts(s.state, s.pressure.carried, field.nodes);
    clearTransfer(s.grid.NCELLS, s.lines.transfer);
}

/// Takes over one line's result; called in line order.
void commitLine(int number, LineResult& result, int iterationsLeft, Simulation& s) {
    for (int n = 0; n < result.enteredCount; ++n) s.mapping.CellVisited[result.entered[at(n)]] = 1;
    if (number == s.launch.ActiveLines) {
        const int dropped = result.record.status == TraceStatus::ReachedWell ? 0 : 1;
        reportTracing(s.console, s.tags, number - dropped, s.mapping.CellVisited);
    }
    keepPath(s.console, s.grid, result, s.eclipse.paths);
    putLaunchedLine(result, iterationsLeft, s);
    if (!result.solved) return;
    ++s.launch.successfulLines;
    accumulate(result.contribution, s.fluids.hasGas, false, s.mapping);
    if (s.lines.field.passes)
        addPassage(s.connections, result.contribution.cell, result.contribution.count, s.launch.LineFlux, {},
                   result.passage, s.lines.transfer);
    addLineEnd(s.wells, result.end, s.launch.LineFlux, s.lines.outlets);
    if (s.lines.field.sensitivities) addSensitivity(result.sensitivity, 1.0, s.lines.sensitivities);
    s.lines.substeps += result.substeps;
    s.lines.newton += result.newton;
    ++s.lines.solvedLines;
    tellFronts(s.console, result);
    tellFinished(s.console, number, s.launch.ActiveLines);
}

/// Lines that have been worked and wait to be taken over.
struct WorkedLines {
    int first = 1;
    int count = 0;
};

void commitBlock(const WorkedLines& worked, int iterationsLeft, Simulation& s) {
    for (int k = 0; k < worked.count; ++k)
        commitLine(worked.first + k, s.lines.worked[at(k)], iterationsLeft, s);
}

/// Every line is traced and solved, in blocks of lines at once, while one of the threads takes over the
/// results of the block before. They are taken over in line order, so that they do not depend on the number
/// of threads.
void lineLoop(int iterationsLeft, Simulation& s) {
    const auto block = static_cast<int>(s.lines.results.size());
    WorkedLines worked;
    for (int first = 1; first <= s.launch.ActiveLines; first += block) {
        const int count = std::min(block, s.launch.ActiveLines - first + 1);
        const auto work = [&s, first](int k, LineWorker& worker) {
            workLine(s.grid, s.fluids, s.state, s.wells, s.lines.field, s.launch.starts[at(first + k) - 1],
                     worker, s.lines.results[at(k)]);
        };
        workLines(count, s.lines.workers, work, [&] { commitBlock(worked, iterationsLeft, s); });
        s.lines.results.swap(s.lines.worked);
        worked = {first, count};
    }
    commitBlock(worked, iterationsLeft, s);
}

void printElapsed(const Console& console, double start) {
    both(console, "time elapsed transSL : {}", number(wallSeconds() - start));
}

/// Maps of the whole grid at the end of the run, and the rates by pair of every step.
void viewStep(double remainingToEnd, Simulation& s) {
    s.lines.diagnostics = {};
    if (!isOn(s.options, OutputSwitch::View)) return;
    if (remainingToEnd < EndSlack && !s.options.historyMatch) runDiagnostics(s);
    writeRateAllocation(s);
}

/// Sensitivities are formed by the lines of a step that ends at a report, in its last pass.
bool sensitivitiesAreDue(const RunOptions& options, int iterationsLeft, double remainingToReport) {
    return keepsSensitivities(options) && iterationsLeft < 1 && remainingToReport < EndSlack;
}

/// Empty sums for the lines to come. `coupled`: the pressure system of the step gave their flow.
void startSensitivities(bool due, bool coupled, Simulation& s) {
    s.lines.sensitivities = {};
    s.lines.sensitivities.due = due;
    s.lines.sensitivities.coupled = coupled;
    s.lines.field.sensitivities = due;
    if (!due) return;
    s.lines.sensitivities.wells.resize(s.wells.wells.size());
    s.lines.field.sensitivityForms = sensitivitySettings(s.options);
    s.lines.field.lineFlux = s.launch.LineFlux;
}

/// Every line of the step, and what is written of them.
void runLines(int iterationsLeft, double start, double remainingToEnd, Simulation& s) {
    lineLoop(iterationsLeft, s);
    printElapsed(s.console, start);
    if (tracesMissedBlocks(s)) traceMissedBlocks(s, iterationsLeft);
    viewStep(remainingToEnd, s);
    writeLineStep(s.console, s.options, s.clock, s.launch.ActiveLines, s.eclipse);
}

/// Files that show lines, of a report, are due at the end of the step; or those of the end of the run.
bool linesAreDue(const RunOptions& options, double remainingToEnd, double remainingToReport) {
    if (sensitivitiesAreDue(options, 0, remainingToReport)) return true;
    const bool shown = isOn(options, OutputSwitch::Lines) || isOn(options, OutputSwitch::EclipseLines);
    const bool ends = remainingToEnd < EndSlack;
    if (weighsPairs(options)) return true;
    return (shown && (ends || remainingToReport < EndSlack)) || (ends && isOn(options, OutputSwitch::View));
}

/// Whether fractures exchange fluid with their matrix. Lines know nothing of that exchange: they would tell
/// fronts that run through the fractures alone.
bool exchangesWithMatrix(const Simulation& s) {
    if (!s.grid.dual.isSet) return false;
    for (CellId cell = 1; cell <= matrixCells(s.grid); ++cell)
        if (s.connections.Trans(cell, TransferDirection) > 0.0) return true;
    return false;
}

/// Whether cells pass fluids on alone, without what lines tell of the make-up of their flows: beside matrix,
/// and where saturations are means over lines, which do not pass connections of cells that are no neighbours.
bool goesByCells(const Simulation& s) {
    return exchangesWithMatrix(s) || (!s.connections.further.empty() && !carriesAmounts(s.options));
}

/// The packed cells of the step make room for what the splitting and the pressure solver need.
void clearStep(Simulation& s) {
    releaseTraceField(s.lines.field.trace);
    std::vector<NodeData>().swap(s.lines.field.nodes);
    clearMapping(s.mapping);
    clearLaunch(s.launch);
}

void sizeStage(Simulation& s) {
    const int nodes = maxNodes(s.options, s.grid);
    const auto threads = at(dumpsMatrices(s.options) ? 1 : std::max(1, omp_get_max_threads()));
    s.lines.nodeCapacity = nodes;
    s.lines.workers.resize(threads);
    for (LineWorker& worker : s.lines.workers) sizeWorker(s.options, nodes, worker);
    s.lines.results.resize(threads == 1 ? 1 : threads * LinesPerThread);
    if (tracesMissedBlocks(s)) sizeMissedBlocks(s.lines);
    const bool passes = carriesAmounts(s.options);
    s.lines.worked.resize(s.lines.results.size());
    for (std::vector<LineResult>* block : {&s.lines.results, &s.lines.worked})
        for (LineResult& result : *block) {
            sizeResult(nodes, tracerCount(s.options), result);
            if (passes) sizePassage(nodes, s.lines.workers.front().line.nodes.size(), result.passage);
        }
    sizeMapping(s.grid.NCELLS, tracerCount(s.options), s.fluids.hasGas, s.state, s.mapping);
    s.exitFlags.ExitFacesForward.assign(s.grid.NCELLS, 0);
    s.exitFlags.ExitFacesBackward.assign(s.grid.NCELLS, 0);
    if (s.tags.CellTag.empty()) s.tags.CellTag.assign(s.grid.NCELLS, CellTagKind::Pop);
}

/// Files and solver of the lines of a step, before they are launched.
void prepareLines(double remainingToEnd, double remainingToReport, Simulation& s) {
    if (!s.aquifers.aquifers.empty()) rebuildCellTags(s.grid.NCELLS, s.wells, s.tags);  // by what flows now
    clearPairs(s.wells, s.options.saveEndNode, s.lines.pairs);
    openLineOutput(remainingToReport, s);
    prepareSolver(s, remainingToEnd);
}

void launchUnder(std::string_view heading, Simulation& s) {
    lineToScreen(s.console, "");
    lineToScreen(s.console, heading);
    launch(s);
}

constexpr std::string_view MovingHeading = "-- Saturation calculation --";

/// Lines that show the cells and move nothing.
struct StillLines {
    std::string_view heading;
    Storage storage;  // how cells hold their fluids
    bool tellsMethod = false;
    int iterationsLeft = 0;
};

void traceStillLines(const StillLines& how, double remainingToEnd, double remainingToReport, Simulation& s) {
    const double start = wallSeconds();
    prepareLines(remainingToEnd, remainingToReport, s);
    s.lines.field.solver = LineSolver::Still;
    launchUnder(how.heading, s);
    if (how.tellsMethod) printMethod(s);
    prepareFields(how.storage, s);
    s.lines.field.passes = false;
    startSensitivities(sensitivitiesAreDue(s.options, how.iterationsLeft, remainingToReport), false, s);
    clearVisited(s.mapping);
    clearOutlets(s.wells, s.lines.outlets);
    runLines(how.iterationsLeft, start, remainingToEnd, s);
    closeLineOutput(s);
    clearStep(s);
}

}  // namespace

void allocateStreamlines(Simulation& simulation) {
    simulation.launch.LaunchMode = simulation.options.streamlineStart;
    simulation.launch.RequestedLines = simulation.options.requestedLines;
    try {
        sizeStage(simulation);
    } catch (const std::bad_alloc&) {
        lineToBoth(simulation.console, "Error :: Allocation of streamline");
        hardStop(simulation.console);
    }
}

void StreamlineStep(Simulation& simulation, int iterationsLeft, int /*iteration*/, double remainingToEnd,
                    double remainingToReport) {
    if (goesByCells(simulation)) {
        drawLines(simulation, remainingToEnd, remainingToReport);
        clearVisited(simulation.mapping);  // gravity along lines is left to none of them
        return transportAmounts({}, true, simulation);
    }
    if (simulation.wells.wells.empty()) return mapStep(simulation);
    const double start = wallSeconds();
    prepareLines(remainingToEnd, remainingToReport, simulation);
    launchUnder(MovingHeading, simulation);
    printMethod(simulation);
    prepareFields(storageOf(simulation.options, simulation.fluids), simulation);
    startSensitivities(sensitivitiesAreDue(simulation.options, iterationsLeft, remainingToReport), true,
                       simulation);
    clearVisited(simulation.mapping);
    if (substepNumber(simulation.clock, remainingToEnd) <= 1)
        clearOutlets(simulation.wells, simulation.lines.outlets);
    runLines(iterationsLeft, start, remainingToEnd, simulation);
    if (simulation.lines.field.passes) {
        advanceByFaceTransfer(simulation);
    } else {
        setProducerRates(simulation.lines.outlets, simulation.wells);
        mapStep(simulation);
    }
    closeLineOutput(simulation);
    clearStep(simulation);
}

ComponentMakeUp traceMixtures(Simulation& simulation, double remainingToEnd, double remainingToReport) {
    Simulation& s = simulation;
    if (s.wells.wells.empty()) return {};
    const double start = wallSeconds();
    prepareLines(remainingToEnd, remainingToReport, s);
    launchUnder(MovingHeading, s);
    printMethod(s);
    prepareFields(Storage::Whole, s);
    startSensitivities(false, false, s);
    clearVisited(s.mapping);
    clearOutlets(s.wells, s.lines.outlets);
    runLines(0, start, remainingToEnd, s);
    ComponentMakeUp makeUp = makeUpOfLines(s);
    closeLineOutput(s);
    clearStep(s);
    return makeUp;
}

void drawLines(Simulation& simulation, double remainingToEnd, double remainingToReport) {
    if (simulation.wells.wells.empty()) return;
    if (!linesAreDue(simulation.options, remainingToEnd, remainingToReport)) return;
    const Storage storage = storageOf(simulation.options, simulation.fluids);
    traceStillLines({"-- Lines of the report, saturations stay --", storage}, remainingToEnd,
                    remainingToReport, simulation);
}

void StreamlineRestartStep(Simulation& simulation, int iterationsLeft, int /*iteration*/,
                           double remainingToEnd, double remainingToReport) {
    if (simulation.wells.wells.empty()) return;
    // The cells are those of the restart, and lines that only show them need no older ones.
    traceStillLines({MovingHeading, Storage::Present, true, iterationsLeft}, remainingToEnd,
                    remainingToReport, simulation);
}

}  // namespace kvr
