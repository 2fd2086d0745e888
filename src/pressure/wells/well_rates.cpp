#include "pressure/wells/well_rates.hpp"

#include "base/constants.hpp"
#include "fluid/black_oil.hpp"
#include "pressure/wells/well_heads.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kvr {

namespace {

constexpr double RestartDrawdown = 1.0;  // psi past the cells for a rate well that would only flow back

void setRates(const ConnectionCoefficients& c, WellConnection& connection) {
    connection.ConnQo = c.surfaceOil * c.dp;
    connection.ConnQw = c.surfaceWater * c.dp;
    connection.ConnQg = c.surfaceGas * c.dp;
    connection.reservoirRate = c.reservoir * c.dp;
}

/// Rates of every connection and their sums; false when no connection has a coefficient.
bool sumConnections(const UnitSystem& units, const FluidTables& tables, const CellState& state,
                    double averagePressure, Well& well) {
    bool flows = false;
    well.WellQo = well.WellQw = well.WellQg = well.reservoirRate = 0.0;
    for (WellConnection& connection : well.connections) {
        const ConnectionCoefficients c =
            connectionCoefficients(units, tables, state, averagePressure, well, connection);
        setRates(c, connection);
        flows = flows || c.reservoir > 0.0;
        well.WellQo += connection.ConnQo;
        well.WellQw += connection.ConnQw;
        well.WellQg += connection.ConnQg;
        well.reservoirRate += connection.reservoirRate;
    }
    return flows;
}

/// Puts Bhp past every connection that can flow. False when there is none.
bool restartRateWell(const CellState& state, Well& well) {
    const double sign = isInjector(well) ? 1.0 : -1.0;
    double furthest = -std::numeric_limits<double>::infinity();
    for (const WellConnection& connection : well.connections)
        if (connection.ConnWI > 0.0)
            furthest = std::max(furthest, sign * (state.Pressure[connection.ConnCell] - connection.ConnHead));
    if (!std::isfinite(furthest)) return false;
    well.Bhp = sign * (furthest + RestartDrawdown);
    return true;
}

double averagePressure(const GridModel& grid, const CellState& state, double unchanged) {
    double volume = 0.0, weighted = 0.0;
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        if (grid.Active[cell] == 0) continue;
        volume += grid.BulkVolume[cell];
        weighted += grid.BulkVolume[cell] * state.Pressure[cell];
    }
    return volume > 0.0 ? weighted / volume : unchanged;
}

/// Surface terms of the stream of components that an injector brings: as gas, or as oil.
void streamTerms(const Well& well, const MixtureYield& mixture, ConnectionCoefficients& c) {
    (well.InjectFluid == "gas" ? c.surfaceGas : c.surfaceOil) = c.reservoir / mixture.injectedFactor;
}

/// Surface terms of a producer of components.
void mixtureTerms(double flow, const CellState& state, CellId cell, const MixtureYield& mixture,
                  ConnectionCoefficients& c) {
    const double liquid = flow * state.LambdaO[cell], vapour = flow * state.LambdaG[cell];
    c.surfaceOil = liquid * mixture.oilOfLiquid + vapour * mixture.oilOfVapour;
    c.surfaceGas = liquid * mixture.gasOfLiquid + vapour * mixture.gasOfVapour;
    c.surfaceWater = flow * state.LambdaW[cell] / state.Bw[cell];
}

/// Surface terms of an injector: the injected phase takes the total mobility of the cell.
void injectorTerms(const FluidTables& all, const CellState& state, double averagePressure, const Well& well,
                   CellId cell, ConnectionCoefficients& c) {
    const FluidTables& tables = pvtAt(all, cell);
    ConnectionFluid<double> fluid = fluidAt(state, cell);
    if (well.WellControl == "resv") {  // only the injected phase need have a table
        if (well.InjectFluid == "gas")
            fluid.Bg = GasFvf(tables, averagePressure);
        else if (well.InjectFluid == "oil")
            fluid.Bo = OilFvf(tables, averagePressure, state.Pb[cell]);
        else
            fluid.Bw = WaterFvf(tables, averagePressure);
    }
    const double surface = c.reservoir / injectedFactor(well, fluid);
    if (well.InjectFluid == "gas")
        c.surfaceGas = surface;
    else if (well.InjectFluid == "oil")
        c.surfaceOil = surface;
    else
        c.surfaceWater = surface;
}

}  // namespace

ConnectionFluid<double> fluidAt(const CellState& state, CellId cell) {
    return {state.LambdaW[cell], state.LambdaO[cell], state.LambdaG[cell], state.Bw[cell],
            state.Bo[cell],      state.Bg[cell],      state.Rs[cell]};
}

double drawdown(const CellState& state, const Well& well, const WellConnection& connection) {
    return well.Bhp + connection.ConnHead - state.Pressure[connection.ConnCell];
}

