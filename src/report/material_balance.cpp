#include "report/material_balance.hpp"

#include "base/arrow_rules.hpp"
#include "base/constants.hpp"
#include "base/written_files.hpp"
#include "pressure/properties.hpp"
#include "report/balance_table.hpp"
#include "report/component_balance.hpp"
#include "report/net_value.hpp"
#include "report/region_balance.hpp"
#include "report/well_figures.hpp"

#include <algorithm>
#include <cmath>
#include <span>

namespace kvr {

namespace {

constexpr double MscfPerMillion = 1000.0;  // Mscf per "M Mscf"

PhaseAmounts surfaceAmounts(const InPlaceSums& sums) {
    return {sums.oil, sums.water, sums.freeGas + sums.dissolvedGas};
}

/// Rates of one sign, both results positive: positive rates run into the reservoir.
void addRates(const Well& well, PhaseAmounts& injection, PhaseAmounts& production) {
    injection.oil += std::max(well.WellQo, 0.0);
    injection.water += std::max(well.WellQw, 0.0);
    injection.gas += std::max(well.WellQg, 0.0);
    production.oil += std::max(-well.WellQo, 0.0);
    production.water += std::max(-well.WellQw, 0.0);
    production.gas += std::max(-well.WellQg, 0.0);
}

void addFlow(const PhaseAmounts& rate, double dt, PhaseAmounts& total) {
    total.oil += rate.oil * dt;
    total.water += rate.water * dt;
    total.gas += rate.gas * dt;
}

void addWell(const Well& well, double dt, WellTotals& totals) {
    PhaseAmounts injection;
    PhaseAmounts production;
    addRates(well, injection, production);
    addFlow(injection, dt, totals.injected);
    addFlow(production, dt, totals.produced);
    totals.injectedReservoir += std::max(well.reservoirRate, 0.0) * dt;
    totals.producedReservoir += std::max(-well.reservoirRate, 0.0) * dt;
}

void addNetInflow(std::span<const Well> wells, double dt, PhaseAmounts& netInflow) {
    for (const Well& well : wells) {
        netInflow.oil += well.WellQo * dt;
        netInflow.water += well.WellQw * dt;
        netInflow.gas += well.WellQg * dt;
    }
}

void addWellFlows(const WellRecord& wells, double dt, BalanceRecord& record) {
    if (record.wells.size() < wells.wells.size()) record.wells.resize(wells.wells.size());
    for (std::size_t n = 0; n < wells.wells.size(); ++n) {
        addWell(wells.wells[n], dt, record.wells[n]);
        addWell(wells.wells[n], dt, record.field);
    }
}

/// The same of observed rates, by number of the well as the schedule counts.
void addObservedFlows(const ScheduleStep* inForce, double dt, BalanceRecord& record) {
    if (inForce == nullptr) return;
    if (record.wells.size() < inForce->wells.size()) record.wells.resize(inForce->wells.size());
    for (std::size_t n = 0; n < inForce->wells.size(); ++n) {
        const ObservedRates rates = observedRates(inForce->wells[n]);
        const double daysOn = inForce->wells[n].efficiency * dt;
        for (WellTotals* totals : {&record.wells[n], &record.field}) {
            addFlow(rates.production, daysOn, totals->observedProduced);
            addFlow(rates.injection, daysOn, totals->observedInjected);
        }
    }
}

bool flows(const Well& well) {
    return well.WellQo != 0.0 || well.WellQw != 0.0 || well.WellQg != 0.0;
}

/// Surface volumes of mixtures are not conserved, their components are: oil and gas have the error of the
/// component that is furthest off.
void setErrors(const Simulation& run, const BalanceRecord& record, BalanceRow& row) {
    if (run.options.componentCount > 0) {
        row.errorOil = row.errorGas = worstComponentError(run.components);
        row.errorWater = balanceError(record.initial.water, row.inPlace.water, record.netInflow.water);
        return;
    }
    row.errorOil = balanceError(record.initial.oil, row.inPlace.oil, record.netInflow.oil);
    row.errorWater = balanceError(record.initial.water, row.inPlace.water, record.netInflow.water);
    row.errorGas =
        balanceError(record.initial.gas, row.inPlace.gas + record.now.solidGas, record.netInflow.gas);
}

/// Increases since the row before.
void setGains(const Simulation& run, double dt, BalanceRow& row) {
    const BalanceRecord& record = run.balance;
    row.deltaNpv = dt * (valueOf(run.units, row.productionRate, run.options.productionPrice) +
                         valueOf(run.units, row.injectionRate, run.options.injectionPrice));
    row.npv = row.deltaNpv;
    if (record.rows.empty()) return;
    row.deltaRecovery = row.recoveryOil - record.rows.back().recoveryOil;
    row.npv += record.rows.back().npv;
}

BalanceRow makeRow(const Simulation& run, double dt) {
    const BalanceRecord& record = run.balance;
    BalanceRow row;
    row.time = run.clock.time;
    row.poreVolume = record.now.poreVolume;
    row.averagePressure = run.pressure.AveragePressure;
    const double firstPoreVolume = record.rows.empty() ? row.poreVolume : record.rows.front().poreVolume;
    row.poreVolumesInjected = firstPoreVolume > 0.0 ? record.field.injectedReservoir / firstPoreVolume : 0.0;
    row.inPlace = surfaceAmounts(record.now);
    for (const Well& well : run.wells.wells) {
        addRates(well, row.injectionRate, row.productionRate);
        row.flowingWells += flows(well) ? 1 : 0;
    }
    row.recoveryOil = recoveredFraction(record.initial.oil, row.inPlace.oil);
    row.recoveryWater = recoveredFraction(record.initial.water, row.inPlace.water);
    setErrors(run, record, row);
    setGains(run, dt, row);
    return row;
}

double share(double part, double whole) {
    return whole > 0.0 ? part / whole : 0.0;
}

void logPoreVolume(const Simulation& run, std::string_view label, double volume) {
    log(run.console, "{}{} rb {} %", label, number(toBarrels(run.units, volume)),
        number(Percent * share(volume, run.balance.now.poreVolume)));
}

void logGas(const Simulation& run, std::string_view label, double volume) {
    log(run.console, "{}{} M Mscf", label, number(toMscf(run.units, volume) / MscfPerMillion));
}

void logTotals(const Simulation& run) {
    const InPlaceSums& now = run.balance.now;
    lineToLog(run.console, " Fluid in Place Totals **  ");
    log(run.console, " Total pore volume      :: {} rb ", number(toBarrels(run.units, now.poreVolume)));
    logPoreVolume(run, " Total Oil pore volume  :: ", now.oilPore);
    logPoreVolume(run, " Total Wat pore volume  :: ", now.waterPore);
    logPoreVolume(run, " Total Gas pore volume  :: ", now.gasPore);
    log(run.console, " Average Oil Saturation :: {} [-]", number(share(now.oilPore, now.poreVolume)));
    log(run.console, " Average Wat Saturation :: {} [-]", number(share(now.waterPore, now.poreVolume)));
    log(run.console, " Average Gas Saturation :: {} [-]", number(share(now.gasPore, now.poreVolume)));
}

void logAquifers(const Simulation& run) {
    for (const Aquifer& aquifer : run.aquifers.aquifers)
        log(run.console, " Water from aquifer {:<3} :: {} stb", aquifer.given.number,
            number(toBarrels(run.units, aquifer.gave)));
}

void logSurfaceVolumes(const Simulation& run) {
    const InPlaceSums& now = run.balance.now;
    lineToLog(run.console, " FIP Surface Volumes  ** ");
    log(run.console, " Surface Oil volume     :: {} stb", number(toBarrels(run.units, now.oil)));
    log(run.console, " Surface Wat volume     :: {} stb", number(toBarrels(run.units, now.water)));
    logGas(run, " Surface Gas volume     :: ", now.freeGas + now.dissolvedGas);
    logGas(run, " Was Dissolved Gas      :: ", now.dissolvedGas);
    logGas(run, " Was Free Gas           :: ", now.freeGas);
}

/// The table always reads as if it were written whole: only the first row replaces an old file.
void addToSweepTable(const Simulation& run) {
    const std::string path = outputPath(run.outputs, outputName(OutputFile::RunSweepVolume));
    const bool first = run.balance.rows.size() == 1;
    std::FILE* file = first ? openForReplace(run.console, path) : openForAppend(run.console, path);
    const long before = lengthOf(file);
    if (first) std::fputs(balanceTableHead().c_str(), file);
    std::fputs(balanceTableRow(run.units, run.balance, run.balance.rows.back(), componentSums(run.components))
                   .c_str(),
               file);
    closeAppended(run.console, file, before);
    lineToLog(run.console, rowOf(OutputFile::RunSweepVolume).told);
}

/// What cells hold beyond their saturations belongs to what is in place.
void addCarried(const CellAmounts& carried, InPlaceSums& sums) {
    for (CellId cell = 1; cell <= carried.water.count(); ++cell) {
        sums.water += carried.water[cell];
        sums.oil += carried.oil[cell];
        sums.freeGas += carried.gas[cell];
    }
}

double absoluteSum(const CellArray<double>& values) {
    double sum = 0.0;
    for (const double value : values.cells()) sum += std::abs(value);
    return sum;
}

/// Prints the change of one sum and keeps the new one.
void tellChange(const Console& console, std::string_view label, double sum, double& previous) {
    both(console, "{}{}", label, number(sum - previous));
    previous = sum;
}

}  // namespace

InPlaceSums sumInPlace(const GridModel& grid, const CellState& state, bool hasGas) {
    InPlaceSums sums;
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        if (grid.Active[cell] == 0) continue;
        const double volume = state.PoreVolume[cell];
        const double oil = volume * state.So[cell] / state.Bo[cell];
        sums.poreVolume += volume;
        sums.oilPore += volume * state.So[cell];
        sums.waterPore += volume * state.Sw[cell];
        sums.oil += oil;
        sums.water += volume * state.Sw[cell] / state.Bw[cell];
        if (!hasGas) continue;
        sums.gasPore += volume * state.Sg[cell];
        sums.freeGas += volume * state.Sg[cell] / state.Bg[cell];
        sums.dissolvedGas += oil * state.Rs[cell];
        if (!state.SolidGas.empty()) sums.solidGas += state.SolidGas[cell];
    }
    return sums;
}

