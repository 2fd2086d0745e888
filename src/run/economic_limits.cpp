#include "run/economic_limits.hpp"

#include "run/start_up.hpp"

#include <algorithm>
#include <limits>
#include <string_view>

namespace kvr {

namespace {

/// Surface rates of a well or connection, positive out of the reservoir.
struct Rates {
    double oil = 0.0, water = 0.0, gas = 0.0;
};

double waterCut(const Rates& rates) {
    const double liquid = rates.water + rates.oil;
    return liquid > 0.0 ? rates.water / liquid : 0.0;
}
/// Without a denominator no limit is high enough, but for nothing at all.
double ratioOf(double of, double to) {
    if (to > 0.0) return of / to;
    return of > 0.0 ? std::numeric_limits<double>::infinity() : 0.0;
}
double gasOilRatio(const Rates& rates) {
    return ratioOf(rates.gas, rates.oil);
}
double waterGasRatio(const Rates& rates) {
    return ratioOf(rates.water, rates.gas);
}

using Figure = double (*)(const Rates&);

struct LeastRate {
    std::string_view name;
    double EconomicLimits::*limit;
    Figure figure;
};
constexpr LeastRate LeastRates[] = {
    {"oil rate", &EconomicLimits::leastOil, [](const Rates& r) { return r.oil; }},
    {"gas rate", &EconomicLimits::leastGas, [](const Rates& r) { return r.gas; }},
    {"liquid rate", &EconomicLimits::leastLiquid, [](const Rates& r) { return r.oil + r.water; }},
};
constexpr LeastRate MostRatios[] = {
    {"water cut", &EconomicLimits::mostWaterCut, waterCut},
    {"gas-oil ratio", &EconomicLimits::mostGasOilRatio, gasOilRatio},
    {"water-gas ratio", &EconomicLimits::mostWaterGasRatio, waterGasRatio},
};

/// Rates while the well is on.
Rates ratesOf(const Well& well) {
    const double on = -1.0 / well.efficiency;
    return {well.WellQo * on, well.WellQw * on, well.WellQg * on};
}
Rates ratesOf(const WellConnection& connection) {
    return {-connection.ConnQo, -connection.ConnQw, -connection.ConnQg};
}

void tell(const Simulation& s, const Well& well, const LeastRate& limit, double figure,
          std::string_view what) {
    both(s.console, " WELL ECONOMICS :: {} : {} {} passes its limit {} at {} days, {} (internal units)",
         well.WellName, limit.name, number(figure), number(well.limits.*limit.limit), number(s.clock.time),
         what);
}

/// Closes the connection with the largest figure, and with `below` those behind it in the well.
void closeWorst(Figure figure, bool below, Well& well) {
    std::size_t worst = 0;
    double largest = -1.0;
    for (std::size_t n = 0; n < well.connections.size(); ++n) {
        const double value = figure(ratesOf(well.connections[n]));
        if (value <= largest) continue;
        largest = value;
        worst = n;
    }
    const std::size_t end = below ? well.connections.size() : std::min(worst + 1, well.connections.size());
    for (std::size_t n = worst; n < end; ++n) well.closedCells.push_back(well.connections[n].ConnCell);
    well.closedByLimit = well.connections.size() <= end - worst;
}

/// Closes what the limit asks to close; false where the deck asks for nothing.
bool workOver(const LeastRate& ratio, Well& well) {
    if (well.limits.workover == Workover::None) return false;
    if (well.limits.workover == Workover::Well)
        well.closedByLimit = true;
    else
        closeWorst(ratio.figure, well.limits.workover == Workover::ConnectionsBelow, well);
    return true;
}

bool flows(const Rates& rates) {
    return rates.oil > 0.0 || rates.water > 0.0 || rates.gas > 0.0;
}

/// True when something of the well has been closed.
bool closeByLimits(const Simulation& s, Well& well) {
    const Rates rates = ratesOf(well);
    if (isInjector(well) || well.shut || !flows(rates)) return false;
    for (const LeastRate& least : LeastRates) {
        const double figure = least.figure(rates);
        if (!(well.limits.*least.limit > 0.0) || figure >= well.limits.*least.limit) continue;
        well.closedByLimit = true;
        tell(s, well, least, figure, "well shut");
        return true;
    }
    for (const LeastRate& ratio : MostRatios) {
        const double figure = ratio.figure(rates);
        if (!(well.limits.*ratio.limit > 0.0) || figure <= well.limits.*ratio.limit) continue;
        if (!workOver(ratio, well)) continue;
        tell(s, well, ratio, figure, well.closedByLimit ? "well shut" : "connections closed");
        return true;
    }
    return false;
}

/// The run ends with the report that it stands at, or the next one.
void endAtNextReport(Simulation& s) {
    RunClock& clock = s.clock;
    const bool atReport = sameTime(tableTime(s.schedule.reportEnd, clock.reportIndex - 1), clock.time);
    const double next = atReport ? clock.time : tableTime(s.schedule.reportEnd, clock.reportIndex);
    clock.endTime = std::min(clock.endTime, next);
    both(s.console, " WELL ECONOMICS :: the run ends at {} days", number(clock.endTime));
}

}  // namespace

void applyEconomicLimits(Simulation& simulation) {
    bool closed = false;
    for (Well& well : simulation.wells.wells) {
        if (!closeByLimits(simulation, well)) continue;
        closed = true;
        if (well.limits.endsRun) endAtNextReport(simulation);
    }
    if (closed) rebuildWells(simulation.clock.wellChangeIndex + 1, simulation);
}

}  // namespace kvr
