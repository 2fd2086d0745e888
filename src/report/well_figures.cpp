#include "report/well_figures.hpp"

#include "base/text.hpp"
#include "pressure/wells/lift_limits.hpp"
#include "report/component_balance.hpp"
#include "report/mean_pressure.hpp"

#include <algorithm>

namespace kvr {

namespace {

ReportedFlow reported(const UnitSystem& units, const PhaseAmounts& amounts, double reservoir) {
    return {toBarrels(units, amounts.oil), toBarrels(units, amounts.water), toMscf(units, amounts.gas),
            toBarrels(units, reservoir)};
}

/// Amounts that have a surface volume alone.
ReportedFlow reported(const UnitSystem& units, const PhaseAmounts& amounts) {
    return reported(units, amounts, 0.0);
}

/// The part of well rates that runs into the reservoir (sign 1) or out of it (sign -1), positive.
ReportedFlow rateOf(const UnitSystem& units, const Well& well, double sign) {
    const auto part = [sign](double rate) { return sign * rate > 0.0 ? sign * rate : 0.0; };
    return reported(units, {part(well.WellQo), part(well.WellQw), part(well.WellQg)},
                    part(well.reservoirRate));
}

void addFlow(const ReportedFlow& flow, ReportedFlow& sum) {
    sum.oil += flow.oil;
    sum.water += flow.water;
    sum.gas += flow.gas;
    sum.reservoir += flow.reservoir;
}

void scale(double factor, ReportedFlow& flow) {
    for (double* rate : {&flow.oil, &flow.water, &flow.gas, &flow.reservoir}) *rate *= factor;
}

/// Rates of a well are those while it is on (WEFAC); those of the field are means over time.
void takeRates(const UnitSystem& units, const WellRecord& wells, StepFigures& figures) {
    for (std::size_t w = 0; w < wells.wells.size(); ++w) {
        WellFigures& well = figures.wells[w];
        well.production = rateOf(units, wells.wells[w], -1.0);
        well.injection = rateOf(units, wells.wells[w], 1.0);
        addFlow(well.production, figures.field.production);
        addFlow(well.injection, figures.field.injection);
        const double on = 1.0 / wells.wells[w].efficiency;
        scale(on, well.production);
        scale(on, well.injection);
    }
}

void takeTotals(const UnitSystem& units, const WellTotals& totals, WellFigures& figures) {
    figures.produced = reported(units, totals.produced, totals.producedReservoir);
    figures.injected = reported(units, totals.injected, totals.injectedReservoir);
    figures.observed.produced = reported(units, totals.observedProduced);
    figures.observed.injected = reported(units, totals.observedInjected);
}

void takeObserved(const UnitSystem& units, const ScheduleStep* inForce, StepFigures& figures) {
    if (inForce == nullptr) return;
    for (std::size_t w = 0; w < std::min(inForce->wells.size(), figures.wells.size()); ++w) {
        const ScheduleWell& well = inForce->wells[w];
        const ObservedRates rates = observedRates(well);
        ObservedFigures& observed = figures.wells[w].observed;
        observed.production = reported(units, rates.production);
        observed.injection = reported(units, rates.injection);
        observed.bhp = well.isInjector ? well.histInjBhp : well.histBhp;
        ObservedFigures mean = observed;  // over the time that the well is on and off
        scale(well.efficiency, mean.production);
        scale(well.efficiency, mean.injection);
        addFlow(mean.production, figures.field.observed.production);
        addFlow(mean.injection, figures.field.observed.injection);
    }
}

void takeBalance(const UnitSystem& units, const BalanceRecord& balance, StepFigures& figures) {
    const std::size_t count = std::min(balance.wells.size(), figures.wells.size());
    for (std::size_t w = 0; w < count; ++w) takeTotals(units, balance.wells[w], figures.wells[w]);
    takeTotals(units, balance.field, figures.field);
    const BalanceRow& row = balance.rows.back();
    figures.inPlace = reported(units, row.inPlace, row.poreVolume);
    figures.recovery = row.recoveryOil;
    figures.deltaRecovery = row.deltaRecovery;
    figures.npv = row.npv;
    figures.poreVolumesInjected = row.poreVolumesInjected;
}

void takeFractions(const Simulation& run, StepFigures& figures) {
    for (int i = 0; i < run.options.componentCount; ++i) {
        figures.field.fractions.push_back(producedFraction(run, i, -1));
        for (std::size_t w = 0; w < figures.wells.size(); ++w)
            figures.wells[w].fractions.push_back(producedFraction(run, i, static_cast<int>(w)));
    }
}

}  // namespace

double waterCut(const ReportedFlow& production) {
    const double liquid = production.oil + production.water;
    return liquid > 0.0 ? production.water / liquid : 0.0;
}

double gasOilRatio(const ReportedFlow& production) {
    return production.oil > 0.0 ? production.gas / production.oil : 0.0;
}

ObservedRates observedRates(const ScheduleWell& well) {
    ObservedRates rates;
    if (!well.isInjector) {
        rates.production = {well.histOil, well.histWater, well.histGas};
    } else {
        const std::string fluid = toUpper(trim(well.injType)).substr(0, 1);
        PhaseAmounts& in = rates.injection;
        (fluid == "G" ? in.gas : fluid == "O" ? in.oil : in.water) = well.histInjRate;
    }
    return rates;
}

const ScheduleStep* scheduleInForce(const Schedule& schedule, const RunClock& clock) {
    const auto entry = static_cast<std::size_t>(clock.wellChangeIndex);
    return entry < schedule.steps.size() ? &schedule.steps[entry] : nullptr;
}

std::vector<std::string> runWellNames(const Schedule& schedule, const WellRecord& wells) {
    std::vector<std::string> names;
    for (const Well& well : wells.wells) names.push_back(well.WellName);
    if (schedule.steps.empty()) return names;
    const SharedElements<ScheduleWell>& all = schedule.steps.back().wells;
    for (std::size_t w = names.size(); w < all.size(); ++w) names.push_back(all[w].name);
    return names;
}

StepFigures stepFigures(const Simulation& run) {
    StepFigures figures;
    figures.time = run.clock.time;
    figures.averagePressure = fieldPressure(run.grid, run.state);
    figures.wells.resize(runWellNames(run.schedule, run.wells).size());
    for (std::size_t w = 0; w < run.wells.wells.size(); ++w) {
        figures.wells[w].bhp = run.wells.wells[w].Bhp;
        figures.wells[w].thp = tubingHead(run.wells.wells[w]);
    }
    takeFractions(run, figures);
    if (run.balance.rows.empty()) return figures;
    if (run.options.useHistoryControls)
        takeObserved(run.units, scheduleInForce(run.schedule, run.clock), figures);
    takeRates(run.units, run.wells, figures);
    takeBalance(run.units, run.balance, figures);
    return figures;
}

}  // namespace kvr
