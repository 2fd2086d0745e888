#include "run/start_up.hpp"

#include "base/end_signal.hpp"
#include "base/hard_stop.hpp"
#include "base/messages.hpp"
#include "base/stopwatch.hpp"
#include "base/threads.hpp"
#include "base/written_files.hpp"
#include "deck/deck_reader.hpp"
#include "deck/ix_deck.hpp"
#include "deck/native_deck.hpp"
#include "eclipse/activity_reader.hpp"
#include "eclipse/file_failure.hpp"
#include "eclipse/grid_reader.hpp"
#include "eclipse/init_reader.hpp"
#include "eclipse/output_stage.hpp"
#include "eclipse/outside_command.hpp"
#include "eclipse/outside_run.hpp"
#include "eclipse/restart_plots.hpp"
#include "eclipse/restart_velocity.hpp"
#include "fluid/component_equilibrium.hpp"
#include "fluid/equilibrium.hpp"
#include "fluid/initial_water.hpp"
#include "implicit/fully_implicit.hpp"
#include "model/block_grid.hpp"
#include "model/conditioning.hpp"
#include "model/multipliers.hpp"
#include "optimization/rate_optimization.hpp"
#include "pressure/component_step.hpp"
#include "pressure/properties.hpp"
#include "pressure/velocity.hpp"
#include "pressure/wells/aquifers.hpp"
#include "pressure/wells/well_controls.hpp"
#include "pressure/wells/well_heads.hpp"
#include "pressure/wells/well_rates.hpp"
#include "report/co2_stores.hpp"
#include "report/conditioned_rock.hpp"
#include "report/material_balance.hpp"
#include "report/region_balance.hpp"
#include "report/report_output.hpp"
#include "report/run_information.hpp"
#include "report/static_plots.hpp"
#include "report/summary_table.hpp"
#include "report/well_tables.hpp"
#include "run/banners.hpp"
#include "run/closing_summary.hpp"
#include "run/deck_summary.hpp"
#include "run/erase_script.hpp"
#include "run/input_detection.hpp"
#include "run/ix_trace.hpp"
#include "run/process.hpp"
#include "run/run_files.hpp"
#include "run/traced_step.hpp"
#include "run/unbuilt_features.hpp"
#include "streamline/streamline_step.hpp"
#include "streamline/tracing/cell_tags.hpp"

#include <algorithm>
#include <cstdlib>