double balanceError(double initial, double now, double netInflow) {
    if (initial >= LeastInPlace) return 1.0 - (now - netInflow) / initial;
    return now >= LeastInPlace ? (now - netInflow) / now : 0.0;
}

double recoveredFraction(double initial, double now) {
    return (initial - now) / (initial > 0.0 ? initial : 1.0);
}

void advanceBalance(Simulation& simulation, double executedDt) {
    BalanceRecord& record = simulation.balance;
    record.now = sumInPlace(simulation.grid, simulation.state, simulation.options.hasGas);
    addCarried(simulation.pressure.carried, record.now);
    if (simulation.options.componentCount > 0) {
        sumComponents(simulation);
        takeComponentSums(simulation, record.now);
    }
    if (!record.started) {
        record.initial = surfaceAmounts(record.now);
        record.started = true;
    }
    addWellFlows(simulation.wells, executedDt, record);
    const RunOptions& options = simulation.options;
    if (options.useHistoryControls)
        addObservedFlows(scheduleInForce(simulation.schedule, simulation.clock), executedDt, record);
    if (carriesAmounts(options) || !isAnalyticalPhase(options, simulation.clock.solverPhaseIndex)) {
        addNetInflow(simulation.wells.wells, executedDt, record.netInflow);
        addNetInflow(simulation.aquifers.wells, executedDt, record.netInflow);
    }
    record.rows.push_back(makeRow(simulation, executedDt));
}

