#include "report/report_output.hpp"

#include "base/constants.hpp"
#include "base/written_files.hpp"
#include "report/block_zone.hpp"
#include "report/co2_stores.hpp"
#include "report/point_file.hpp"
#include "report/slices.hpp"

#include <algorithm>

namespace kvr {

namespace {

constexpr double EndFilesTimeLeft = 1.0;  // days; less than this to the end of the run writes the end files

/// One map of the Tecplot files or one block of the sheets.
struct FieldRow {
    OutputFile file;
    std::string_view label;  // of a block; zones have the title of their file
    CellArray<double> CellState::*field;
    bool ofGas = false;   // only in runs with gas
    double factor = 1.0;  // from the value inside to the reported one
};

constexpr FieldRow ZoneRows[] = {
    {OutputFile::TPlotPoil, "", &CellState::Pressure},
    {OutputFile::TPlotSwat, "", &CellState::Sw},
    {OutputFile::TPlotSoil, "", &CellState::So},
    {OutputFile::TPlotSgas, "", &CellState::Sg, true},
    {OutputFile::TPlotRs, "", &CellState::Rs, true, GasRatioFactor},
};
constexpr FieldRow SliceRows[] = {
    {OutputFile::ExclGridSat, "SOIL_Frac", &CellState::So},
    {OutputFile::ExclGridSat, "SWAT_Frac", &CellState::Sw},
    {OutputFile::ExclGridPrs, "Pres_Frac", &CellState::Pressure},
    {OutputFile::ExclGridSat, "SGAS_Frac", &CellState::Sg, true},
};

void addZones(const Simulation& run) {
    const ZoneNodes nodes = zoneNodes(run.options);
    lineToBoth(run.console, rowOf(OutputFile::TPlotPoil).told);
    for (const FieldRow& row : ZoneRows) {
        if (row.ofGas && !run.options.hasGas) continue;
        const CellArray<double>& field = run.state.*row.field;
        writeBlockZone(
            stream(run.outputs, row.file), run.grid, nodes,
            [&](CellId cell) { return field[cell] * row.factor; }, run.clock.time, rowOf(row.file).title);
    }
    const ComponentState& components = run.components.stage.cells;
    if (components.count > 0)
        writeBlockZoneMulti(stream(run.outputs, OutputFile::TPlotZmf), run.grid, nodes, components.z,
                            components.count, run.clock.time, rowOf(OutputFile::TPlotZmf).title);
    const int tracers = std::min(run.options.tracerCount, run.state.tracer.width);
    if (run.options.tracerActive && tracers > 0)
        writeBlockZoneMulti(stream(run.outputs, OutputFile::TPlotTracer), run.grid, nodes, run.state.tracer,
                            tracers, run.clock.time, rowOf(OutputFile::TPlotTracer).title);
    addStoreZones(run);
}

void addSlices(const Simulation& run) {
    lineToBoth(run.console, rowOf(OutputFile::ExclGridPrs).told);
    for (const FieldRow& row : SliceRows)
        if (!row.ofGas || run.options.hasGas)
            writeSlices(stream(run.outputs, row.file), run.grid, run.state.*row.field, run.clock.time,
                        row.label);
}

void replaceEndFile(const Simulation& run, OutputFile name, const CellArray<double>& values) {
    std::FILE* file = openBeside(run.console, run.outputs, name);
    writePointFile(file, run.grid, values, rowOf(name).title);
    closeWhole(run.console, file);
    lineToBoth(run.console, rowOf(name).told);
}

}  // namespace

void reportOutput(Simulation& simulation, int /*stepNumber*/, double timeLeft) {
    const RunOptions& options = simulation.options;
    if (isOn(options, OutputSwitch::Tecplot)) addZones(simulation);
    if (isOn(options, OutputSwitch::Excel)) addSlices(simulation);
    if (isOn(options, OutputSwitch::View) && timeLeft < EndFilesTimeLeft) {
        replaceEndFile(simulation, OutputFile::RunEndSwat, simulation.state.Sw);
        replaceEndFile(simulation, OutputFile::RunPressure, simulation.state.Pressure);
    }
    flushOutputs(simulation.outputs);
}

}  // namespace kvr
