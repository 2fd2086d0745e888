#include "base/constants.hpp"
#include "pressure/wells/well_controls.hpp"
#include "pressure/wells/well_rates.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double ResetDrawdown = 500.0;  // psi between the cells and a bottom-hole pressure put anew

bool pastLimit(const Well& well) {
    return isInjector(well) ? well.Bhp > well.BhpLimit : well.Bhp < well.BhpLimit;
}

bool isBad(double bhp) {
    return !std::isfinite(bhp) || bhp <= 0.0;
}

double resetValue(const CellState& state, const Well& well) {
    const double resting = restingBhp(state, well);
    return isInjector(well) ? resting + ResetDrawdown : std::max(resting - ResetDrawdown, StandardPressure);
}

}  // namespace

void tellSwitch(const Console& console, const Well& well, const std::string& from) {
    both(console, " WELL CONTROL :: {} : {} -> {}, BHP limit {} PSIA", well.WellName, from, well.WellControl,
         number(well.BhpLimit));
}

void initialiseBottomHolePressures(const CellState& state, WellRecord& wells) {
    for (Well& well : wells.wells) {
        if (!isRateControlled(well))
            well.Bhp = well.BhpLimit;
        else if (well.Bhp <= 0.0)
            well.Bhp = restingBhp(state, well);
    }
}

bool exceedsTargetAtLimit(const Well& well) {
    const bool heldAtLimit = well.WellControl == "bhp" && well.deckControl != "bhp" && !well.shut;
    return heldAtLimit && std::abs(well.rateAtDeckControl) > std::abs(aimedRate(well));
}

void releaseWellFromLimit(const Console& console, Well& well, WellRecord& wells) {
    well.WellControl = well.deckControl;
    ++wells.RateWellCount;
    tellSwitch(console, well, "bhp");
}

void releaseWellsFromLimit(const Console& console, WellRecord& wells) {
    for (Well& well : wells.wells)
        if (exceedsTargetAtLimit(well)) releaseWellFromLimit(console, well, wells);
}

void holdWellAtLimit(const Console& console, Well& well, WellRecord& wells) {
    well.WellControl = "bhp";
    well.Bhp = well.BhpLimit;
    --wells.RateWellCount;
    tellSwitch(console, well, well.deckControl);
}

bool switchWellsAtLimit(const Console& console, WellRecord& wells) {
    bool switched = false;
    for (Well& well : wells.wells) {
        if (well.shut || !isRateControlled(well) || !pastLimit(well)) continue;
        holdWellAtLimit(console, well, wells);
        switched = true;
    }
    return switched;
}

bool repairBottomHolePressures(const Console& console, const CellState& state, WellRecord& wells) {
    for (Well& well : wells.wells) {
        if (!isBad(well.Bhp) || well.shut) continue;
        if (well.bhpReset) {
            lineToLog(console, " ERROR :: CANNOT HOLD BHP..");
            lineToScreen(console, " Error :: Cannot hold BHP..");
            return false;
        }
        both(console, " ERROR :: Floating point of BHP -> {}", number(well.Bhp));
        well.Bhp = resetValue(state, well);
        well.bhpReset = true;
        both(console, "          Change BHP ...        -> {}", number(well.Bhp));
    }
    return true;
}

void clearBottomHoleResets(WellRecord& wells) {
    for (Well& well : wells.wells) well.bhpReset = false;
}

}  // namespace kvr
