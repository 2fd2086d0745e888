#pragma once

#include "base/units.hpp"
#include "fluid/tables.hpp"
#include "model/grid.hpp"
#include "pressure/records/cell_state.hpp"
#include "pressure/records/surface_volumes.hpp"
#include "pressure/wells/wells.hpp"

#include <string_view>

namespace kvr {

/// Connection rates, well sums (surface and reservoir) and the bulk-volume average pressure. A shut well
/// gets rates of 0 and its resting pressure as Bhp. A rate well all of whose connections would
/// flow back has no coefficient that could move it: its Bhp is put just past them first.
void UpdateWellRates(const UnitSystem& units, const GridModel& grid, const FluidTables& tables,
                     const CellState& state, WellRecord& wells, PressureStage& stage);

/// Bhp + head - p of a connection, psi.
double drawdown(const CellState& state, const Well& well, const WellConnection& connection);

/// The well is open and would not flow back: an injector at 0 or above, a producer at 0 or below.
bool flowsAt(const Well& well, double drawdown);

/// What the connection lets through: WI * FlowUnit * total mobility of its cell, reservoir volume/day/psi; of
/// an aquifer its own flow, whatever the mobility.
double reservoirCoefficient(const UnitSystem& units, const CellState& state,
                            const WellConnection& connection);

/// Coefficients of one connection in the pressure equation, per psi of drawdown. dp = Bhp + head - p;
/// all zero when the connection would flow back (injector dp < 0, producer dp > 0) or the well is shut.
struct ConnectionCoefficients {
    double dp = 0.0;            // psi, 0 for a connection without flow
    double reservoir = 0.0;     // WI * FlowUnit * total mobility: rb/day/psi
    double surfaceOil = 0.0;    // stb/day/psi
    double surfaceWater = 0.0;  // stb/day/psi
    double surfaceGas = 0.0;    // surface barrels/day/psi, dissolved gas included for producers
};
/// What flows to a connection: mobilities 1/cp, factors and Rs of its cell, for numbers and for numbers with
/// slopes.
template <class Number>
struct ConnectionFluid {
    Number LambdaW, LambdaO, LambdaG;
    Number Bw, Bo, Bg;
    Number Rs;
};
ConnectionFluid<double> fluidAt(const CellState& state, CellId cell);
template <class Number>
Number totalMobility(const ConnectionFluid<Number>& fluid) {
    return fluid.LambdaO + fluid.LambdaW + fluid.LambdaG;
}
/// Surface volumes a day and psi that a producing connection of WI * FlowUnit = flow takes.
template <class Number, class Flow>
SurfaceVolumes<Number> producedTerms(const Flow& flow, const ConnectionFluid<Number>& fluid) {
    const Number oil = flow * fluid.LambdaO / fluid.Bo;
    return {flow * fluid.LambdaW / fluid.Bw, oil, flow * fluid.LambdaG / fluid.Bg + fluid.Rs * oil};
}
/// The factor of the injected phase, which takes the total mobility.
template <class Number>
const Number& injectedFactor(const Well& well, const ConnectionFluid<Number>& fluid) {
    if (well.InjectFluid == "gas") return fluid.Bg;
    return well.InjectFluid == "oil" ? fluid.Bo : fluid.Bw;
}

ConnectionCoefficients connectionCoefficients(const UnitSystem& units, const FluidTables& tables,
                                              const CellState& state, double averagePressure,
                                              const Well& well, const WellConnection& connection);
/// The same whichever way the connection would flow, with dp 0.
ConnectionCoefficients openCoefficients(const UnitSystem& units, const FluidTables& tables,
                                        const CellState& state, double averagePressure, const Well& well,
                                        const WellConnection& connection);

/// What a connection adds to the row of its rate well, per psi: the sum of the surface terms, or the
/// reservoir term under "resv".
double rowTerm(const Well& well, const ConnectionCoefficients& coefficients);

/// Total surface rate that the row of a rate well aims at, in the same units as the sum of its
/// connection terms (oil + water + gas; reservoir volume for "resv"). The phases that the control does
/// not name stand in it as they would flow at the target: the present ones times target over the present
/// named rate. Held at their present rates instead, they lead to the same well, but by a factor of one
/// minus the named phase's share an iteration.
double rowTarget(const Well& well);

/// The rate that a control word names, from the well sums: WellQo of "orat", ...; 0 for "bhp".
double namedRate(const Well& well, std::string_view control);

/// Mean pressure of the connection cells, psia. Cells that take no part in flow hold 0 and are left out;
/// 0 when no cell is left.
double meanConnectionPressure(const CellState& state, const Well& well);
/// The same at the datum of the well, by the last heads: its bottom-hole pressure without flow.
double restingBhp(const CellState& state, const Well& well);

}  // namespace kvr
