#pragma once

#include "base/console.hpp"
#include "base/units.hpp"
#include "fluid/tables.hpp"
#include "pressure/records/cell_state.hpp"
#include "pressure/wells/wells.hpp"

#include <optional>
#include <string_view>

namespace kvr {

// Rates of a producer that are limits beside its control: whichever of them, or the control, lets it give
// least is its rate control (deckControl, TargetRate). The limit of the water rate is "wlim", which holds
// water alone; "wrat" of the deck holds the sum of all.

// What groups leave to the well counts as the deck's own limits do.

/// A rate that a well may not pass, and the control that holds it there.
struct RateLimit {
    std::string_view control;
    double target = 0.0;  // with the sign of TargetRate
};

/// The limit of a control, of the deck's or one beside it; none where the well has no such limit.
std::optional<RateLimit> rateLimit(const Well& well, std::string_view control);

/// The rate that the solve holds under a control: the sum of all under "wrat".
double heldRate(const Well& well, std::string_view control);

/// Largest share by which the present rates pass a limit, and that limit; 0 or less: none is passed. The
/// rate control of the well is left out.
struct PassedLimit {
    RateLimit limit;
    double share = 0.0;
};
PassedLimit passedLimit(const Well& well);

/// The limit that takes the least drawdown to be reached, cells as they stand; none where there is no limit.
std::optional<RateLimit> tightestLimit(const UnitSystem& units, const FluidTables& tables,
                                       const CellState& state, double averagePressure, const Well& well);
/// The same, or the present control where there is none.
RateLimit mostRestrictive(const UnitSystem& units, const FluidTables& tables, const CellState& state,
                          double averagePressure, const Well& well);

/// The limit becomes the rate control of the well; a well held at its pressure limit stays there.
void setRateControl(const RateLimit& limit, Well& well);

/// At the start of a step: a limit that the rates of the step before have passed becomes the rate control; of
/// a well without rates the one that takes the least drawdown does. Wells whose control has been chosen for
/// this pass over the step keep it. One line at each switch.
void holdMostRestrictive(const Console& console, const UnitSystem& units, const FluidTables& tables,
                         const CellState& state, double averagePressure, WellRecord& wells);

}  // namespace kvr