bool flowsAt(const Well& well, double drawdown) {
    return !well.shut && (isInjector(well) ? drawdown >= 0.0 : drawdown <= 0.0);
}

double reservoirCoefficient(const UnitSystem& units, const CellState& state,
                            const WellConnection& connection) {
    const CellId cell = connection.ConnCell;
    if (connection.aquiferFlow > 0.0) return connection.aquiferFlow * state.Bw[cell];
    return connection.ConnWI * units.FlowUnit *
           (state.LambdaO[cell] + state.LambdaW[cell] + state.LambdaG[cell]);
}

ConnectionCoefficients connectionCoefficients(const UnitSystem& units, const FluidTables& tables,
                                              const CellState& state, double averagePressure,
                                              const Well& well, const WellConnection& connection) {
    const double dp = drawdown(state, well, connection);
    if (!flowsAt(well, dp)) return {};
    ConnectionCoefficients c = openCoefficients(units, tables, state, averagePressure, well, connection);
    c.dp = dp;
    return c;
}

ConnectionCoefficients openCoefficients(const UnitSystem& units, const FluidTables& tables,
                                        const CellState& state, double averagePressure, const Well& well,
                                        const WellConnection& connection) {
    ConnectionCoefficients c;
    const CellId cell = connection.ConnCell;
    const double flow = connection.ConnWI * units.FlowUnit;
    c.reservoir = reservoirCoefficient(units, state, connection);
    if (isInjector(well) && connection.mixture.injectedFactor > 0.0) {
        streamTerms(well, connection.mixture, c);
        return c;
    }
    if (!isInjector(well) && connection.mixture.isSet) {
        mixtureTerms(flow, state, cell, connection.mixture, c);
        return c;
    }
    if (isInjector(well)) {
        injectorTerms(tables, state, averagePressure, well, cell, c);
        return c;
    }
    const ConnectionFluid<double> fluid = fluidAt(state, cell);
    const auto terms = producedTerms<double>(well.aquifer ? c.reservoir / totalMobility(fluid) : flow, fluid);
    c.surfaceOil = terms.oil;
    c.surfaceWater = terms.water;
    c.surfaceGas = terms.gas;
    return c;
}

void UpdateWellRates(const UnitSystem& units, const GridModel& grid, const FluidTables& tables,
                     const CellState& state, WellRecord& wells, PressureStage& stage) {
    stage.AveragePressure = averagePressure(grid, state, stage.AveragePressure);
    for (Well& well : wells.wells) {
        if (well.shut) well.Bhp = restingBhp(state, well);
        const bool flows = sumConnections(units, tables, state, stage.AveragePressure, well);
        if (!flows && !well.shut && isRateControlled(well) && restartRateWell(state, well))
            sumConnections(units, tables, state, stage.AveragePressure, well);
        well.rateAtDeckControl = namedRate(well, well.deckControl);
    }
}

double rowTerm(const Well& well, const ConnectionCoefficients& coefficients) {
    if (well.WellControl == "resv") return coefficients.reservoir;
    return coefficients.surfaceOil + coefficients.surfaceWater + coefficients.surfaceGas;
}

double namedRate(const Well& well, std::string_view control) {
    if (control == "orat") return well.WellQo;
    if (control == "wrat" || control == "wlim") return well.WellQw;
    if (control == "grat") return well.WellQg;
    if (control == "lrat") return well.WellQo + well.WellQw;
    if (control == "resv") return well.reservoirRate;
    if (control == "rate") return well.WellQo + well.WellQw + well.WellQg;
    return 0.0;
}

double rowTarget(const Well& well) {
    if (well.shut) return 0.0;
    double others = 0.0;
    if (well.WellControl == "orat")
        others = well.WellQw + well.WellQg;
    else if (well.WellControl == "grat")
        others = well.WellQo + well.WellQw;
    else if (well.WellControl == "lrat")
        others = well.WellQg;
    else if (well.WellControl == "wlim")
        others = well.WellQo + well.WellQg;
    const double named = namedRate(well, well.WellControl);
    const double aimed = aimedRate(well);
    const double scale = std::abs(named) > SmallestNormal ? aimed / named : 1.0;
    return aimed + others * scale;
}

double meanConnectionPressure(const CellState& state, const Well& well) {
    double sum = 0.0;
    int count = 0;
    for (const WellConnection& connection : well.connections) {
        const double pressure = state.Pressure[connection.ConnCell];
        if (pressure <= 0.0) continue;
        sum += pressure;
        ++count;
    }
    return count > 0 ? sum / count : 0.0;
}

double restingBhp(const CellState& state, const Well& well) {
    return meanConnectionPressure(state, well) - datumHead(well);
}

}  // namespace kvr
