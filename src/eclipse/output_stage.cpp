#include "eclipse/output_stage.hpp"

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
#include "report/well_figures.hpp"

namespace kvr {

namespace {

/// The part of the schedule in force; none before the schedule has any.
ScheduleStep entryInForce(const Simulation& run) {
    const auto entry = static_cast<std::size_t>(run.clock.wellChangeIndex);
    return entry < run.schedule.steps.size() ? run.schedule.steps[entry] : ScheduleStep{};
}

void writeStep(Simulation& run) {
    writeRestartFile(run.console, run.options, run.clock, run.grid, run.state, run.lines.diagnostics);
    if (!isOn(run.options, OutputSwitch::Eclipse)) return;
    writeSummaryStep(run.console, run.options, run.clock,
                     summaryFigures(run.units, run.clock, entryInForce(run), run.wells, run.eclipse.wellCount,
                                    run.eclipse.totals));
}

}  // namespace

void startEclipseFiles(Simulation& simulation) {
    const RunOptions& options = simulation.options;
    const std::vector<std::string> wells = runWellNames(simulation.schedule, simulation.wells);
    simulation.eclipse.wellCount = wells.size();
    writeLineSpec(simulation.console, options, simulation.grid, wells, simulation.eclipse.paths);
    if (options.traceFromRestart) return;
    if (options.deleteEclipseRun) clear_ECLIPSE_Data(simulation.console, runFile(options, ""));
    writeInitFile(simulation.console, options, simulation.units, simulation.grid, simulation.connections);
    writeSummarySpec(simulation.console, options, simulation.grid, wells);
    writeGridFile(simulation.console, options, simulation.grid);
    simulation.clock.reportIndex = 0;
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
    if (options.deleteEclipseRun) clear_ECLIPSE_Data(simulation.console, runFile(options, ""));
    runOutsideCommand(simulation.console, options);
    input_GRID(simulation.console, options, simulation.units, options.headerName, simulation.grid);
    input_RST2Tecplot(simulation.console, options, simulation.grid, options.headerName, 0, simulation.clock);
}

void finishEclipseFiles(Simulation& simulation) {
    closeOrStop(simulation.console, simulation.eclipse.rft);
    if (!simulation.options.traceFromRestart) Output_ECLEND_Normal(simulation.console, simulation.options);
}

}  // namespace kvr
