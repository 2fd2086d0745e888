#pragma once

#include "base/cell_array.hpp"
#include "pressure/wells/wells.hpp"

#include <vector>

namespace kvr {

/// What the lines of one step carried out of one producing connection, weighted by LineFlux.
struct OutletRates {
    double reservoir = 0.0;                    // rb/day reached by lines
    double told = 0.0;                         // ... by lines that tell what it is made of
    double oil = 0.0, water = 0.0, gas = 0.0;  // surface volume a day
};

/// What the lines carried out of every connection, [well - 1][connection - 1].
using OutletTable = std::vector<std::vector<OutletRates>>;

void clearOutlets(const WellRecord& wells, OutletTable& outlets);

/// Adds the end of one line at a producing connection: its mean phase fluxes over the step times `flow`
/// rb/day. A cell that is no connection of the well, and a well that is no producer, take nothing.
struct LineEnd {
    int well = 0;  // 1-based, 0 for none
    CellId cell = 0;
    double water = 0.0, oil = 0.0, gas = 0.0;  // surface volume per reservoir volume
    double waterFraction = 0.0;                // reservoir volume of water per reservoir volume
    double oilFraction = 0.0;                  // the same of oil
    bool told = true;                          // see LinePassage
};
void addLineEnd(const WellRecord& wells, const LineEnd& end, double flow, OutletTable& outlets);

/// Rates of the producing connections that lines reached, from what these carried out, scaled so that the
/// reservoir total of the connection stays that of the pressure step; then the sums of the wells. A
/// connection without a line keeps its rates.
void setProducerRates(const OutletTable& outlets, WellRecord& wells);

}  // namespace kvr
