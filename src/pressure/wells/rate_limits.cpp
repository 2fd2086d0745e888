#include "pressure/wells/rate_limits.hpp"

#include "pressure/wells/well_controls.hpp"
#include "pressure/wells/well_rates.hpp"
#include "pressure/wells/well_target.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double LeastExcess = 1e-3;  // of a limit, by which it is passed before it takes over

struct LimitRow {
    std::string_view control;
    double Well::*target;
    double GroupShare::*share;  // null: groups have no such rate
};
constexpr LimitRow Rows[] = {
    {"orat", &Well::targetOil, &GroupShare::oil},   {"wlim", &Well::targetWater, &GroupShare::water},
    {"grat", &Well::targetGas, &GroupShare::gas},   {"lrat", &Well::targetLiquid, &GroupShare::liquid},
    {"resv", &Well::targetResv, &GroupShare::resv}, {"wrat", &Well::targetWater, nullptr}};

/// The deck's own water control and the limit of water are the same number.
bool isHeld(const Well& well, std::string_view control) {
    if (control == well.givenControl) return true;
    if (!well.holdsLimits || control == "wrat") return false;
    return control != "wlim" || well.givenControl != "wrat";
}

/// The smaller of the deck's own rate and what groups leave; infinite where neither holds.
double leastRate(const Well& well, const LimitRow& row) {
    const double left = row.share != nullptr ? well.share.*row.share : NoGroupLimit;
    if (well.*row.target == 0.0 || !isHeld(well, row.control)) return left;
    return std::min(left, std::abs(well.*row.target));
}

template <class Visit>
void forEachLimit(const Well& well, Visit visit) {
    if (isInjector(well) || well.shut) return;
    for (const LimitRow& row : Rows)
        if (const double rate = leastRate(well, row); std::isfinite(rate))
            visit(RateLimit{row.control, -rate});
}

bool flows(const Well& well) {
    return well.WellQo != 0.0 || well.WellQw != 0.0 || well.WellQg != 0.0;
}

double neededBhp(const UnitSystem& units, const FluidTables& tables, const CellState& state,
                 double averagePressure, const Well& well, const RateLimit& limit) {
    const WellInflow inflow = wellInflow(units, tables, state, averagePressure, well, limit.control);
    return inflow.starts.empty() ? -HUGE_VAL : bhpOfRate(inflow, std::abs(limit.target));
}

}  // namespace

std::optional<RateLimit> rateLimit(const Well& well, std::string_view control) {
    std::optional<RateLimit> found;
    forEachLimit(well, [&](const RateLimit& limit) {
        if (limit.control == control) found = limit;
    });
    return found;
}

double heldRate(const Well& well, std::string_view control) {
    return namedRate(well, control == "wrat" ? "rate" : control);
}

PassedLimit passedLimit(const Well& well) {
    PassedLimit passed;
    forEachLimit(well, [&](const RateLimit& limit) {
        if (limit.control == well.deckControl) return;
        const double share = std::abs(heldRate(well, limit.control) / limit.target) - 1.0;
        if (share > passed.share) passed = {limit, share};
    });
    return passed;
}

std::optional<RateLimit> tightestLimit(const UnitSystem& units, const FluidTables& tables,
                                       const CellState& state, double averagePressure, const Well& well) {
    std::optional<RateLimit> best;
    double highest = -HUGE_VAL;
    forEachLimit(well, [&](const RateLimit& limit) {
        const double bhp = neededBhp(units, tables, state, averagePressure, well, limit);
        if (!(bhp > highest)) return;
        highest = bhp;
        best = limit;
    });
    return best;
}

RateLimit mostRestrictive(const UnitSystem& units, const FluidTables& tables, const CellState& state,
                          double averagePressure, const Well& well) {
    return tightestLimit(units, tables, state, averagePressure, well)
        .value_or(RateLimit{well.deckControl, well.TargetRate});
}

void setRateControl(const RateLimit& limit, Well& well) {
    if (isRateControlled(well)) well.WellControl = limit.control;
    well.deckControl = limit.control;
    well.TargetRate = limit.target;
    well.targetFactor = 1.0;
}

void holdMostRestrictive(const Console& console, const UnitSystem& units, const FluidTables& tables,
                         const CellState& state, double averagePressure, WellRecord& wells) {
    for (Well& well : wells.wells) {
        const bool chosen = well.controlChosen;
        well.controlChosen = false;
        if (chosen || well.shut || isInjector(well) || !well.holdsLimits || well.deckControl == "bhp")
            continue;
        const std::string before = well.deckControl;
        if (!flows(well)) {
            const RateLimit best = mostRestrictive(units, tables, state, averagePressure, well);
            if (best.control != before) setRateControl(best, well);
        } else if (const PassedLimit passed = passedLimit(well);
                   passed.share > LeastExcess &&
                   passed.share > std::abs(heldRate(well, before) / well.TargetRate) - 1.0) {
            setRateControl(passed.limit, well);
        }
        if (well.deckControl != before && isRateControlled(well)) tellSwitch(console, well, before);
    }
}

}  // namespace kvr
