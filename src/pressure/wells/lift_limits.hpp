#pragma once

#include "base/units.hpp"
#include "deck/lift_table.hpp"
#include "fluid/tables.hpp"
#include "pressure/records/cell_state.hpp"
#include "pressure/wells/wells.hpp"

#include <array>

namespace kvr {

/// Surface rates of a well without sign.
struct LiftRates {
    double oil = 0.0, water = 0.0, gas = 0.0;
};

/// Bottom-hole pressure of a table, linear along every axis between its values, the end pieces extended.
double liftBhp(const LiftTable& table, const LiftRates& rates, double head, double lift);

/// The pressure at the tubing head that gives a bottom-hole pressure: along the axis of heads as it stands at
/// the rates, which has to rise.
double liftHead(const LiftTable& table, const LiftRates& rates, double bhp, double lift);

/// Pressure limits of the wells with a limit at the tubing head, cells as they stand: of a producer the
/// lowest pressure b at which b is what the table says for the rates that the well gives at b, where that is
/// above its own limit; where the table asks for more than the well has at any rate, the pressure at which it
/// gives nothing. Of an injector the pressure at which the table meets its rates, where below its own limit.
/// Tables stand at their own depths, the weight of the bore's fluid between. Wells held at their limit go
/// there.
void settleLiftLimits(const UnitSystem& units, const FluidTables& tables, const CellState& state,
                      double averagePressure, WellRecord& wells);

/// Pressure at the tubing head of a well by its present rates and bottom-hole pressure, psia; 0 without a
/// table or without flow.
double tubingHead(const Well& well);

}  // namespace kvr
