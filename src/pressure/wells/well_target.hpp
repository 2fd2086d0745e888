#pragma once

#include "base/units.hpp"
#include "fluid/tables.hpp"
#include "pressure/records/cell_state.hpp"
#include "pressure/wells/wells.hpp"

#include <string_view>
#include <vector>

namespace kvr {

/// What a control word holds at the target, as shares of the phase rates of a well. "wrat" holds the sum of
/// all surface rates there, as in the pressure equation, "wlim" water alone; "bhp" holds none of them.
struct ControlShares {
    double water = 0.0, oil = 0.0, gas = 0.0, reservoir = 0.0;
};
ControlShares controlShares(std::string_view control);

/// The rate itself, from the sums of the well: surface volumes a day, reservoir volume under "resv".
double controlledRate(const Well& well, std::string_view control);

/// A connection that can give something of the controlled rate.
struct FlowStart {
    double at = 0.0;     // psi, s (p - head): along s from here on it flows
    double slope = 0.0;  // controlled rate a day and psi, above 0
};

/// Controlled rate of a well against its bottom-hole pressure b, cells as they stand:
///   |q|(b) = sum of slope max(0, s b - at),   s = 1 for an injector, -1 for a producer
/// It rises with s b from 0, in straight pieces.
struct WellInflow {
    double s = 1.0;
    std::vector<FlowStart> starts;  // rising; empty where no pressure would make the well give anything
};

/// Under its rate control, or under another one.
WellInflow wellInflow(const UnitSystem& units, const FluidTables& tables, const CellState& state,
                      double averagePressure, const Well& well);
WellInflow wellInflow(const UnitSystem& units, const FluidTables& tables, const CellState& state,
                      double averagePressure, const Well& well, std::string_view control);

double rateAtBhp(const WellInflow& inflow, double bhp);

/// Bottom-hole pressure, psia, of a rate above 0; there must be a connection that flows.
double bhpOfRate(const WellInflow& inflow, double rate);

}  // namespace kvr
