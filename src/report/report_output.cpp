#include "report/report_output.hpp"

#include "base/constants.hpp"
#include "base/written_files.hpp"
#include "report/block_zone.hpp"
#include "report/co2_stores.hpp"
#include "report/map_part.hpp"
#include "report/point_file.hpp"
#include "report/slices.hpp"

#include <algorithm>
#include <span>
#include <string>

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
constexpr FieldRow MatrixZoneRows[] = {
    {OutputFile::MatrixPoil, "", &CellState::Pressure},
    {OutputFile::MatrixSwat, "", &CellState::Sw},
    {OutputFile::MatrixSoil, "", &CellState::So},
    {OutputFile::MatrixSgas, "", &CellState::Sg, true},
    {OutputFile::MatrixRs, "", &CellState::Rs, true, GasRatioFactor},
};
constexpr FieldRow SliceRows[] = {
    {OutputFile::ExclGridSat, "SOIL_Frac", &CellState::So},
    {OutputFile::ExclGridSat, "SWAT_Frac", &CellState::Sw},
    {OutputFile::ExclGridPrs, "Pres_Frac", &CellState::Pressure},
    {OutputFile::ExclGridSat, "SGAS_Frac", &CellState::Sg, true},
};
constexpr FieldRow MatrixSliceRows[] = {
    {OutputFile::ExclGridSat, "SOIL_Mtrx", &CellState::So},
    {OutputFile::ExclGridSat, "SWAT_Mtrx", &CellState::Sw},
    {OutputFile::ExclGridPrs, "Pres_Mtrx", &CellState::Pressure},
    {OutputFile::ExclGridSat, "SGAS_Mtrx", &CellState::Sg, true},
};

bool isShown(const FieldRow& row, const Simulation& run) {
    return !row.ofGas || run.options.hasGas;
}

void addZone(const FieldRow& row, const Simulation& run, const MapPart& part, std::FILE* file) {
    const CellArray<double>& field = run.state.*row.field;
    writeBlockZone(
        file, part.grid(), zoneNodes(run.options),
        [&](CellId cell) { return field[part.cellOf(cell)] * row.factor; }, run.clock.time,
        rowOf(row.file).title);
}

void addZones(const Simulation& run, const MapPart& part) {
    lineToBoth(run.console, rowOf(OutputFile::TPlotPoil).told);
    for (const FieldRow& row : ZoneRows)
        if (isShown(row, run)) addZone(row, run, part, stream(run.outputs, row.file));
    const ComponentState& components = run.components.stage.cells;
    if (components.count > 0)
        writeBlockZoneMulti(stream(run.outputs, OutputFile::TPlotZmf), run.grid, zoneNodes(run.options),
                            components.z, components.count, run.clock.time,
                            rowOf(OutputFile::TPlotZmf).title);
    const int tracers = std::min(run.options.tracerCount, run.state.tracer.width);
    if (run.options.tracerActive && tracers > 0)
        writeBlockZoneMulti(stream(run.outputs, OutputFile::TPlotTracer), run.grid, zoneNodes(run.options),
                            run.state.tracer, tracers, run.clock.time, rowOf(OutputFile::TPlotTracer).title);
    addStoreZones(run);
}

/// Maps of the matrix stand in files of their own; the first ones take the place of an earlier run's.
void addMatrixZones(const Simulation& run, const MapPart& part) {
    for (const FieldRow& row : MatrixZoneRows) {
        if (!isShown(row, run)) continue;
        const std::string path = outputPath(run.outputs, outputName(row.file));
        const bool first = run.clock.time == 0.0;
        std::FILE* file = first ? openForReplace(run.console, path) : openForAppend(run.console, path);
        const long before = first ? 0 : lengthOf(file);
        addZone(row, run, part, file);
        closeAppended(run.console, file, before);
    }
}

void addSlices(const Simulation& run, const MapPart& part, std::span<const FieldRow> rows) {
    CellArray<double> store;
    for (const FieldRow& row : rows)
        if (isShown(row, run))
            writeSlices(stream(run.outputs, row.file), part.grid(), part.values(run.state.*row.field, store),
                        run.clock.time, row.label);
}

void replaceEndFile(const Simulation& run, const MapPart& part, OutputFile name,
                    const CellArray<double>& values) {
    CellArray<double> store;
    std::FILE* file = openBeside(run.console, run.outputs, name);
    writePointFile(file, part.grid(), part.values(values, store), rowOf(name).title);
    closeWhole(run.console, file);
    lineToBoth(run.console, rowOf(name).told);
}

void addMatrixMaps(const Simulation& run) {
    const MapPart matrix = matrixPart(run.grid);
    if (isOn(run.options, OutputSwitch::Tecplot)) addMatrixZones(run, matrix);
    if (isOn(run.options, OutputSwitch::Excel)) addSlices(run, matrix, MatrixSliceRows);
}

}  // namespace

void reportOutput(Simulation& simulation, int /*stepNumber*/, double timeLeft) {
    const RunOptions& options = simulation.options;
    const MapPart part = mainPart(simulation.grid);
    if (isOn(options, OutputSwitch::Tecplot)) addZones(simulation, part);
    if (isOn(options, OutputSwitch::Excel)) {
        lineToBoth(simulation.console, rowOf(OutputFile::ExclGridPrs).told);
        addSlices(simulation, part, SliceRows);
    }
    if (simulation.grid.dual.isSet) addMatrixMaps(simulation);
    if (isOn(options, OutputSwitch::View) && timeLeft < EndFilesTimeLeft) {
        replaceEndFile(simulation, part, OutputFile::RunEndSwat, simulation.state.Sw);
        replaceEndFile(simulation, part, OutputFile::RunPressure, simulation.state.Pressure);
    }
    flushOutputs(simulation.outputs);
}

}  // namespace kvr
