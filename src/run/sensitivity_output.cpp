#include "run/sensitivity_output.hpp"

#include "eclipse/file_failure.hpp"
#include "eclipse/sensitivity_files.hpp"
#include "matching/adjoint_rows.hpp"
#include "streamline/sensitivities/flow_coupling.hpp"

#include <algorithm>

namespace kvr {

namespace {

FlowCoupling couplingOf(PressureSolver& solver, Simulation& s) {
    return {s.grid,       s.connections,         s.velocity, s.state,
            s.wells,      s.pressureWork.matrix, solver,     s.options.pressureSolver,
            s.clock.time, s.clock.workDt};
}

bool isCoupled(const Simulation& s, SensitivityForm form) {
    return form == SensitivityForm::Coupled && s.lines.sensitivities.coupled;
}

void travelTimeOf(PressureSolver& solver, Simulation& s, std::size_t well, CellArray<double>& values) {
    StepSensitivities& step = s.lines.sensitivities;
    fillTravelTime(sensitivitySettings(s.options), s.wells.wells[well], s.lines.field.lineFlux,
                   step.wells[well], values);
    if (isInjector(s.wells.wells[well]) || !isCoupled(s, s.options.travelTimeForm)) return;
    coupleSpeeds(couplingOf(solver, s), values);
}

void pressureOf(PressureSolver& solver, Simulation& s, std::size_t well, CellArray<double>& values) {
    StepSensitivities& step = s.lines.sensitivities;
    if (isCoupled(s, s.options.pressureForm) && pressureOfWell(couplingOf(solver, s), well, values)) return;
    fillPressure(s.wells.wells[well], s.lines.field.lineFlux, step.wells[well], values);
}

SensitivityForm formOf(const RunOptions& options, SensitivityKind kind) {
    return kind == SensitivityKind::Pressure ? options.pressureForm : options.travelTimeForm;
}

constexpr SensitivityKind Kinds[] = {SensitivityKind::Pressure, SensitivityKind::TravelTime};

void writeStep(SensitivityKind kind, int step, const SensitivityFill& fill, const Simulation& s) {
    const SensitivityPaths paths{outputPath(s.outputs, sensitivityFileName(kind, step)),
                                 outputPath(s.outputs, sensitivityFileName(kind, WholeRun))};
    writeSensitivityStep(s.console, paths, step == 1, s.wells.wells.size(), s.grid.NCELLS, fill);
}

void writeKind(SensitivityKind kind,
               void (*valuesOf)(PressureSolver&, Simulation&, std::size_t, CellArray<double>&),
               PressureSolver& solver, Simulation& s) {
    const bool anyLines = !s.lines.sensitivities.wells.empty();
    const auto fill = [&](std::size_t well, CellArray<double>& values) {
        if (anyLines)
            valuesOf(solver, s, well, values);
        else
            std::fill(values.slots.begin(), values.slots.end(), 0.0);
    };
    writeStep(kind, s.clock.reportIndex, fill, s);
}

}  // namespace

void writeSensitivities(Simulation& simulation) {
    if (!keepsSensitivities(simulation.options)) return;
    // What the run's own solver keeps from solve to solve is left alone: its next pressures stay the same
    // bits.
    PressureSolver solver;
    solver.memory = makeSolverMemory();
    if (simulation.options.pressureForm != SensitivityForm::Adjoint)
        writeKind(SensitivityKind::Pressure, pressureOf, solver, simulation);
    if (simulation.options.travelTimeForm != SensitivityForm::Adjoint)
        writeKind(SensitivityKind::TravelTime, travelTimeOf, solver, simulation);
    for (const int step : {simulation.clock.reportIndex, WholeRun})
        for (const SensitivityKind kind : Kinds)
            if (formOf(simulation.options, kind) != SensitivityForm::Adjoint)
                log(simulation.console, "File Generated : {}", sensitivityFileName(kind, step));
    simulation.lines.sensitivities = {};
}

void writeAdjoints(const Simulation& s) {
    if (!leavesAdjoints(s.options)) return;
    for (const SensitivityKind kind : Kinds) {
        if (formOf(s.options, kind) != SensitivityForm::Adjoint) continue;
        const WellQuantity quantity = kind == SensitivityKind::Pressure ? WellQuantity::Pressure
                                      : matchesGasOilRatio(s.options)   ? WellQuantity::GasOilRatio
                                                                        : WellQuantity::Cut;
        const std::vector<CellArray<double>> values = reportDerivatives(s, quantity);
        const std::size_t wells = s.wells.wells.size();
        for (std::size_t report = 0; wells > 0 && report < values.size() / wells; ++report)
            writeStep(
                kind, static_cast<int>(report) + 1,
                [&](std::size_t well, CellArray<double>& to) { to = values[report * wells + well]; }, s);
        log(s.console, "Files Generated : {} to {}, {}", sensitivityFileName(kind, 1),
            sensitivityFileName(kind, static_cast<int>(s.schedule.reportEnd.size())),
            sensitivityFileName(kind, WholeRun));
    }
}

}  // namespace kvr
