#pragma once

#include "base/console.hpp"
#include "base/units.hpp"
#include "fluid/tables.hpp"
#include "model/connections.hpp"
#include "model/grid.hpp"
#include "pressure/cell_state.hpp"
#include "pressure/wells.hpp"

namespace kvr {

/// Hydrostatic head of every connection from the first one of its well, down the list.
void WellHead(const GridModel& grid, const ConnectionTable& connections, const CellState& state,
              WellRecord& wells);

/// Connection rates, well sums (surface and reservoir) and the bulk-volume average pressure.
void UpdateWellRates(const UnitSystem& units, const GridModel& grid, const FluidTables& tables,
                     const CellState& state, WellRecord& wells, PressureStage& stage);

/// Coefficients of one connection in the pressure equation, per psi of drawdown. dp = Bhp + head - p;
/// all zero when the connection would flow back (injector dp < 0, producer dp > 0) or the well is shut.
struct ConnectionCoefficients {
    double dp = 0.0;            // psi, 0 for a connection without flow
    double reservoir = 0.0;     // WI * FlowUnit * total mobility: rb/day/psi
    double surfaceOil = 0.0;    // stb/day/psi
    double surfaceWater = 0.0;  // stb/day/psi
    double surfaceGas = 0.0;    // surface barrels/day/psi, dissolved gas included for producers
};
ConnectionCoefficients connectionCoefficients(const UnitSystem& units, const FluidTables& tables,
                                              const CellState& state, double averagePressure,
                                              const Well& well, const WellConnection& connection);

/// Total surface rate that the row of a rate well aims at, in the same units as the sum of its
/// connection terms (oil + water + gas; reservoir volume for "resv").
double rowTarget(const Well& well);

}  // namespace kvr
