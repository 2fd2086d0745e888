#include "run/rewind.hpp"

#include "base/stopwatch.hpp"
#include "base/written_files.hpp"
#include "eclipse/file_failure.hpp"
#include "eclipse/output_stage.hpp"
#include "pressure/velocity.hpp"
#include "report/co2_stores.hpp"
#include "report/material_balance.hpp"
#include "report/region_balance.hpp"
#include "report/report_output.hpp"
#include "report/summary_table.hpp"
#include "report/well_tables.hpp"
#include "run/banners.hpp"
#include "run/start_up.hpp"
#include "run/status_line.hpp"
#include "run/step_level.hpp"
#include "streamline/streamline_step.hpp"

namespace kvr {

namespace {

/// Files that a run adds to step by step.
constexpr OutputFile StepFiles[] = {
    OutputFile::TPlotPoil,   OutputFile::TPlotSwat,     OutputFile::TPlotSoil,    OutputFile::TPlotSgas,
    OutputFile::TPlotRs,     OutputFile::TPlotTracer,   OutputFile::ExclGridPrs,  OutputFile::ExclGridSat,
    OutputFile::ExclWell,    OutputFile::ExclWellBlk,   OutputFile::TPlotWellBlk, OutputFile::TPlotWellRate,
    OutputFile::RunRecovery, OutputFile::RunProduction, OutputFile::RunWct,
};

/// Working records as they stand in a new process; what they hold of the last run must not reach the next.
void renewWork(Simulation& s) {
    s.timeLevel = {};
    s.iterationStart = {};
    s.timeLevelWells = {};
    s.pressure = {};
    s.pressureWork = {};
    s.implicit = {};
    s.velocity = {};
    s.stepLevel = {};
    s.control = {};
    s.launch = {};
    s.tags = {};
    s.exitFlags = {};
    s.mapping = {};
    s.lines = {};
    s.flatBedValue = -1.0;
    s.outside.modelRead = false;  // transmissibilities of an outside run follow its permeability
}

void allocateWork(Simulation& s) {
    allocateStreamlines(s);
    AllocateVelocity(s.console, s.grid.NCELLS, s.connections.flowDirections, needsFaceVelocity(s.options),
                     s.velocity);
    s.velocity.CellFaceFlux = s.matchStart.level.faceFlux;
}

void rewindClock(const RunClock& start, RunClock& clock) {
    const int iteration = clock.hmIteration;
    const double lastDt = clock.dt;
    clock = start;
    clock.hmIteration = iteration;
    clock.workDt = lastDt;
}

void renewFiles(Simulation& s) {
    for (const OutputFile file : StepFiles) replaceOutput(s.console, file, s.outputs);
    closeSummaryTable(s);
    unwatchFile(s.console, s.eclipse.rft.file);
    closeOrStop(s.console, s.eclipse.rft);
    s.eclipse = {};
    const int signal = s.course.endSignal;
    s.course = {};
    s.course.endSignal = signal;
    s.balance = {};
}

/// First rows of the tables, and what viewers read of time zero.
void startReports(Simulation& s) {
    reportOutput(s, 0, s.schedule.endTime);
    startWellTables(s);
    advanceBalance(s, 0.0);
    ReportMBE(s);
    reportRegions(s);
    reportStores(s);
    startEclipseFiles(s);
    startSummaryTable(s);
    checkWritten(s.console);
}

}  // namespace

void keepRunStart(Simulation& s) {
    keepStepLevel(s, s.matchStart.level);
    s.matchStart.solverPhaseName = s.options.solverPhaseName;
}

void rewindRun(Simulation& s) {
    const StageTimer timer(s.times.initialisation);
    s.options.solverPhaseName = s.matchStart.solverPhaseName;
    renewWork(s);
    RunClock clock = s.clock;
    rewindClock(s.matchStart.level.clock, clock);
    returnToStepLevel(s.matchStart.level, s);
    s.clock = clock;
    allocateWork(s);
    s.grid.smoothingApplied = false;
    conditionGeometry(s);
    applyFaultMultipliers(1, s);
    renewFiles(s);
    printWellBanner(s.console);
    rebuildWells(1, s);
    startReports(s);
    s.toldHundredth = 0;
    s.loopStart = wallSeconds();
}

}  // namespace kvr
