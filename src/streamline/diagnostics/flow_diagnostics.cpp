#include "streamline/diagnostics/flow_diagnostics.hpp"

#include "base/arrow_rules.hpp"
#include "base/index.hpp"
#include "base/number_writer.hpp"
#include "base/stopwatch.hpp"
#include "base/written_files.hpp"
#include "report/block_zone.hpp"
#include "report/map_part.hpp"
#include "streamline/tracing/cell_line.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr StandStill Nowhere{-1.0, -1.0};  // lines that meet corners go on through them
constexpr double LeastShare = 0.999;  // of the mean residence; even flow along an axis has exactly the mean
constexpr double MiddlePart = 0.25;   // of a cell, to each side of its centre
constexpr CellId EveryCellBelow = 2602;  // grids of fewer cells start a line in every one

/// Numbers that a line gives its cells.
struct CellPair {
    int injector, producer, connection;
};

void clearMaps(CellId cells, DiagnosticMaps& maps) {
    for (CellArray<double>* times : {&maps.timeFromInjector, &maps.timeToProducer, &maps.timeSum})
        times->assign(cells, UnreachedTime);
    for (CellArray<int>* wells : {&maps.injector, &maps.producer, &maps.connection}) wells->assign(cells, 0);
}

/// Pore volume over the flow through the cell, days: how long it is held by the lines that cross it, on the
/// mean.
double meanResidence(const TraceCell& cell, double poreVolume) {
    double in = 0.0;
    double out = 0.0;
    for (std::size_t f = 0; f < cell.face.size(); ++f) {
        const double outward = f % 2 == 1 ? cell.face[f] : -cell.face[f];
        (outward > 0.0 ? out : in) += std::abs(outward);
    }
    return poreVolume / std::max(in, out);
}

/// What a line is compared with.
struct DiagnosticField {
    const TraceField& field;
    const CellArray<double>& poreVolume;
};

/// Times in the middle of the way through a cell: of the line that starts in its centre, else the mean over
/// the lines that pass near it, by the days that they take through the cell. Empty where the smallest are
/// wanted.
struct TimeSums {
    CellArray<double> days, fromInjector, toProducer;
    CellArray<std::uint8_t> started;
};

void clearSums(CellId cells, TimeSums& sums) {
    for (CellArray<double>* sum : {&sums.days, &sums.fromInjector, &sums.toProducer}) sum->assign(cells, 0.0);
    sums.started.assign(cells, 0);
}

/// The chord through the cell has its middle in the middle part of the cell; in the cells of its wells a line
/// begins and ends anywhere. A line beside a closed side goes on along it, late in every cell.
bool passesMiddle(const StreamlineRecord& record, std::size_t n) {
    if (n == 1 || n == at(record.nodeCount)) return true;
    const std::size_t axisOfEntry = (record.NodeExitFace[n - 1] - 1U) / 2U;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const double before = record.NodeLocalPoint[n - 1][axis];
        const double entry = axis == axisOfEntry ? 1.0 - before : before;
        if (std::abs(0.5 * (entry + record.NodeLocalPoint[n][axis]) - 0.5) > MiddlePart) return false;
    }
    return true;
}

void addToSums(const StreamlineRecord& record, std::size_t n, bool starts, TimeSums& sums) {
    const CellId cell = record.NodeCell[n];
    if (sums.started[cell] != 0) return;
    if (starts) sums.days[cell] = sums.fromInjector[cell] = sums.toProducer[cell] = 0.0;
    sums.started[cell] = starts ? 1 : 0;
    const double days = record.NodeTof[n] - record.NodeTof[n - 1];
    const double middle = 0.5 * (record.NodeTof[n] + record.NodeTof[n - 1]);
    sums.days[cell] += days;
    sums.fromInjector[cell] += days * middle;
    sums.toProducer[cell] += days * (record.NodeTof[at(record.nodeCount)] - middle);
}

