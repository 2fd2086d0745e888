#include "optimization/rate_optimization.hpp"

#include "base/constants.hpp"
#include "base/hard_stop.hpp"
#include "base/index.hpp"
#include "base/messages.hpp"
#include "optimization/equal_arrival.hpp"
#include "optimization/miscibility.hpp"
#include "optimization/rate_balance.hpp"
#include "optimization/rate_files.hpp"
#include "optimization/rate_plan.hpp"
#include "optimization/rate_schedule.hpp"
#include "optimization/well_ranges.hpp"
#include "pressure/wells/rate_limits.hpp"
#include "report/mean_pressure.hpp"

#include <algorithm>
#include <cmath>
#include <map>

namespace kvr {

namespace {

constexpr std::string_view Production = "prd";  // name of the group of producers, beside the injected fluids

constexpr double LeastBound = 1e-9;  // of a rate, by which a bound keeps it from what was asked

ChangeLimits changeLimits(const RunOptions& o) {
    return {o.optimizationEmin, o.optimizationEmax, o.optimizationAlpha, o.optimizationWmin,
            o.optimizationWmax};
}

bool hasLines(const RunOptions& options) {
    return options.method == "streamline" || options.traceFromRestart;
}

bool byValue(const RunOptions& options) {
    return options.npvOptimization && !options.equalizeWafs;
}

/// What the lines of the step say, and what change of each pair follows.
struct PairPlan {
    PairSet set;
    std::vector<double> efficiencies, changes;
    double meanEfficiency = 0.0, meanTime = 0.0;
};

double efficiencyOf(const RunOptions& options, const WellPair& pair) {
    const PhasePrices& price = options.productionPrice;
    // Gas is kept in barrels, its price is that of a Mscf.
    return byValue(options)
               ? valueEfficiency(pair, price.oil, price.water, price.gas * CubicFeetPerBarrel / 1000.0)
               : efficiency(pair);
}

double fluxMean(const PairSet& set, const std::vector<double>& values) {
    double counted = 0.0, sum = 0.0;
    for (std::size_t n = 0; n < set.pairs.size(); ++n) {
        counted += set.pairs[n].counted;
        sum += set.pairs[n].counted * values[n];
    }
    return counted > 0.0 ? sum / counted : 0.0;
}

void takeEfficiencies(const RunOptions& options, PairPlan& plan) {
    for (const WellPair& pair : plan.set.pairs) plan.efficiencies.push_back(efficiencyOf(options, pair));
    plan.meanEfficiency = fluxMean(plan.set, plan.efficiencies);
    plan.meanTime = meanArrival(plan.set);
}

PairPlan planByEfficiency(const RunOptions& options, const std::vector<JoiningLine>& lines) {
    PairPlan plan;
    plan.set = weighPairs(lines, options.optimizationTofUsage * meanTime(lines));
    takeEfficiencies(options, plan);
    const ChangeLimits limits = changeLimits(options);
    for (std::size_t n = 0; n < plan.set.pairs.size(); ++n) {
        const bool told = plan.set.pairs[n].counted > 0.0;
        plan.changes.push_back(told ? efficiencyChange(plan.efficiencies[n], plan.meanEfficiency, limits)
                                    : 0.0);
    }
    return plan;
}

PairPlan planByArrival(const Simulation& s) {
    const std::vector<JoiningLine>& lines = s.lines.pairs.joining;
    PairPlan plan;
    plan.set = pairsOfArrival(lines, HugeTime * meanTime(lines));
    if (plan.set.longLines > 0)
        both(s.console, "WFOpt :: Huge SL Eliminated for EqTOF :: {}", plan.set.longLines);
    for (const std::size_t n : removeThinPairs(plan.set))
        log(s.console, "WFOpt :: Tiny Connection Well Info Eliminated, pair of :: {} {}",
            s.wells.wells[at(plan.set.pairs[n].injector) - 1].WellName,
            s.wells.wells[at(plan.set.pairs[n].producer) - 1].WellName);
    takeEfficiencies(s.options, plan);
    const ChangeLimits limits = changeLimits(s.options);
    for (const WellPair& pair : plan.set.pairs)
        plan.changes.push_back(arrivalChange(pair.time, plan.meanTime, limits));
    return plan;
}

PairPlan planOf(const Simulation& s) {
    return s.options.equalArrival ? planByArrival(s) : planByEfficiency(s.options, s.lines.pairs.joining);
}

// --- wells -----------------------------------------------------------------------------------------------

/// A well whose rate may move, on its way to the next one.
struct MovingWell {
    int well = 0;  // 1-based
    double before = 0.0;
    WellRange range;
    SharedRate share;
};

/// Wells whose totals are kept together.
std::string groupOf(const Well& well) {
    return isInjector(well) ? well.InjectFluid : std::string(Production);
}

/// All producers hold the same liquid or reservoir rate: their targets themselves are a total. Otherwise
/// their reservoir volumes are.
bool shareOneControl(const std::vector<MovingWell>& moving, const Simulation& s) {
    const std::string& first = s.wells.wells[at(moving.front().well) - 1].givenControl;
    if (first != "lrat" && first != "resv") return false;
    return std::all_of(moving.begin(), moving.end(), [&](const MovingWell& one) {
        return s.wells.wells[at(one.well) - 1].givenControl == first;
    });
}

/// Reservoir volume per unit of the well's own rate; 1 where it does not flow.
double voidageOf(const Well& well) {
    const double rate = std::abs(heldRate(well, well.givenControl));
    return rate > 0.0 && well.reservoirRate != 0.0 ? std::abs(well.reservoirRate) / rate : 1.0;
}

MovingWell movingWell(const Simulation& s, int number, double factor) {
    const Well& well = s.wells.wells[at(number) - 1];
    const RangeRules rules{changeLimits(s.options), s.options.optimizationMinFlux};
    MovingWell moving;
    moving.well = number;
    moving.before = ownRate(well);
    moving.range = rangeOf(rules, s.optimization.wells[at(number) - 1].deckRate, s.units, s.fluids, s.state,
                           s.pressure.AveragePressure, well);
    moving.share.wanted = moving.before * std::max(factor, 0.0);
    moving.share.least = moving.range.least;
    moving.share.most = moving.range.most;
    return moving;
}

/// Wells of each group, with what their pairs ask for.
std::map<std::string, std::vector<MovingWell>> movingGroups(const std::vector<WellDemand>& demands,
                                                            const Simulation& s) {
    std::map<std::string, std::vector<MovingWell>> groups;
    for (std::size_t w = 0; w < s.wells.wells.size(); ++w) {
        const Well& well = s.wells.wells[w];
        if (!mayChange(well) || !demands[w].joined) continue;
        groups[groupOf(well)].push_back(movingWell(s, static_cast<int>(w) + 1, demands[w].factor));
    }
    return groups;
}

std::string boundOf(const MovingWell& moving) {
    const SharedRate& share = moving.share;
    const double slack = LeastBound * std::max(share.rate, moving.before);
    if (share.rate >= share.most - slack) return moving.range.mostWhy;
    if (share.rate <= share.least + slack) return moving.range.leastWhy;
    return {};
}

/// The group's total over its wells; what bounds left of it before is asked for again. `factor`: of the
/// total. What is missing now stands in `missing`, where the next step is to ask for it again. What the
/// bounds have left over.
double balanceGroup(double factor, const Simulation& s, double& missing, std::vector<MovingWell>& group) {
    const bool byTarget = isInjector(s.wells.wells[at(group.front().well) - 1]) || shareOneControl(group, s);
    double total = byTarget ? missing : 0.0;
    std::vector<SharedRate> shares;
    for (MovingWell& moving : group) {
        moving.share.weight = byTarget ? 1.0 : voidageOf(s.wells.wells[at(moving.well) - 1]);
        total += moving.share.weight * moving.before;
        shares.push_back(moving.share);
    }
    const double left = balanceRates(factor * total, shares);
    missing = byTarget && factor == 1.0 ? std::max(left, 0.0) : 0.0;
    for (std::size_t n = 0; n < group.size(); ++n) group[n].share = shares[n];
    return left;
}

// --- the field pressure ----------------------------------------------------------------------------------

PressureState pressureState(const Simulation& s, double dt) {
    PressureState now;
    now.target = s.options.miscibilityTarget;
    now.average = fieldPressure(s.grid, s.state);
    for (const Well& well : s.wells.wells)
        (well.reservoirRate > 0.0 ? now.injected : now.produced) += std::abs(well.reservoirRate);
    now.storage = fieldStorage(s.grid, s.fluids, s.state);
    now.step = dt;
    return now;
}

/// Of the injection; 1 where no pressure is aimed at.
double factorOfPressure(double dt, Simulation& s) {
    if (!s.options.minimumMiscibility) return 1.0;
    if (!(s.options.miscibilityTarget > 0.0)) {
        if (!s.optimization.toldPressure)
            both(s.console, "RATE OPTIMISATION :: OPTMMP without a target (MMPTARGET) is off");
        s.optimization.toldPressure = true;
        return 1.0;
    }
    const PressureState now = pressureState(s, dt);
    writePressureMap(s, now.average);
    const double factor = injectionFactor(now, s.options.optimizationWmin, s.options.optimizationWmax);
    log(s.console, "MISCIBILITY :: average pressure {} PSIA, target {} PSIA, injection times {}",
        number(now.average), number(now.target), number(factor));
    return factor;
}

// --- the step --------------------------------------------------------------------------------------------

/// Value of what has flowed since the last look; the balance has a row behind every step.
double valueSinceLast(Simulation& s) {
    if (s.balance.rows.empty()) return 0.0;
    const double now = s.balance.rows.back().npv;
    const double value = now - s.optimization.npv;
    s.optimization.npv = now;
    return value;
}

RateReport reportOf(const PairPlan& plan, Simulation& s) {
    RateReport report;
    PhaseAmounts produced, injected;
    for (const Well& well : s.wells.wells) {
        PhaseAmounts& side = isInjector(well) ? injected : produced;
        side.oil += std::abs(well.WellQo);
        side.water += std::abs(well.WellQw);
        side.gas += std::abs(well.WellQg);
    }
    report.waterProduced = produced.water;
    report.oilProduced = produced.oil;
    report.waterInjected = injected.water;
    report.value = valueSinceLast(s);
    report.meanEfficiency = plan.meanEfficiency;
    report.meanTime = plan.meanTime;
    report.timeMisfit = arrivalVariance(plan.set);
    double counted = 0.0;
    for (std::size_t n = 0; n < plan.set.pairs.size(); ++n) {
        const double off = plan.efficiencies[n] - plan.meanEfficiency;
        counted += plan.set.pairs[n].counted;
        report.recoveryMisfit += plan.set.pairs[n].counted * off * off;
        report.pairs.push_back({plan.set.pairs[n], plan.efficiencies[n], plan.changes[n]});
    }
    if (counted > 0.0) report.recoveryMisfit /= counted;
    return report;
}

/// Factors of all wells behind the balance, by number less 1; 1 where a well stays.
std::vector<double> factorsOf(const std::map<std::string, std::vector<MovingWell>>& groups,
                              std::size_t wells) {
    std::vector<double> factors(wells, 1.0);
    for (const auto& [name, group] : groups)
        for (const MovingWell& moving : group)
            factors[at(moving.well) - 1] = moving.share.rate / moving.before;
    return factors;
}

/// Nothing worth a turn of the valves. A change of the whole injection is one.
bool rateStays(const PairPlan& plan, const std::vector<double>& factors, double norm, const Simulation& s) {
    const RunOptions& o = s.options;
    if (o.equalArrival) return norm < o.optimizationTolerance;
    const std::vector<double> none(plan.changes.size(), 0.0), same(factors.size(), 1.0);
    return staysAsItIs(norm, o.optimizationTolerance, expectedOutput(plan.set.pairs, none, same),
                       expectedOutput(plan.set.pairs, plan.changes, factors));
}

void apply(const std::map<std::string, std::vector<MovingWell>>& groups, RateReport& report, Simulation& s) {
    for (const auto& [name, group] : groups)
        for (const MovingWell& moving : group) {
            OptimizedWell& kept = s.optimization.wells[at(moving.well) - 1];
            report.wells.push_back(
                {moving.well, kept.deckRate, moving.before, moving.share.rate, boundOf(moving)});
            setOwnRate(moving.share.rate, s.wells.wells[at(moving.well) - 1]);
            kept.rate = moving.share.rate;
        }
    std::sort(report.wells.begin(), report.wells.end(),
              [](const ToldWell& a, const ToldWell& b) { return a.well < b.well; });
}

void noteChange(RateReport& report, Simulation& s) {
    report.changed = true;
    s.optimization.changes += 1;
    s.optimization.lastChange = s.clock.time;
    s.clock.stepsSinceEvent = 0;  // the pressure is solved anew
    tellRateChanges(report, s);
    keepControls(0, s);
}

/// What wells at their bounds left of a total is told once.
void tellShort(double missing, std::string_view what, bool& told, Simulation& s) {
    if (!(std::abs(missing) > 0.0) || told) return;
    told = true;
    both(s.console, "RATE OPTIMISATION :: wells at their bounds cannot take the whole {}; see BOUND in {}",
         what, outputFileName(s.outputs.prefix, outputName(OutputFile::RateChanges)));
}

void moveRates(const PairPlan& plan, double injection, RateReport& report, Simulation& s) {
    std::vector<WellDemand> demands = wellDemands(s.wells.wells.size(), plan.set.pairs, plan.changes);
    if (injection != 1.0)  // every injector takes part in the field's pressure
        for (std::size_t w = 0; w < demands.size(); ++w)
            demands[w].joined = demands[w].joined || isInjector(s.wells.wells[w]);
    auto groups = movingGroups(demands, s);
    std::map<std::string, double> missing = s.optimization.left;
    for (auto& [name, group] : groups) {
        const bool injects = name != Production;
        const double left = balanceGroup(injects ? injection : 1.0, s, missing[name], group);
        if (injects && injection != 1.0 && left != 0.0)
            log(s.console,
                "MISCIBILITY :: injectors at their bounds take {} a day less than the pressure asks for",
                number(left / s.units.liquidRate));
    }
    const std::vector<double> factors = factorsOf(groups, s.wells.wells.size());
    report.norm = changeNorm(factors);
    if (groups.empty() || (injection == 1.0 && rateStays(plan, factors, report.norm, s))) return;
    s.optimization.left = missing;
    for (const auto& [name, left] : missing) {
        const bool injects = name != Production;
        tellShort(left, injects ? "injection" : "production",
                  injects ? s.optimization.toldInjectionShort : s.optimization.toldProductionShort, s);
    }
    apply(groups, report, s);
    noteChange(report, s);
}

/// The step ends where one of the time tables does: the parts that it was taken in turn no valves.
bool endsTableStep(const Simulation& s) {
    return std::abs(s.clock.time - tableTime(s.schedule.stepEnd, s.clock.tstepIndex + 1)) <=
           3.0 * TimeTolerance;
}

/// Days that the rates of the next step will hold.
double nextLength(double dt, const Simulation& s) {
    const double length = tableTime(s.schedule.stepLength, s.clock.tstepIndex + 1);
    return std::isfinite(length) && length > 0.0 ? length : dt;
}

bool isDue(int report, const Simulation& s) {
    const RunOptions& o = s.options;
    if (s.clock.time >= s.clock.endTime - TimeTolerance) return false;
    if (!o.equalArrival && report < o.optimizationStart) return false;
    const double last = s.optimization.lastChange;
    return last < 0.0 || s.clock.time >= last + o.rateInterval - TimeTolerance;
}

void tellWithoutLines(Simulation& s) {
    if (hasLines(s.options) || s.optimization.toldWithoutLines || !weighsPairs(s.options)) return;
    s.optimization.toldWithoutLines = true;
    warn(s.console, "WARNING :: RATES STAY AS THE SCHEDULE HAS THEM, FDMETHOD {} HAS NO STREAMLINES",
         s.options.method);
}

OptimizedWell optimizedWell(const Well& well) {
    return {well.WellName, well.givenControl, ownRate(well), ownRate(well)};
}

bool asksTheSame(const OptimizedWell& kept, const Well& well) {
    return kept.name == well.WellName && kept.control == well.givenControl &&
           std::abs(kept.deckRate - ownRate(well)) <= TimeTolerance * kept.deckRate;
}

}  // namespace

void startRateOptimization(Simulation& s) {
    if (!optimizesRates(s.options)) return;
    if (s.options.rateOptimization && allowsNothing(changeLimits(s.options))) {
        lineToBoth(s.console, "ERROR :: Optimization of WAFs activated but max/min dq set to zero.");
        hardStop(s.console);
    }
    s.optimization = {};
    tellWithoutLines(s);
    if (s.options.npvOptimization && !(s.options.productionPrice.oil > s.options.productionPrice.water))
        warn(s.console, "WARNING :: NPVOPT WITHOUT A PRICE OF OIL ABOVE THAT OF WATER CHANGES NO RATES");
    for (const Well& well : s.wells.wells) s.optimization.wells.push_back(optimizedWell(well));
    keepControls(s.clock.wellChangeIndex + 1, s);
}

void optimizeRates(int report, double dt, Simulation& s) {
    if (!optimizesRates(s.options)) return;
    if (!endsTableStep(s) && s.clock.time < s.clock.endTime - TimeTolerance) return;
    const bool weighs = weighsPairs(s.options) && hasLines(s.options) && !s.wells.wells.empty();
    const bool due = isDue(report, s);
    const PairPlan plan = weighs ? planOf(s) : PairPlan{};
    RateReport told = reportOf(plan, s);
    if (due) moveRates(plan, factorOfPressure(nextLength(dt, s), s), told, s);
    if (!weighs) return;
    s.optimization.steps += 1;
    writeRateStep(told, s);
}

void keepGivenRates(int entry, Simulation& s) {
    if (!optimizesRates(s.options)) return;
    OptimizationRecord& record = s.optimization;
    for (std::size_t w = 0; w < s.wells.wells.size(); ++w) {
        Well& well = s.wells.wells[w];
        if (w >= record.wells.size()) record.wells.push_back(optimizedWell(well));
        OptimizedWell& kept = record.wells[w];
        if (!asksTheSame(kept, well)) {
            kept = optimizedWell(well);
            record.left.clear();
        } else if (kept.rate != kept.deckRate && kept.rate > 0.0) {
            setOwnRate(kept.rate, well);
        }
    }
    keepControls(entry, s);
}

void takeGivenRates(const OptimizationRecord& record, WellRecord& wells) {
    for (std::size_t w = 0; w < std::min(wells.wells.size(), record.wells.size()); ++w) {
        const OptimizedWell& kept = record.wells[w];
        Well& well = wells.wells[w];
        if (asksTheSame(kept, well) && kept.rate != kept.deckRate && kept.rate > 0.0)
            setOwnRate(kept.rate, well);
    }
}

void finishRateOptimization(const Simulation& s) {
    if (optimizesRates(s.options)) writeRateSchedule(s);
}

}  // namespace kvr
