#include "eclipse/output_stage.hpp"

#include "base/end_signal.hpp"
#include "base/written_files.hpp"
#include "eclipse/end_file.hpp"
#include "eclipse/file_failure.hpp"
#include "eclipse/file_names.hpp"
#include "eclipse/grid_file.hpp"
#include "eclipse/grid_reader.hpp"
#include "eclipse/init_file.hpp"
#include "eclipse/line_files.hpp"
#include "eclipse/outside_command.hpp"
#include "eclipse/restart_file.hpp"
#include "eclipse/restart_plots.hpp"
#include "eclipse/rft_file.hpp"
#include "eclipse/summary_files.hpp"
#include "report/run_vectors.hpp"
#include "report/summary_table.hpp"
#include "report/well_figures.hpp"

#include <algorithm>

namespace kvr {

namespace {

/// The part of the schedule in force; none before the schedule has any.
const ScheduleStep& entryInForce(const Simulation& run) {
    static const ScheduleStep None;
    const ScheduleStep* const entry = scheduleInForce(run.schedule, run.clock);
    return entry == nullptr ? None : *entry;
}

bool isFixed(std::string_view mnemonic) {
    const auto& fixed = summaryVectors();
    return std::any_of(fixed.begin(), fixed.end(),
                       [mnemonic](const SummaryVector& row) { return row.mnemonic == mnemonic; });
}

/// A name of the deck, or its begin before an asterisk.
bool names(std::string_view pattern, std::string_view well) {
    const bool open = pattern.ends_with('*');
    if (open) pattern.remove_suffix(1);
    return open ? well.starts_with(pattern) : well == pattern;
}

bool isAsked(const SummaryRequest& request, std::string_view well) {
    return request.wells.empty() ||
           std::any_of(request.wells.begin(), request.wells.end(),
                       [well](const std::string& pattern) { return names(pattern, well); });
}

void ask(const AskedVector& vector, std::vector<AskedVector>& all) {
    const bool known = std::any_of(all.begin(), all.end(), [&vector](const AskedVector& row) {
        return row.mnemonic == vector.mnemonic && row.well == vector.well;
    });
    if (!known && !isFixed(vector.mnemonic)) all.push_back(vector);
}

void askFor(const SummaryRequest& request, const std::vector<std::string>& wells,
            std::vector<AskedVector>& all) {
    const RunVector* vector = vectorOf(request.mnemonic);
    if (vector == nullptr) return;
    const std::string_view unit = fieldUnit(vector->quantity);
    if (request.mnemonic.starts_with('F')) return ask({request.mnemonic, "", unit, 0}, all);
    for (std::size_t w = 0; w < wells.size(); ++w)
        if (isAsked(request, wells[w])) ask({request.mnemonic, wells[w], unit, w}, all);
}

/// ALL stands for every vector; for the observed ones in a deck with observed rates, those
/// of the tubing in one with tables for it.
std::vector<SummaryRequest> spelledOut(const std::vector<SummaryRequest>& requests, bool observed,
                                       bool tubing) {
    std::vector<SummaryRequest> all;
    for (const SummaryRequest& request : requests) {
        if (request.mnemonic != "ALL") {
            all.push_back(request);
            continue;
        }
        for (const RunVector& row : runVectors()) {
            if ((row.observed && !observed) || (row.ofTubing && !tubing)) continue;
            if (row.ofField) all.push_back({fmt::format("F{}", row.suffix), {}});
            if (row.ofWells) all.push_back({fmt::format("W{}", row.suffix), {}});
        }
    }
    return all;
}

std::vector<float> askedValues(const Simulation& run) {
    const StepFigures figures = vectorFigures(run);
    std::vector<float> values;
    for (const AskedVector& asked : run.eclipse.asked) {
        const WellFigures& figure = asked.well.empty() ? figures.field : figures.wells[asked.wellPlace];
        values.push_back(static_cast<float>(vectorOf(asked.mnemonic)->value(figures, figure)));
    }
    return values;
}

/// Nothing has flowed at time zero, whatever the wells are set to.
void clearRates(std::vector<SummaryFigures>& figures) {
    for (SummaryFigures& well : figures) well.oil = well.water = well.gas = 0.0;
}

void writeStep(Simulation& run) {
    writeRestartFile(run.console, run.options, run.clock, run.grid, run.state,
                     {run.units, run.connections, run.velocity}, run.lines.diagnostics,
                     run.components.stage.cells);
    writeSummaryStep(run.console, run.options, run.clock, run.eclipse.steps);
    run.eclipse.steps.clear();
}

}  // namespace

void takeSummaryStep(Simulation& run) {
    if (!isOn(run.options, OutputSwitch::Eclipse) || run.options.traceFromRestart) return;
    EclipseOutput& output = run.eclipse;
    std::vector<SummaryFigures> figures =
        summaryFigures(run.units, run.clock, entryInForce(run), run.wells, output.wellCount, output.totals);
    if (run.clock.reportIndex == 0) clearRates(figures);
    // Without vectors asked for a file holds its report alone.
    if (output.asked.empty()) output.steps.clear();
    output.steps.push_back(summaryValues(figures, askedValues(run)));
}

void startEclipseFiles(Simulation& simulation) {
    const RunOptions& options = simulation.options;
    const std::vector<std::string> wells = runWellNames(simulation.schedule, simulation.wells);
    simulation.eclipse.wellCount = wells.size();
    writeLineSpec(simulation.console, options, simulation.grid, wells, simulation.eclipse.paths);
    if (options.traceFromRestart) return;
    simulation.eclipse.begun = true;
    if (options.deleteEclipseRun) clear_ECLIPSE_Data(simulation.console, runFile(options, ""));
    writeInitFile(simulation.console, options, simulation.units, simulation.grid, simulation.connections);
    for (const SummaryRequest& request : spelledOut(simulation.summaryRequests, options.useHistoryControls,
                                                    !simulation.schedule.liftTables.empty()))
        askFor(request, wells, simulation.eclipse.asked);
    writeSummarySpec(simulation.console, options, simulation.grid, wells, simulation.eclipse.asked);
    writeGridFile(simulation.console, options, simulation.grid);
    simulation.clock.reportIndex = 0;
    takeSummaryStep(simulation);
    writeStep(simulation);
    simulation.clock.reportIndex = 1;
}

void reportEclipseFiles(Simulation& simulation) {
    if (simulation.options.traceFromRestart) return;
    addRftRecords(simulation.console, simulation.options, simulation.clock, simulation.grid, simulation.state,
                  simulation.wells, simulation.eclipse);
    writeStep(simulation);
}

void convertOutsideRun(Simulation& simulation) {
    const RunOptions& options = simulation.options;
    if (options.deleteEclipseRun)
        clear_ECLIPSE_Data(simulation.console, outsideFile(options, options.headerName, ""));
    lineToBoth(simulation.console, "Run Simulation by ECLIPSE");
    runOutsideCommand(simulation.console, options, options.headerName);
    if (endSignal() != 0) return;
    input_GRID(simulation.console, options, simulation.units, options.headerName, simulation.grid);
    input_RST2Tecplot(simulation.console, options, simulation.grid, options.headerName, 0, simulation.clock);
}

namespace {

/// An end file that stands there may be that of an outside run, of which a stop before the first file of this
/// run leaves nothing changed.
bool mayEnd(const Simulation& simulation) {
    const RunOptions& options = simulation.options;
    if (options.traceFromRestart || options.eclipseToTecplot || options.eclipseToIx || options.ixExtract)
        return false;
    return simulation.eclipse.begun || !fileExists(runFile(options, ".ECLEND"));
}

}  // namespace

void finishEclipseFiles(Simulation& simulation) {
    unwatchFile(simulation.console, simulation.eclipse.rft.file);
    closeOrStop(simulation.console, simulation.eclipse.rft);
    if (mayEnd(simulation))
        Output_ECLEND_Normal(simulation.console, simulation.options, simulation.messages,
                             simulation.course.endSignal != 0 ? 1 : 0);
}

}  // namespace kvr
