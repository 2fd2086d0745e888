#include "report/report_output.hpp"

#include "base/constants.hpp"
#include "report/block_zone.hpp"
#include "report/point_file.hpp"
#include "report/slices.hpp"

#include <algorithm>

namespace kvr {

namespace {

constexpr double EndFilesTimeLeft = 1.0;  // days; less than this to the end of the run writes the end files

/// Rs in Mscf/stb, as decks and reports give it.
CellArray<double> reportedRs(const CellArray<double>& Rs) {
    CellArray<double> reported = Rs;
    for (double& value : reported.slots) value *= GasRatioFactor;
    return reported;
}

void addZones(const Simulation& run) {
    const CellState& state = run.state;
    const ZoneNodes nodes = run.options.cornerPointHiRes ? ZoneNodes::PerCell : ZoneNodes::Shared;
    const auto add = [&](OutputFile file, const CellArray<double>& values, std::string_view title) {
        writeBlockZone(stream(run.outputs, file), run.grid, nodes, values, run.clock.time, title);
    };
    lineToBoth(run.console, "Information Added for poil,ssat.plt");
    add(OutputFile::TPlotPoil, state.Pressure, "p<sub>o</sub>");
    add(OutputFile::TPlotSwat, state.Sw, "S<sub>w</sub>");
    add(OutputFile::TPlotSoil, state.So, "S<sub>o</sub>");
    if (run.options.hasGas) {
        add(OutputFile::TPlotSgas, state.Sg, "S<sub>g</sub>");
        add(OutputFile::TPlotRs, reportedRs(state.Rs), "R<sub>s</sub>");
    }
    const int tracers = std::min(run.options.tracerCount, state.tracer.width);
    if (run.options.tracerActive && tracers > 0)
        writeBlockZoneMulti(stream(run.outputs, OutputFile::TPlotTracer), run.grid, nodes, state.tracer,
                            tracers, run.clock.time, "TracerConcentration");
}

void addSlices(const Simulation& run) {
    const CellState& state = run.state;
    std::FILE* saturations = stream(run.outputs, OutputFile::ExclGridSat);
    std::FILE* pressures = stream(run.outputs, OutputFile::ExclGridPrs);
    const double time = run.clock.time;
    lineToBoth(run.console, "Information Added for XXX.xls");
    writeSlices(saturations, run.grid, state.So, time, "SOIL_Frac");
    writeSlices(saturations, run.grid, state.Sw, time, "SWAT_Frac");
    writeSlices(pressures, run.grid, state.Pressure, time, "Pres_Frac");
    if (run.options.hasGas) writeSlices(saturations, run.grid, state.Sg, time, "SGAS_Frac");
}

void replacePointFile(const Simulation& run, std::string_view name, const CellArray<double>& values,
                      std::string_view title) {
    std::FILE* file = openForReplace(run.console, outputPath(run.outputs, name));
    writePointFile(file, run.grid, values, title);
    std::fclose(file);
    both(run.console, "File Replaced : {}", name);
}

}  // namespace

void reportOutput(Simulation& simulation, int /*stepNumber*/, double timeLeft) {
    const RunOptions& options = simulation.options;
    if (options.outputPlt == "Yes") addZones(simulation);
    if (options.outputXls == "Yes") addSlices(simulation);
    if (options.outputKvrView == "Yes" && timeLeft < EndFilesTimeLeft) {
        replacePointFile(simulation, "KVR_Run_EndSwat.out", simulation.state.Sw, "Saturation            ");
        replacePointFile(simulation, "KVR_Run_Pressure.out", simulation.state.Pressure, "pressure          ");
    }
    flushOutputs(simulation.outputs);
}

}  // namespace kvr