/// Means in place of the smallest times.
void takeMeans(const TimeSums& sums, DiagnosticMaps& maps) {
    for (CellId cell = 1; cell <= sums.days.count(); ++cell) {
        if (!(sums.days[cell] > 0.0)) continue;
        maps.timeFromInjector[cell] = sums.fromInjector[cell] / sums.days[cell];
        maps.timeToProducer[cell] = sums.toProducer[cell] / sums.days[cell];
    }
}

/// The line speaks for its start cell and for the cells that it holds for their mean residence; one that
/// cuts off a corner comes early, and tells little of the cell. Such a cell may still start a line.
void markLine(const DiagnosticField& on, CellId start, const StreamlineRecord& record, const CellPair& pair,
              CellArray<std::uint8_t>& visited, TimeSums& sums, DiagnosticMaps& maps) {
    const bool means = !sums.days.empty();
    const double total = record.NodeTof[at(record.nodeCount)];
    for (std::size_t n = 1; n <= at(record.nodeCount); ++n) {
        const CellId cell = record.NodeCell[n];
        const double time = record.NodeTof[n];
        const double mean = meanResidence(on.field.cells[at(cell)], on.poreVolume[cell]);
        const bool isShort = time - record.NodeTof[n - 1] < LeastShare * mean;
        if (cell != start && (isShort || (means && !passesMiddle(record, n)))) {
            visited[cell] = maps.timeFromInjector[cell] < UnreachedTime ? 1 : 0;
            continue;
        }
        if (means) addToSums(record, n, cell == start, sums);
        maps.timeFromInjector[cell] = std::min(maps.timeFromInjector[cell], time);
        maps.timeToProducer[cell] = std::min(maps.timeToProducer[cell], total - time);
        maps.injector[cell] = pair.injector;
        maps.producer[cell] = pair.producer;
        maps.connection[cell] = pair.connection;
    }
}

struct TimeMapRow {
    OutputFile zone, list;
    CellArray<double> DiagnosticMaps::*values;
};
constexpr TimeMapRow TimeMaps[] = {
    {OutputFile::TauInjZone, OutputFile::TauInjList, &DiagnosticMaps::timeFromInjector},
    {OutputFile::TauPrdZone, OutputFile::TauPrdList, &DiagnosticMaps::timeToProducer},
    {OutputFile::TauSumZone, OutputFile::TauSumList, &DiagnosticMaps::timeSum}};

struct WellMapRow {
    OutputFile zone;
    CellArray<int> DiagnosticMaps::*values;
};
constexpr WellMapRow WellMaps[] = {{OutputFile::PrdCxnZone, &DiagnosticMaps::producer},
                                   {OutputFile::InjCxnZone, &DiagnosticMaps::injector},
                                   {OutputFile::CxnCxnZone, &DiagnosticMaps::connection}};

struct WellListRow {
    OutputFile list;
    CellArray<int> DiagnosticMaps::*values;
};
constexpr WellListRow WellLists[] = {{OutputFile::PrdCxnList, &DiagnosticMaps::producer},
                                     {OutputFile::InjCxnList, &DiagnosticMaps::injector}};

void writeZoneFile(const Simulation& s, OutputFile file, const CellValue& value) {
    const ZoneNodes nodes = zoneNodes(s.options);
    std::FILE* stream = openBeside(s.console, s.outputs, file);
    const double end = s.clock.time + s.clock.dt;  // of the step whose lines the maps show
    const MapPart part = mainPart(s.grid);
    writeBlockZone(
        stream, part.grid(), nodes, [&](CellId cell) { return value(part.cellOf(cell)); }, end,
        rowOf(file).title);
    closeWhole(s.console, stream);
}

void writeZones(const Simulation& s) {
    const DiagnosticMaps& maps = s.lines.diagnostics;
    for (const TimeMapRow& row : TimeMaps)
        writeZoneFile(s, row.zone, [&](CellId cell) { return (maps.*row.values)[cell]; });
    for (const WellMapRow& row : WellMaps)
        writeZoneFile(s, row.zone, [&](CellId cell) { return (maps.*row.values)[cell]; });
}

