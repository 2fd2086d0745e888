#include "streamline/diagnostics/flow_diagnostics.hpp"

#include "base/arrow_rules.hpp"
#include "base/index.hpp"
#include "base/number_writer.hpp"
#include "base/stopwatch.hpp"
#include "base/written_files.hpp"
#include "report/block_zone.hpp"
#include "streamline/tracing/cell_line.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr StandStill Nowhere{-1.0, -1.0};  // lines that meet corners go on through them
constexpr double LeastShare = 0.999;  // of the mean residence; even flow along an axis has exactly the mean
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

/// Times in the middle of the way through a cell, by the days that the lines take through it.
struct TimeSums {
    CellArray<double> days, fromInjector, toProducer;
};

void addToSums(const StreamlineRecord& record, TimeSums& sums) {
    if (sums.days.empty()) return;
    const double total = record.NodeTof[at(record.nodeCount)];
    for (std::size_t n = 1; n <= at(record.nodeCount); ++n) {
        const CellId cell = record.NodeCell[n];
        const double days = record.NodeTof[n] - record.NodeTof[n - 1];
        const double middle = 0.5 * (record.NodeTof[n] + record.NodeTof[n - 1]);
        sums.days[cell] += days;
        sums.fromInjector[cell] += days * middle;
        sums.toProducer[cell] += days * (total - middle);
    }
}

/// Means in place of the smallest times of the cells that a line speaks for.
void takeMeans(const TimeSums& sums, DiagnosticMaps& maps) {
    for (CellId cell = 1; cell <= sums.days.count(); ++cell) {
        if (!(sums.days[cell] > 0.0) || !(maps.timeFromInjector[cell] < UnreachedTime)) continue;
        maps.timeFromInjector[cell] = sums.fromInjector[cell] / sums.days[cell];
        maps.timeToProducer[cell] = sums.toProducer[cell] / sums.days[cell];
    }
}

/// The line speaks for its start cell and for the cells that it holds for their mean residence; one that
/// cuts off a corner comes early, and tells little of the cell. Such a cell may still start a line.
void markLine(const DiagnosticField& on, CellId start, const StreamlineRecord& record, const CellPair& pair,
              CellArray<std::uint8_t>& visited, DiagnosticMaps& maps) {
    const double total = record.NodeTof[at(record.nodeCount)];
    for (std::size_t n = 1; n <= at(record.nodeCount); ++n) {
        const CellId cell = record.NodeCell[n];
        const double time = record.NodeTof[n];
        const double mean = meanResidence(on.field.cells[at(cell)], on.poreVolume[cell]);
        if (cell != start && time - record.NodeTof[n - 1] < LeastShare * mean) {
            visited[cell] = maps.timeFromInjector[cell] < UnreachedTime ? 1 : 0;
            continue;
        }
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
    writeBlockZone(stream, s.grid, nodes, value, end, rowOf(file).title);
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
    for (const Value value : values.cells()) {
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
    if (means)
        for (CellArray<double>* sum : {&sums.days, &sums.fromInjector, &sums.toProducer})
            sum->assign(grid.NCELLS, 0.0);
    int lines = 0;
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        if (grid.NCELLS >= EveryCellBelow && visited[cell] != 0) continue;
        ++lines;
        traceThroughCell(grid, referenceField, poreVolume, wells, cell, visited, Nowhere, legs, record);
        if (record.status != TraceStatus::ReachedWell) continue;
        const int injector = injectorIndex(wells, pairs, record.injector);
        const int producer = producerIndex(wells, pairs, record.producer);
        markLine(on, cell, record, {injector, producer, connectionNumber(pairs, injector, producer)}, visited,
                 maps);
        addToSums(record, sums);
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
