#include "run/ix_trace.hpp"

#include "base/hard_stop.hpp"
#include "base/messages.hpp"
#include "base/written_files.hpp"
#include "deck/ix_deck.hpp"
#include "deck/options/finalise_options.hpp"
#include "deck/options/option_section.hpp"
#include "eclipse/activity_reader.hpp"
#include "eclipse/file_names.hpp"
#include "eclipse/grid_reader.hpp"
#include "eclipse/init_reader.hpp"
#include "eclipse/outside_head.hpp"
#include "eclipse/restart_velocity.hpp"
#include "fluid/table_checks.hpp"
#include "model/conditioning.hpp"
#include "pressure/velocity.hpp"
#include "report/material_balance.hpp"
#include "report/report_output.hpp"
#include "report/static_plots.hpp"
#include "report/summary_table.hpp"
#include "report/well_tables.hpp"
#include "run/closing_summary.hpp"
#include "run/deck_summary.hpp"
#include "run/run_files.hpp"
#include "streamline/streamline_step.hpp"

namespace kvr {

namespace {

constexpr int TracedRestart = 1;
constexpr int TracedLines = 1000;

void takeHead(const OutsideHead& head, Simulation& s) {
    if (!head.found) return;
    RunOptions& options = s.options;
    options.hasOil = head.hasOil;
    options.hasWater = head.hasWater;
    options.hasGas = s.fluids.hasGas = head.hasGas;
    options.startDay = s.clock.day = head.startDay;
    options.startMonth = s.clock.month = head.startMonth;
    options.startYear = s.clock.year = head.startYear;
}

/// Without a deck there are no tables of fluids: what a restart does not bring follows from the defaults, of
/// which the log alone tells.
void completeFluids(Simulation& s) {
    Console quiet = s.console;
    quiet.screen = nullptr;
    quiet.messages = nullptr;
    completeTables(quiet, s.options.maxRockTables, s.fluids);
}

/// Geometry, rock and connections. Permeabilities and porosities come first, for the connections to be made;
/// then the transmissibilities of the file replace them.
void readModel(Simulation& s) {
    const std::string& header = s.options.headerName;
    input_GRID(s.console, s.options, s.units, header, s.grid);
    if (s.grid.NCELLS == 0) {
        both(s.console, "ERROR :: NO GRID OF THE RUN TO TRACE IN :: {}",
             outsideFile(s.options, header, ".GRID"));
        hardStop(s.console);
    }
    takeHead(readOutsideHead(s.options, header), s);
    s.connections.Neighbour.assign(s.grid.NCELLS, FaceCount, 0);
    s.connections.Trans.assign(s.grid.NCELLS, FaceCount, 0.0);
    input_INIT_TRANS(s.console, s.options, s.units, header, s.grid, s.connections);
    CALCTRANS_STATICGEOPART(s.console, s.options, s.units, s.grid, s.connections);
    input_INIT_TRANS(s.console, s.options, s.units, header, s.grid, s.connections);
    input_ACTNUM_EGRID(s.console, s.options, header, s.grid);
    AllocateVelocity(s.console, s.grid.NCELLS, s.connections.flowDirections, needsFaceVelocity(s.options),
                     s.velocity);
}

/// Cells, wells and fluxes of the restart; its time is the end of the run.
void readField(Simulation& s) {
    completeFluids(s);
    allocateCellState(s.grid.NCELLS, s.options.tracerCount, s.state);
    const RestartReading read = input_RST2Velocity(s, s.options.headerName, TracedRestart);
    if (!read.found) {
        both(s.console, "ERROR :: NO RESTART OF THE RUN TO TRACE :: {}",
             outsideFile(s.options, s.options.headerName, ".X", TracedRestart));
        hardStop(s.console);
    }
    if (!read.hasFactors)
        warn(s.console,
             "WARNING :: The restart has no formation volume factors (BO, BW, BG), those of default tables "
             "serve");
    if (s.wells.wells.empty()) warn(s.console, "WARNING :: THE RESTART HAS NO WELLS, NO LINE STARTS");
    s.clock.endTime = s.schedule.endTime = read.time;
    s.clock.workDt = s.clock.dt;
    releaseConditioning(needsFaceVelocity(s.options), s.connections);
}

void setTraceOptions(Simulation& s) {
    RunOptions& options = s.options;
    setOptionDefaults(options);
    finaliseOptions(s.console, s.grid, s.fluids, s.schedule, options);
    options.outputPlt = "Yes";
    options.streamlineStart = "inj";
    options.traceMissed = "No";
    options.requestedLines = TracedLines;
}

void startReports(Simulation& s) {
    removeStaleFiles(s);
    allocateStreamlines(s);
    writeStaticPlots(s);
    reportOutput(s, 0, s.schedule.endTime);
    startWellTables(s);
    RESET_INITIAL_INPLACE(s);
    advanceBalance(s, 0.0);
    ReportMBE(s);
    checkWritten(s.console);
}

/// Rates of the wells at the time of the restart, whose way there is not known: totals stay at zero. They
/// come behind the lines, whose files are named by the step that the clock has not yet made.
void reportWellFlows(Simulation& s) {
    advanceCalendar(s.clock.workDt, s.clock);
    s.clock.time = s.clock.endTime;
    advanceBalance(s, 0.0);
    reportWells(s);
    startSummaryTable(s);
    noteCourse(s);
}

}  // namespace

void traceIxRun(Simulation& simulation) {
    simulation.options.debugOutput = true;
    simulation.options.componentCount = 0;
    simulation.options.traceFromRestart = true;
    readIxDeck(simulation.console, simulation.options);
    readModel(simulation);
    readField(simulation);
    setTraceOptions(simulation);
    tellDeckSummary(simulation);
    if (runsNothing(simulation.options)) return;
    startReports(simulation);
    simulation.clock.solverPhaseIndex = 1;
    simulation.clock.reportIndex = 1;
    StreamlineRestartStep(simulation, 0, 0, 0.0, 0.0);
    reportWellFlows(simulation);
    checkWritten(simulation.console);
}

}  // namespace kvr