void RESET_INITIAL_INPLACE(Simulation& simulation) {
    BalanceRecord& record = simulation.balance;
    record.now = sumInPlace(simulation.grid, simulation.state, simulation.options.hasGas);
    addCarried(simulation.pressure.carried, record.now);
    record.initial = surfaceAmounts(record.now);
    record.netInflow = {};
    record.started = true;
    if (!record.firstOfRegion.empty()) record.firstOfRegion = regionAmounts(simulation);
}

void ReportMBE(const Simulation& simulation) {
    const Console& console = simulation.console;
    lineToLog(console, OpeningArrow);
    lineToLog(console, " Material Balance Report: ");
    logTotals(simulation);
    logSurfaceVolumes(simulation);
    logAquifers(simulation);
    if (simulation.options.componentCount > 0) logComponents(simulation);
    addToSweepTable(simulation);
    if (isOn(simulation.options, OutputSwitch::Excel)) {
        std::FILE* sheet = stream(simulation.outputs, OutputFile::ExclMbe);
        std::fputs(balanceSheetRow(simulation.balance.rows.back(), simulation.clock.endTime).c_str(), sheet);
        if (simulation.options.componentCount > 0)
            std::fputs(componentSheetRow(simulation).c_str(),
                       stream(simulation.outputs, OutputFile::ExclMbec));
    }
    lineToLog(console, " Function Ends: ReportMBE");
    lineToLog(console, ClosingArrow);
    flushOutputs(simulation.outputs);
}

void reportGlobalIterationErrors(Simulation& simulation) {
    BalanceRecord& record = simulation.balance;
    const CellState& state = simulation.state;
    lineToBoth(simulation.console, "-- ERROR FOR GLOBAL ITERATION --");
    tellChange(simulation.console, " ERROR Soil : ", absoluteSum(state.So), record.previousSumSo);
    tellChange(simulation.console, " ERROR Swat : ", absoluteSum(state.Sw), record.previousSumSw);
    tellChange(simulation.console, " ERROR Pres : ", absoluteSum(state.Pressure), record.previousSumPressure);
}

}  // namespace kvr
