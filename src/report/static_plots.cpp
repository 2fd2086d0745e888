#include "report/static_plots.hpp"

#include "base/written_files.hpp"
#include "report/block_zone.hpp"
#include "report/map_part.hpp"
#include "report/point_file.hpp"

namespace kvr {

namespace {

using RunValue = double (*)(const Simulation&, CellId);

struct ZoneRow {
    OutputFile file;
    RunValue value;
};

// The high face of each axis: directions 2, 4 and 6.
constexpr ZoneRow ZoneRows[] = {
    {OutputFile::StaticLogKx, [](const Simulation& s, CellId c) { return plottedLog10(s.grid.PERMX[c]); }},
    {OutputFile::StaticLogKy, [](const Simulation& s, CellId c) { return plottedLog10(s.grid.PERMY[c]); }},
    {OutputFile::StaticLogKz, [](const Simulation& s, CellId c) { return plottedLog10(s.grid.PERMZ[c]); }},
    {OutputFile::StaticPorosity, [](const Simulation& s, CellId c) { return s.grid.PORO[c]; }},
    {OutputFile::StaticKx, [](const Simulation& s, CellId c) { return s.grid.PERMX[c]; }},
    {OutputFile::StaticKy, [](const Simulation& s, CellId c) { return s.grid.PERMY[c]; }},
    {OutputFile::StaticKz, [](const Simulation& s, CellId c) { return s.grid.PERMZ[c]; }},
    {OutputFile::StaticTransX, [](const Simulation& s, CellId c) { return s.connections.Trans(c, 2); }},
    {OutputFile::StaticTransY, [](const Simulation& s, CellId c) { return s.connections.Trans(c, 4); }},
    {OutputFile::StaticTransZ, [](const Simulation& s, CellId c) { return s.connections.Trans(c, 6); }},
};

void writeZones(const Simulation& run, const MapPart& part) {
    const ZoneNodes nodes = zoneNodes(run.options);
    for (const ZoneRow& row : ZoneRows) {
        const OutputRow& file = rowOf(row.file);
        std::FILE* stream = openBeside(run.console, run.outputs, row.file);
        writeBlockZone(
            stream, part.grid(), nodes, [&](CellId cell) { return row.value(run, part.cellOf(cell)); },
            run.clock.time, file.title);
        closeWhole(run.console, stream);
        if (!file.told.empty()) lineToLog(run.console, file.told);
    }
}

void writePoints(const Simulation& run, const MapPart& part) {
    const auto add = [&](OutputFile file, const CellArray<double>& values) {
        CellArray<double> store;
        writePointFile(stream(run.outputs, file), part.grid(), part.values(values, store), rowOf(file).title);
    };
    add(OutputFile::RunPermX, run.grid.PERMX);
    add(OutputFile::RunPermY, run.grid.PERMY);
    add(OutputFile::RunPermZ, run.grid.PERMZ);
    add(OutputFile::RunIniSwat, run.state.Sw);
    lineToLog(run.console, rowOf(OutputFile::RunIniSwat).told);
}

}  // namespace

void writeStaticPlots(const Simulation& simulation) {
    const MapPart part = mainPart(simulation.grid);
    if (isOn(simulation.options, OutputSwitch::Tecplot)) writeZones(simulation, part);
    if (isOn(simulation.options, OutputSwitch::View)) writePoints(simulation, part);
}

}  // namespace kvr
