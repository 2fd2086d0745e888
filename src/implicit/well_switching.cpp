#include "implicit/well_switching.hpp"

#include "pressure/wells/rate_limits.hpp"
#include "pressure/wells/well_controls.hpp"
#include "pressure/wells/well_target.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr std::uint8_t FreeSwitches =
    6;  // of one well and attempt; with the last one it is held at its limit
constexpr std::uint8_t Released = FreeSwitches + 1;  // to its rate, for the rest of the attempt
constexpr double SwitchMargin = 1e-7;      // of the target, between leaving the limit and going to it
constexpr double LargestRateError = 1e-6;  // relative

bool hasRateTarget(const Well& well) {
    return !well.shut && well.deckControl != "bhp";
}

bool isPastLimit(const Well& well) {
    return isInjector(well) ? well.Bhp > well.BhpLimit : well.Bhp < well.BhpLimit;
}

double withinLimit(const Well& well, double bhp) {
    return isInjector(well) ? std::min(bhp, well.BhpLimit) : std::max(bhp, well.BhpLimit);
}

void setControl(bool rate, Well& well, WellRecord& wells) {
    wells.RateWellCount += rate ? 1 : -1;
    well.WellControl = rate ? well.deckControl : "bhp";
}

/// The limit lets the well give its target, by a margin that depends on where it stands.
bool targetInReach(const WellInflow& inflow, const Well& well) {
    const double margin = isRateControlled(well) ? -SwitchMargin : SwitchMargin;
    return rateAtBhp(inflow, well.BhpLimit) >= (1.0 + margin) * std::abs(well.TargetRate);
}

/// True when the well goes over to the other control.
bool chooseControl(const WellInflow& inflow, Well& well, WellRecord& wells, std::uint8_t& switches) {
    bool rate = targetInReach(inflow, well);
    if (switches == FreeSwitches) rate = false;
    if (switches == Released) rate = !inflow.starts.empty();
    if (rate == isRateControlled(well)) return false;
    if (switches < FreeSwitches) ++switches;
    setControl(rate, well, wells);
    return true;
}

double settledBhp(const WellInflow& inflow, const Well& well, std::uint8_t switches) {
    if (!isRateControlled(well)) return well.BhpLimit;
    const double bhp = bhpOfRate(inflow, std::abs(well.TargetRate));
    return switches == Released ? bhp : withinLimit(well, bhp);
}

/// The limit of rates that lets the well give least becomes its rate control. True when that changes its
/// equation.
bool chooseRate(const UnitSystem& units, const FluidTables& tables, const CellState& state,
                double averagePressure, Well& well, std::uint8_t& switches) {
    if (!well.holdsLimits || isInjector(well) || switches >= FreeSwitches) return false;
    const RateLimit best = mostRestrictive(units, tables, state, averagePressure, well);
    if (best.control == well.deckControl) return false;
    ++switches;
    setRateControl(best, well);
    return isRateControlled(well);
}

double rateError(const Well& well) {
    return std::abs(controlledRate(well, well.deckControl)) / std::abs(well.TargetRate) - 1.0;
}

bool obeys(const Well& well) {
    if (!hasRateTarget(well)) return true;
    if (!isRateControlled(well)) return rateError(well) <= LargestRateError;
    return !isPastLimit(well) && std::abs(rateError(well)) <= LargestRateError;
}

}  // namespace

bool settleWells(const UnitSystem& units, const FluidTables& tables, const CellState& state,
                 double averagePressure, WellRecord& wells, ImplicitWork& work) {
    bool switched = false;
    for (std::size_t w = 0; w < wells.wells.size(); ++w) {
        Well& well = wells.wells[w];
        if (!hasRateTarget(well)) continue;
        switched =
            chooseRate(units, tables, state, averagePressure, well, work.switchesOfRate[w]) || switched;
        const WellInflow inflow = wellInflow(units, tables, state, averagePressure, well);
        switched = chooseControl(inflow, well, wells, work.switchesOfWell[w]) || switched;
        well.Bhp = settledBhp(inflow, well, work.switchesOfWell[w]);
    }
    return switched;
}

bool releaseHeldWells(WellRecord& wells, ImplicitWork& work) {
    bool released = false;
    for (std::size_t w = 0; w < wells.wells.size(); ++w) {
        if (work.switchesOfWell[w] != FreeSwitches || obeys(wells.wells[w])) continue;
        work.switchesOfWell[w] = Released;
        released = true;
    }
    return released;
}

bool wellsObey(const WellRecord& wells) {
    return std::all_of(wells.wells.begin(), wells.wells.end(), obeys);
}

void tellSwitches(const Console& console, const WellRecord& before, const WellRecord& now) {
    for (std::size_t w = 0; w < now.wells.size(); ++w)
        if (now.wells[w].WellControl != before.wells[w].WellControl)
            tellSwitch(console, now.wells[w], before.wells[w].WellControl);
}

}  // namespace kvr
