#include "pressure/wells/well_target.hpp"

#include "pressure/wells/well_rates.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

double slopeOf(const ControlShares& share, const ConnectionCoefficients& c) {
    return share.water * c.surfaceWater + share.oil * c.surfaceOil + share.gas * c.surfaceGas +
           share.reservoir * c.reservoir;
}

}  // namespace

ControlShares controlShares(std::string_view control) {
    struct Row {
        std::string_view control;
        ControlShares shares;
    };
    static constexpr Row Rows[] = {
        {"orat", {0.0, 1.0, 0.0, 0.0}}, {"grat", {0.0, 0.0, 1.0, 0.0}}, {"lrat", {1.0, 1.0, 0.0, 0.0}},
        {"wlim", {1.0, 0.0, 0.0, 0.0}}, {"resv", {0.0, 0.0, 0.0, 1.0}}, {"wrat", {1.0, 1.0, 1.0, 0.0}},
        {"rate", {1.0, 1.0, 1.0, 0.0}},
    };
    for (const Row& row : Rows)
        if (control == row.control) return row.shares;
    return {};
}

double controlledRate(const Well& well, std::string_view control) {
    const ControlShares share = controlShares(control);
    return share.water * well.WellQw + share.oil * well.WellQo + share.gas * well.WellQg +
           share.reservoir * well.reservoirRate;
}

WellInflow wellInflow(const UnitSystem& units, const FluidTables& tables, const CellState& state,
                      double averagePressure, const Well& well) {
    return wellInflow(units, tables, state, averagePressure, well, well.deckControl);
}

WellInflow wellInflow(const UnitSystem& units, const FluidTables& tables, const CellState& state,
                      double averagePressure, const Well& well, std::string_view control) {
    const ControlShares share = controlShares(control);
    WellInflow inflow;
    inflow.s = isInjector(well) ? 1.0 : -1.0;
    for (const WellConnection& connection : well.connections) {
        const double slope =
            slopeOf(share, openCoefficients(units, tables, state, averagePressure, well, connection));
        const double at = inflow.s * (state.Pressure[connection.ConnCell] - connection.ConnHead);
        if (slope > 0.0 && std::isfinite(at)) inflow.starts.push_back({at, slope});
    }
    std::sort(inflow.starts.begin(), inflow.starts.end(),
              [](const FlowStart& a, const FlowStart& b) { return a.at < b.at; });
    return inflow;
}

double rateAtBhp(const WellInflow& inflow, double bhp) {
    double rate = 0.0;
    for (const FlowStart& start : inflow.starts)
        rate += start.slope * std::max(0.0, inflow.s * bhp - start.at);
    return rate;
}

double bhpOfRate(const WellInflow& inflow, double rate) {
    double slope = 0.0, moment = 0.0, root = 0.0;
    for (std::size_t n = 0; n < inflow.starts.size(); ++n) {
        slope += inflow.starts[n].slope;
        moment += inflow.starts[n].slope * inflow.starts[n].at;
        root = (rate + moment) / slope;
        if (n + 1 == inflow.starts.size() || root <= inflow.starts[n + 1].at) break;
    }
    return inflow.s * root;
}

}  // namespace kvr
