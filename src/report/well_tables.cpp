#include "report/well_tables.hpp"

#include "report/recovery.hpp"
#include "report/well_figures.hpp"
#include "report/well_plots.hpp"
#include "report/well_rows.hpp"

namespace kvr {

namespace {

constexpr std::string_view Yes = "Yes";

void addExcelTables(const Simulation& run, const StepFigures& figures) {
    addWellBlocks(run.grid, run.units, run.wells, stream(run.outputs, OutputFile::ExclWellBlk));
    lineToLog(run.console, "Info Added in FILE : Well_Blk.xls");
    addWellRows(figures, run.wells, stream(run.outputs, OutputFile::ExclWell));
}

void addTecplotTables(const Simulation& run, const StepFigures& figures) {
    addSinkSourceRow(figures, run.options.componentCount, stream(run.outputs, OutputFile::TPlotWellRate));
    addWellPropertyRow(figures.time, figures.wells.size(), run.wells, run.state,
                       stream(run.outputs, OutputFile::TPlotWellBlk));
}

void addViewTables(const Simulation& run, const StepFigures& figures) {
    addProductionRows(figures, run.wells, stream(run.outputs, OutputFile::RunProduction));
    lineToLog(run.console, "Info Added in FILE : KVR_Run_Production.out");
    addWaterCutRows(figures, run.wells, stream(run.outputs, OutputFile::RunWct));
    lineToLog(run.console, "Info Added in FILE : KVR_Run_Wct.out");
}

void addRecovery(const Simulation& run, const StepFigures& figures) {
    if (isAnalyticalPhase(run.options, run.clock.solverPhaseIndex)) return;
    addRecoveryRow(figures, runWellNames(run.schedule, run.wells),
                   stream(run.outputs, OutputFile::RunRecovery));
    lineToLog(run.console, "File Replaced : KVR_Run_Recovery.out");
}

}  // namespace

void reportWells(Simulation& simulation) {
    const StepFigures figures = stepFigures(simulation);
    if (simulation.options.outputXls == Yes) addExcelTables(simulation, figures);
    if (simulation.options.outputPlt == Yes) addTecplotTables(simulation, figures);
    if (simulation.options.outputKvrView == Yes) addViewTables(simulation, figures);
    addRecovery(simulation, figures);
}

void startWellTables(Simulation& simulation) {
    const std::vector<std::string> names = runWellNames(simulation.schedule, simulation.wells);
    if (simulation.options.outputPlt == Yes) {
        putSinkSourceHead(names, simulation.options.componentCount, simulation.options.outputEclipse == Yes,
                          stream(simulation.outputs, OutputFile::TPlotWellRate));
        putWellPropertyHead(names, stream(simulation.outputs, OutputFile::TPlotWellBlk));
    }
    addRecovery(simulation, stepFigures(simulation));
}

void emptyRunTables(const Console& console, OutputStreams& outputs) {
    for (const OutputFile file : {OutputFile::RunRecovery, OutputFile::RunProduction, OutputFile::RunWct})
        replaceOutput(console, file, outputs);
}

}  // namespace kvr