namespace kvr {

namespace {

void resetCounters(RunClock& clock) {
    clock.hmIteration = 0;
    clock.stepCount = 0;
    clock.stepsSinceEvent = 0;
    clock.iteration = 0;
    clock.time = 0.0;
    clock.completedSteps = 1;
    clock.reportIndex = 1;
}

/// Along a row alone all that came into a line is what comes into it now.
void keepFrontsToRows(const Console& console, const GridModel& grid, RunOptions& options) {
    const int wide = (grid.NX > 1 ? 1 : 0) + (grid.NY > 1 ? 1 : 0) + (grid.NZ > 1 ? 1 : 0);
    std::vector<std::string>& words = options.solverPhaseName;
    if (options.componentCount == 0 || wide < 2 ||
        std::find(words.begin(), words.end(), "btf") == words.end())
        return;
    warn(console,
         "WARNING :: FRONTS OF COMPONENTS ARE TRACKED ALONG A ROW OF CELLS ALONE, HERE LINES ARE EXPLICIT");
    std::replace(words.begin(), words.end(), std::string("btf"), std::string("mas"));
}

void openInput(Simulation& simulation) {
    detectInput(simulation.console, simulation.command, simulation.options);
    simulation.times.cpuAtStart = static_cast<float>(cpuSeconds());
    if (simulation.options.checkOnly) return;
    simulation.outputs.prefix = simulation.options.outputPrefix;
    writeEraseScript(simulation.console, simulation.options.workingFolder, simulation.outputs.prefix);
    openOutputs(simulation.options.workingFolder, simulation.outputs, simulation.console);
    checkWritten(simulation.console);
    catchEndSignals();
}

void readInput(Simulation& simulation) {
    const StageTimer timer(simulation.times.deck);
    RunOptions& options = simulation.options;
    options.debugOutput = true;
    options.componentCount = 0;
    if (options.inputMode == input_mode::Reserved) normalStop();
    if (options.inputMode != input_mode::EclipseForm) refuseUnbuiltFeatures(simulation.console, options);
    if (options.inputMode == input_mode::NativeDeck)
        readNativeDeck(simulation);
    else
        readDeck(simulation);
    refuseUnbuiltFeatures(simulation.console, options);
    keepFrontsToRows(simulation.console, simulation.grid, options);
}

/// Runs that take their state, or all they do, from an outside run.
bool standsOnOutsideRun(const RunOptions& options) {
    return options.traceFromRestart || options.eclipseToTecplot || options.eclipseToIx;
}

/// A deck without SOLUTION leaves cells without any pressure: nothing can flow, or everything at once.
void requirePressure(const Simulation& simulation) {
    const InitialConditions& initial = simulation.initial;
    const auto cells = initial.initialPressure.cells();
    if (initial.equilibrationMode || standsOnOutsideRun(simulation.options) ||
        std::any_of(cells.begin(), cells.end(), [](double p) { return p > 0.0; }))
        return;
    lineToBoth(simulation.console, "ERROR :: NO INITIAL PRESSURE ABOVE 0, GIVE EQUIL OR PRESSURE");
    lineToBoth(simulation.console, "The deck has no section SOLUTION with either keyword");
    hardStop(simulation.console);
}

/// What stands at the end of a conversion: every file whole, the log last.
void closeConversion(Simulation& simulation) {
    checkWritten(simulation.console);
    closeOutputs(simulation.outputs);
    closeLog(simulation.outputs, simulation.console);
}

/// A command that a signal has ended ends the conversion with it.
void leaveAtSignal(Simulation& simulation) {
    if (endSignal() == 0) return;
    tell(simulation.console,
         fmt::format("RUN OF THE OUTSIDE SIMULATOR IS ENDED BY {}", signalName(endSignal())));
    closeConversion(simulation);
    std::exit(statusOfSignal(endSignal()));
}

/// An .afi file alone: IX runs, its grid and restarts become plots, and the run ends.
[[noreturn]] void extractAndStop(Simulation& simulation) {
    const RunOptions& options = simulation.options;
    ix_run(simulation);
    leaveAtSignal(simulation);
    input_GRID(simulation.console, options, simulation.units, options.headerName, simulation.grid);
    input_RST2Tecplot(simulation.console, options, simulation.grid, options.headerName, 0, simulation.clock);
    closeConversion(simulation);
    normalStop();
}

/// The check of an .afi file without results beside it: there is nothing of the run to read yet.
[[noreturn]] void checkIxDeckAndStop(const Simulation& simulation) {
    readIxDeck(simulation.console, simulation.options);
    tell(simulation.console,
         fmt::format("No results of {} are there: a run of the outside simulator would make them",
                     simulation.options.deckFile));
    normalStop();
}

/// A command with ecl2ix converts the deck itself; the grid stands beside it as corner points.
[[noreturn]] void convertDeckAndStop(Simulation& simulation) {
    const Console& console = simulation.console;
    const std::string path = outputPath(simulation.outputs, outputName(OutputFile::CoordinateFile));
    const int status = writeCornerPointDeck(simulation.grid, simulation.units.length, path);
    if (status != 0) stopOnFileStatus(console, status, path);
    lineToBoth(console, "Run Simulation by ECLIPSE");
    runOutsideCommand(console, simulation.options, simulation.options.headerName);
    leaveAtSignal(simulation);
    closeConversion(simulation);
    normalStop();
}

/// The history at the end of a run is made of its own summary files.
void switchOnSummary(Simulation& simulation) {
    RunOptions& options = simulation.options;
    const bool matches = options.historyMatch;
    if (!(options.outputWellHistory || matches) || isOn(options, OutputSwitch::Eclipse)) return;
    if (options.traceFromRestart) return;
    options.outputEclipse = "Yes";
    both(simulation.console,
         "{} :: THE FILES OF OUTPUTKVR 9 ARE WRITTEN, THE HISTORY IS MADE OF THEIR SUMMARY",
         matches ? "DOINV" : "OUTWHIST");
}

/// Nothing of a run is done before it is known that its command may be run.
void requireOutsidePermission(const Simulation& simulation) {
    const RunOptions& options = simulation.options;
    if (standsOnOutsideRun(options) && !runsNothing(options))
        requirePermission(simulation.console, options, options.headerName);
}

/// A run whose records are empty again, with the console and the command line that it has.
void makeAnew(Simulation& simulation) {
    const Console console = simulation.console;
    const CommandLine command = simulation.command;
    const std::function<void()> atStop = simulation.atStop;
    simulation = Simulation{};
    simulation.console = console;
    simulation.command = command;
    simulation.atStop = atStop;
}

void openAndRead(Simulation& simulation) {
    resetCounters(simulation.clock);
    openInput(simulation);
    if (tracesIxRun(simulation.options)) return traceIxRun(simulation);
    if (simulation.options.ixExtract) {
        if (simulation.options.checkOnly) checkIxDeckAndStop(simulation);
        extractAndStop(simulation);
    }
    readInput(simulation);
    if (simulation.options.permFileReplaced) {
        lineToScreen(simulation.console,
                     "PERMFILE :: the deck is read again, with the permeability of the initial file");
        closeOutputs(simulation.outputs);
        closeLog(simulation.outputs, simulation.console);
        makeAnew(simulation);
        return openAndRead(simulation);
    }
    requireOutsidePermission(simulation);
    switchOnSummary(simulation);
    requirePressure(simulation);
}

void convertAndClose(Simulation& simulation) {
    convertOutsideRun(simulation);
    leaveAtSignal(simulation);
    closeConversion(simulation);
}

/// Conversion mode: the run ends here. A deck under the default name is read and converted a second time
/// from the start on; required as it stands.
[[noreturn]] void convertAndStop(Simulation& simulation) {
    constexpr std::string_view DefaultHeader = "ECLIPSE";
    convertAndClose(simulation);
    if (simulation.options.headerName == DefaultHeader) {
        makeAnew(simulation);
        openAndRead(simulation);
        convertAndClose(simulation);
    }
    normalStop();
}

/// Undersaturated oil by the rows of the last Rs alone, where the options ask for it.
void chooseOilRows(const RunOptions& options, FluidTables& fluids) {
    if (options.oilRowsOfEachRs) return;
    fluids.underRows = {};
    for (FluidTables& region : fluids.furtherPvt) region.underRows = {};
}

void initialiseState(Simulation& simulation) {
    chooseOilRows(simulation.options, simulation.fluids);
    prepareRock(simulation.options, simulation.grid);  // capillary scales, before contacts are inverted
    scaleToInitialWater(simulation.console, simulation.initial, simulation.options, simulation.grid,
                        simulation.fluids);
    allocateCellState(simulation.grid.NCELLS, simulation.options.tracerCount, simulation.state);
    allocateStores(simulation.console, simulation.options, simulation.grid.NCELLS, simulation.state);
    if (simulation.options.componentCount > 0) {
        SETEQUILIBRIUM_COMPS(simulation.console, simulation.grid, simulation.fluids, simulation.initial,
                             simulation.options, simulation.state, simulation.components.stage.cells);
        startComponents(simulation);
    } else {
        initialiseBlackOil(simulation.console, simulation.grid, simulation.fluids, simulation.initial,
                           simulation.options, simulation.state);
        refreshProperties(simulation.grid, simulation.fluids, simulation.state);
    }
    if (!simulation.options.checkOnly)
        reportOutput(simulation, 0, simulation.schedule.endTime);  // time zero is in every plot file
    releaseInitialArrays(simulation.initial);
    lineToBoth(simulation.console, "SUCCESSFULLY INITIALIZED.");
}

/// What keeps the stores of CO2 from being what their user expects.
void checkStores(const Simulation& s) {
    const RunOptions& options = s.options;
    if (!options.co2Model && options.co2SolidRate > 0.0)
        warn(s.console, "WARNING :: CO2SOLID WITHOUT CO2MBM HAS NO EFFECT");
    if (!options.co2Model) return;
    if (!s.fluids.hasGas)
        warn(s.console, "WARNING :: CO2MBM IN A RUN WITHOUT GAS, THE STORES OF CO2 STAY EMPTY");
    else if (!(s.fluids.MaxRs > 0.0))
        warn(s.console, "WARNING :: CO2MBM WITHOUT A TABLE OF SOLUTION GAS (PVTO), NO CO2 DISSOLVES");
}

void startClock(const Schedule& schedule, RunClock& clock) {
    clock.tstepIndex = 1;
    clock.solverPhaseIndex = 1;
    clock.dt = schedule.stepLength.empty() ? 0.0 : schedule.stepLength.front();
    clock.workDt = clock.dt;
    clock.wellChangeIndex = 0;
    clock.reportIndex = 1;
}

/// Everything that follows from wells, connections and the present cell state.
void deriveFromWells(Simulation& simulation) {
    computeWellIndices(simulation.grid, simulation.wells);
    if (simulation.options.componentCount > 0) takeComponentWells(simulation);
    WellHead(simulation.grid, simulation.connections, simulation.fluids, simulation.state, simulation.wells);
    initialiseBottomHolePressures(simulation.state, simulation.wells);
    UpdateWellRates(simulation.units, simulation.grid, simulation.fluids, simulation.state, simulation.wells,
                    simulation.pressure);
    rebuildCellTags(simulation.grid.NCELLS, simulation.wells, simulation.tags);
}

}  // namespace

void conditionGeometry(Simulation& simulation) {
    CALCTRANS_STATICGEOPART(simulation.console, simulation.options, simulation.units, simulation.grid,
                            simulation.connections);
    if (!simulation.options.checkOnly) writeConditionedRock(simulation);
    releaseConditioning(needsFaceVelocity(simulation.options), simulation.connections);
    // Volumes and J-factors are final only now.
    if (simulation.options.componentCount > 0)
        startComponents(simulation);
    else
        refreshProperties(simulation.grid, simulation.fluids, simulation.state);
    deriveFromWells(simulation);
}

/// Grid, activity, connections and initial state of an outside run in place of the deck's.
void takeOutsideModel(Simulation& s) {
    const std::string& header = s.options.headerName;
    input_GRID(s.console, s.options, s.units, header, s.grid);
    input_ACTNUM_EGRID(s.console, s.options, header, s.grid);
    input_INIT_TRANS(s.console, s.options, s.units, header, s.grid, s.connections);
    input_RST2Velocity(s, header, 0);
    refreshProperties(s.grid, s.fluids, s.state);
    // Wells are still shut in a restart of time zero: those of the schedule stand.
    const bool scheduled = !s.schedule.steps.empty() && !s.schedule.steps.front().wells.empty();
    if (scheduled && !s.restart.wellsFromFile) return rebuildWells(1, s);
    deriveFromWells(s);
}

void rebuildWells(int entry, Simulation& simulation) {
    AssignWells(entry, simulation.console, simulation.options, simulation.units, simulation.schedule,
                simulation.grid, simulation.wells);
    keepGivenRates(entry, simulation);
    deriveFromWells(simulation);
    simulation.pressure.fieldStands = false;
}

void applyFaultMultipliers(int entry, Simulation& simulation) {
    const auto place = static_cast<std::size_t>(entry) - 1;
    if (place >= simulation.schedule.steps.size()) return;
    const std::vector<FaultMultiplier>& factors = simulation.schedule.steps[place].faultMultipliers;
    if (factors.empty()) return;
    const long long faces = multiplyFaults(simulation.grid, factors, simulation.connections);
    both(simulation.console, " Connections multiplied by MULTFLT: {}", faces);
}

namespace {

/// What a run with aquifers cannot do yet; empty where it can.
std::string_view hindersAquifers(const RunOptions& o) {
    if (o.componentCount > 0) return "components (COMPS)";
    if (isDualPorosity(o)) return "dual porosity (DUALPORO)";
    if (o.restartStep > 0) return "a restart (RESTART)";
    if (o.historyMatch || o.outputSensitivity) return "sensitivities (DOINV, OPTIONKVR 4)";
    if (optimizesRates(o)) return "rate optimisation (OPTIMIZE, NPVOPT, EQWAFS, EQARRIVE, OPTMMP)";
    if (o.traceFromRestart || o.useEclipsePressure || o.useEclipseTrans)
        return "the files of an outside simulator";
    return {};
}

void startWithAquifers(Simulation& s) {
    if (s.givenAquifers.aquifers.empty()) return;
    if (const std::string_view why = hindersAquifers(s.options); !why.empty()) {
        both(s.console,
             "ERROR :: This version of KVR cannot do what the input asks for: analytic aquifers with {}.",
             why);
        hardStop(s.console);
    }
    s.aquifers = startAquifers(s.console, s.units, s.grid, s.fluids, s.state, s.givenAquifers);
}

}  // namespace

void startUp(Simulation& simulation) {
    printProgramBanner(simulation.console);
    flushDenormalsInAllThreads();
    keepDenseAlgebraOnOneThread();
    openAndRead(simulation);
    if (tracesIxRun(simulation.options)) return;
    const bool converts = !runsNothing(simulation.options);
    if (converts && simulation.options.eclipseToIx) convertDeckAndStop(simulation);
    if (converts && simulation.options.eclipseToTecplot) convertAndStop(simulation);

    const bool readsOld = simulation.options.useEclipseTrans;  // what stands there may be what is to be taken
    if (!simulation.options.checkOnly && !readsOld) removeStaleFiles(simulation);
    const StageTimer timer(simulation.times.initialisation);
    startAtRestart(simulation);
    initialiseState(simulation);
    checkStores(simulation);
    startClock(simulation.schedule, simulation.clock);
    passTablesAtRestart(simulation);
    allocateStreamlines(simulation);
    conditionGeometry(simulation);
    AllocateVelocity(simulation.console, simulation.grid.NCELLS, simulation.connections.flowDirections,
                     needsFaceVelocity(simulation.options), simulation.velocity);
    applyFaultMultipliers(1, simulation);
    if (readsOld && !simulation.options.checkOnly) {
        takeOutsideModel(simulation);
        removeStaleFiles(simulation);
    }
    startWithAquifers(simulation);
    tellDeckSummary(simulation);
    if (simulation.options.checkOnly) return;
    if (simulation.options.method == "FIM") {
        simulation.options.globalIterations =
            0;  // its step has nothing to repeat: each pass would be a further step
        AllocateFullyImplicit(simulation);
    }
    startWellTables(simulation);
    advanceBalance(simulation, 0.0);
    ReportMBE(simulation);
    reportRegions(simulation);
    reportStores(simulation);
    checkWritten(simulation.console);
    writeStaticPlots(simulation);
    writeRunInformation(simulation);
    startEclipseFiles(simulation);
    startSummaryTable(simulation);
    checkWritten(simulation.console);
}

}  // namespace kvr