template <class Value>
void writeList(const Simulation& s, OutputFile file, const CellArray<Value>& values) {
    NumberWriter writer;
    writer.file = openBeside(s.console, s.outputs, file);
    for (const Value value : values.cells().subspan(static_cast<std::size_t>(matrixCells(s.grid)))) {
        putNumber(writer, value);
        put(writer, "\n");
    }
    flush(writer);
    closeWhole(s.console, writer.file);
}

void writeLists(const Simulation& s) {
    const DiagnosticMaps& maps = s.lines.diagnostics;
    for (const TimeMapRow& row : TimeMaps) writeList(s, row.list, maps.*row.values);
    for (const WellListRow& row : WellLists) writeList(s, row.list, maps.*row.values);
}

/// The field of the step where it is one of cubes already, otherwise one made for the purpose.
const TraceField& referenceField(const Simulation& s, TraceField& own) {
    if (s.lines.field.trace.referenceCube) return s.lines.field.trace;
    RunOptions options = s.options;
    options.cornerPointTracing = true;
    buildTraceField(options, s.grid, s.state, s.velocity, s.wells, s.tags, s.exitFlags, own);
    return own;
}

}  // namespace

int traceDiagnostics(const GridModel& grid, const TraceField& referenceField,
                     const CellArray<double>& poreVolume, const WellRecord& wells, const PairTable& pairs,
                     int nodes, bool means, DiagnosticMaps& maps) {
    clearMaps(grid.NCELLS, maps);
    CellArray<std::uint8_t> visited;
    visited.assign(grid.NCELLS, 0);
    CellLineLegs legs;
    StreamlineRecord record;
    sizeLegs(nodes, legs);
    sizeRecord(nodes, record);
    const DiagnosticField on{referenceField, poreVolume};
    TimeSums sums;
    if (means) clearSums(grid.NCELLS, sums);
    int lines = 0;
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        if (isMatrixCell(grid, cell)) continue;
        if (grid.NCELLS >= EveryCellBelow && visited[cell] != 0) continue;
        ++lines;
        traceThroughCell(grid, referenceField, poreVolume, wells, cell, visited, Nowhere, legs, record);
        if (record.status != TraceStatus::ReachedWell) continue;
        const int injector = injectorIndex(wells, pairs, record.injector);
        const int producer = producerIndex(wells, pairs, record.producer);
        markLine(on, cell, record, {injector, producer, connectionNumber(pairs, injector, producer)}, visited,
                 sums, maps);
    }
    takeMeans(sums, maps);
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell)
        if (maps.timeFromInjector[cell] < UnreachedTime)
            maps.timeSum[cell] = maps.timeFromInjector[cell] + maps.timeToProducer[cell];
    return lines;
}

void runDiagnostics(Simulation& simulation) {
    Simulation& s = simulation;
    const double start = wallSeconds();
    lineToScreen(s.console, OpeningArrow);
    lineToScreen(s.console, "Streamline-Based Diagnostic Function is called...");
    TraceField own;
    const int lines =
        traceDiagnostics(s.grid, referenceField(s, own), s.state.PoreVolume, s.wells, s.lines.pairs,
                         s.lines.nodeCapacity, s.options.meanTimeMaps, s.lines.diagnostics);
    if (isOn(s.options, OutputSwitch::Tecplot)) writeZones(s);
    writeLists(s);
    both(s.console, "Number of SLine traced : {}", lines);
    both(s.console, "time elapsed output TOF: {}", number(wallSeconds() - start));
    lineToScreen(s.console, ClosingArrow);
}

void writeRateAllocation(const Simulation& simulation) {
    const PairTable& pairs = simulation.lines.pairs;
    NumberWriter writer;
    writer.file = openBeside(simulation.console, simulation.outputs, OutputFile::RunRateAllocation);
    int row = 0;
    for (int i = 1; i <= pairs.injectors; ++i)
        for (int p = 1; p <= pairs.producers; ++p) {
            const int pair = connectionNumber(pairs, i, p);
            put(writer, fmt::format("{:>8} {:>8} ", ++row, pair));
            putNumber(writer, pairs.allocation[at(pair) - 1]);
            put(writer, "\n");
        }
    flush(writer);
    closeWhole(simulation.console, writer.file);
}

}  // namespace kvr
