#include "implicit/well_switching.hpp"

#include "pressure/wells/well_controls.hpp"

#include <cmath>

namespace kvr {

namespace {

constexpr int MostReturns = 4;        // of one well and attempt
constexpr double ClearExcess = 1e-6;  // of a rate over its target, relative

bool isOpenRateWell(const Well& well) {
    return !well.shut && isRateControlled(well);
}

bool isAtLimit(const Well& well) {
    return isInjector(well) ? well.Bhp >= well.BhpLimit : well.Bhp <= well.BhpLimit;
}

bool givesLessThanTarget(const Well& well) {
    return std::abs(well.rateAtDeckControl) < std::abs(well.TargetRate);
}

bool clearlyExceedsTarget(const Well& well) {
    return exceedsTargetAtLimit(well) &&
           std::abs(well.rateAtDeckControl) > (1.0 + ClearExcess) * std::abs(well.TargetRate);
}

}  // namespace

void clipToLimits(WellRecord& wells) {
    for (Well& well : wells.wells)
        if (isOpenRateWell(well) && std::isfinite(well.Bhp) && isAtLimit(well)) well.Bhp = well.BhpLimit;
}

bool switchWells(const Console& console, WellRecord& wells, ImplicitWork& work) {
    bool switched = false;
    for (std::size_t w = 0; w < wells.wells.size(); ++w) {
        Well& well = wells.wells[w];
        if (isOpenRateWell(well) && isAtLimit(well) && givesLessThanTarget(well)) {
            holdWellAtLimit(console, well, wells);
            switched = true;
        } else if (clearlyExceedsTarget(well) && work.returns[w] < MostReturns) {
            releaseWellFromLimit(console, well, wells);
            ++work.returns[w];
            switched = true;
        }
    }
    return switched;
}

}  // namespace kvr
