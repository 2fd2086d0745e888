#include "report/well_tables.hpp"

#include "report/recovery.hpp"
#include "report/well_figures.hpp"
#include "report/well_plots.hpp"
#include "report/well_rows.hpp"

namespace kvr {

namespace {

void tell(const Simulation& run, OutputFile file) {
    lineToLog(run.console, rowOf(file).told);
}

void addExcelTables(const Simulation& run, const StepFigures& figures) {
    addWellBlocks(run.grid, run.units, run.wells, stream(run.outputs, OutputFile::ExclWellBlk));
    tell(run, OutputFile::ExclWellBlk);
    addWellRows(figures, run.wells, stream(run.outputs, OutputFile::ExclWell));
}

void addTecplotTables(const Simulation& run, const StepFigures& figures) {
    addSinkSourceRow(figures, stream(run.outputs, OutputFile::TPlotWellRate));
    addWellPropertyRow(figures.time, figures.wells.size(), run.wells, run.state,
                       stream(run.outputs, OutputFile::TPlotWellBlk));
}

void addViewTables(const Simulation& run, const StepFigures& figures) {
    addProductionRows(figures, run.wells, stream(run.outputs, OutputFile::RunProduction));
    tell(run, OutputFile::RunProduction);
    addWaterCutRows(figures, run.wells, stream(run.outputs, OutputFile::RunWct));
    tell(run, OutputFile::RunWct);
}

void addRecovery(const Simulation& run, const StepFigures& figures) {
    if (isAnalyticalPhase(run.options, run.clock.solverPhaseIndex)) return;
    addRecoveryRow(figures, runWellNames(run.schedule, run.wells),
                   stream(run.outputs, OutputFile::RunRecovery));
    tell(run, OutputFile::RunRecovery);
}

}  // namespace

void reportWells(Simulation& simulation) {
    const StepFigures figures = stepFigures(simulation);
    if (isOn(simulation.options, OutputSwitch::Excel)) addExcelTables(simulation, figures);
    if (isOn(simulation.options, OutputSwitch::Tecplot)) addTecplotTables(simulation, figures);
    if (isOn(simulation.options, OutputSwitch::View)) addViewTables(simulation, figures);
    addRecovery(simulation, figures);
}

void startWellTables(Simulation& simulation) {
    const std::vector<std::string> names = runWellNames(simulation.schedule, simulation.wells);
    if (isOn(simulation.options, OutputSwitch::Tecplot)) {
        putSinkSourceHead(names, simulation.options.componentCount,
                          isOn(simulation.options, OutputSwitch::Eclipse),
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
