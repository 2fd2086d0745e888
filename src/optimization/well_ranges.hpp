#pragma once

#include "base/units.hpp"
#include "fluid/tables.hpp"
#include "optimization/reallocation.hpp"
#include "pressure/records/cell_state.hpp"
#include "pressure/wells/wells.hpp"

#include <string>
#include <string_view>

namespace kvr {

/// The rate that the schedule's own control of a well holds, positive, and whether the optimisation may
/// change it: an open well whose control is a rate. Volume a day, reservoir volume under "resv".
double ownRate(const Well& well);
bool mayChange(const Well& well);

/// Between which rates a well may be put in one step, and what bounds it there.
struct WellRange {
    double least = 0.0, most = 0.0;
    std::string leastWhy, mostWhy;
};

/// Numbers of the deck beside the well's own.
struct RangeRules {
    ChangeLimits change;
    double minimumPercent = 0.0;  // of the deck's rate
};

/// wmin and wmax of the rate, the minimum share of the deck's rate, what the well gives at its
/// bottom-hole pressure limit with cells as they stand, and its limits of other rates with the phases in
/// the proportion that they have.
WellRange rangeOf(const RangeRules& rules, double deckRate, const UnitSystem& units,
                  const FluidTables& tables, const CellState& state, double averagePressure,
                  const Well& well);

/// Puts the well under the schedule's control at `rate`; the pressure limit that holds it goes on to do so.
void setOwnRate(double rate, Well& well);

}  // namespace kvr
