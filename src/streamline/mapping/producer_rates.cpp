#include "streamline/mapping/producer_rates.hpp"

#include "base/index.hpp"

#include <algorithm>

namespace kvr {

namespace {

void sumConnections(Well& well) {
    well.WellQo = well.WellQw = well.WellQg = 0.0;
    for (const WellConnection& connection : well.connections) {
        well.WellQo += connection.ConnQo;
        well.WellQw += connection.ConnQw;
        well.WellQg += connection.ConnQg;
    }
}

}  // namespace

void clearOutlets(const WellRecord& wells, OutletTable& outlets) {
    outlets.resize(wells.wells.size());
    for (std::size_t w = 0; w < wells.wells.size(); ++w)
        outlets[w].assign(wells.wells[w].connections.size(), OutletRates{});
}

void addLineEnd(const WellRecord& wells, const LineEnd& end, double flow, OutletTable& outlets) {
    if (end.well < 1 || at(end.well) > wells.wells.size()) return;
    const Well& well = wells.wells[at(end.well) - 1];
    if (isInjector(well)) return;
    const auto found = std::find_if(well.connections.begin(), well.connections.end(),
                                    [&](const WellConnection& c) { return c.ConnCell == end.cell; });
    if (found == well.connections.end()) return;
    OutletRates& sum = outlets[at(end.well) - 1][static_cast<std::size_t>(found - well.connections.begin())];
    sum.reservoir += flow;
    if (!end.told) return;
    sum.told += flow;
    sum.water += flow * end.water;
    sum.oil += flow * end.oil;
    sum.gas += flow * end.gas;
}

void setProducerRates(const OutletTable& outlets, WellRecord& wells) {
    for (std::size_t w = 0; w < wells.wells.size() && w < outlets.size(); ++w) {
        Well& well = wells.wells[w];
        bool reached = false;
        for (std::size_t c = 0; c < well.connections.size() && c < outlets[w].size(); ++c) {
            const OutletRates& sum = outlets[w][c];
            if (sum.reservoir <= 0.0) continue;
            WellConnection& connection = well.connections[c];
            const double scale = connection.reservoirRate / sum.reservoir;
            connection.ConnQw = scale * sum.water;
            connection.ConnQo = scale * sum.oil;
            connection.ConnQg = scale * sum.gas;
            reached = true;
        }
        if (reached) sumConnections(well);
    }
}

}  // namespace kvr
