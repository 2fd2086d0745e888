#include "optimization/well_ranges.hpp"

#include "base/constants.hpp"
#include "base/text.hpp"
#include "pressure/wells/rate_limits.hpp"
#include "pressure/wells/well_target.hpp"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace kvr {

namespace {

struct ControlTarget {
    std::string_view control;
    double Well::*target;
};
constexpr ControlTarget ProducerTargets[] = {{"orat", &Well::targetOil},
                                             {"wrat", &Well::targetWater},
                                             {"grat", &Well::targetGas},
                                             {"lrat", &Well::targetLiquid},
                                             {"resv", &Well::targetResv}};
constexpr ControlTarget InjectorTargets[] = {
    {"oil", &Well::targetOil}, {"wat", &Well::targetWater}, {"gas", &Well::targetGas}};

template <class Rows>
double Well::*targetIn(const Rows& rows, std::string_view word) {
    for (const ControlTarget& row : rows)
        if (row.control == word) return row.target;
    return nullptr;
}

/// Where the well keeps the rate of the schedule's control; null where it has none.
double Well::*ownTarget(const Well& well) {
    if (isInjector(well))
        return well.givenControl == "rate" ? targetIn(InjectorTargets, well.InjectFluid) : nullptr;
    return targetIn(ProducerTargets, well.givenControl);
}

void lower(double rate, std::string_view why, WellRange& range) {
    if (!(rate < range.most)) return;
    range.most = std::max(rate, 0.0);
    range.mostWhy = why;
}

void raise(double rate, std::string_view why, WellRange& range) {
    if (!(rate > range.least)) return;
    range.least = rate;
    range.leastWhy = why;
}

void keepRateLimits(const Well& well, WellRange& range) {
    if (isInjector(well)) {
        const double reservoir = std::abs(well.reservoirRate);
        const double given = std::abs(heldRate(well, "rate"));
        if (well.holdsLimits && well.targetResv > 0.0 && reservoir > 0.0)
            lower(given * well.targetResv / reservoir, "RESV LIMIT", range);
        return;
    }
    const double given = std::abs(heldRate(well, well.givenControl));
    for (const std::string_view control : {"orat", "wlim", "grat", "lrat", "resv"}) {
        if (control == well.givenControl) continue;
        const auto limit = rateLimit(well, control);
        if (!limit) continue;
        const double held = std::abs(heldRate(well, control));
        const std::string word = control == "wlim" ? "WRAT" : toUpper(control);
        if (held > 0.0) lower(given * std::abs(limit->target) / held, word + " LIMIT", range);
    }
}

}  // namespace

bool mayChange(const Well& well) {
    return !well.shut && !well.connections.empty() && ownTarget(well) != nullptr && ownRate(well) > 0.0;
}

double ownRate(const Well& well) {
    double Well::*const target = ownTarget(well);
    return target == nullptr ? 0.0 : std::abs(well.*target);
}

WellRange rangeOf(const RangeRules& rules, double deckRate, const UnitSystem& units,
                  const FluidTables& tables, const CellState& state, double averagePressure,
                  const Well& well) {
    const double rate = ownRate(well);
    WellRange range;
    range.least = rate * (1.0 + std::min(rules.change.wmin, 0.0));
    range.leastWhy = "WMIN";
    range.most = rate * (1.0 + std::max(rules.change.wmax, 0.0));
    range.mostWhy = "WMAX";
    raise(std::min(rules.minimumPercent / Percent * std::abs(deckRate), rate), "QWMIN", range);
    const WellInflow inflow = wellInflow(units, tables, state, averagePressure, well,
                                         isInjector(well) ? "rate" : well.givenControl);
    if (!inflow.starts.empty()) lower(rateAtBhp(inflow, well.BhpLimit), "BHP LIMIT", range);
    keepRateLimits(well, range);
    if (range.least > range.most) {
        range.least = range.most;
        range.leastWhy = range.mostWhy;
    }
    return range;
}

void setOwnRate(double rate, Well& well) {
    double Well::*const target = ownTarget(well);
    if (target == nullptr) return;
    const double sign = isInjector(well) ? 1.0 : -1.0;
    well.*target = sign * rate;
    if (well.deckControl == well.givenControl) {
        well.TargetRate = sign * rate;
        return;
    }
    setRateControl({well.givenControl, sign * rate}, well);
}

}  // namespace kvr
