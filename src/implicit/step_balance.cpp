#include "implicit/step_balance.hpp"

#include "implicit/well_borders.hpp"
#include "pressure/properties.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace kvr {

namespace {

double sumOf(const CellArray<double>& values) {
    return std::accumulate(values.cells().begin(), values.cells().end(), 0.0);
}

double errorOf(const CellArray<double>& old, const CellArray<double>& now, double inflow) {
    const double after = sumOf(now);
    const double error = after - sumOf(old) - inflow;
    const double scale = std::max(std::abs(after), std::abs(inflow));
    return scale > 0.0 ? std::abs(error) / scale : 0.0;
}

}  // namespace

double stepBalanceError(double dt, const GridModel& grid, const CellState& state, const WellRecord& wells,
                        const CellAmounts& oldAmounts, CellAmounts& nowAmounts) {
    measureAmounts(grid, state, nowAmounts);
    double water = 0.0, oil = 0.0, gas = 0.0;
    for (const Well& well : wells.wells) {
        water += well.WellQw * dt;
        oil += well.WellQo * dt;
        gas += well.WellQg * dt;
    }
    return std::max({errorOf(oldAmounts.water, nowAmounts.water, water),
                     errorOf(oldAmounts.oil, nowAmounts.oil, oil),
                     errorOf(oldAmounts.gas, nowAmounts.gas, gas)});
}

double largestTargetError(const WellRecord& wells) {
    double largest = 0.0;
    for (const Well& well : wells.wells)
        if (!well.shut && isRateControlled(well) && well.TargetRate != 0.0)
            largest = std::max(largest, std::abs(controlledRate(well) / well.TargetRate - 1.0));
    return largest;
}

}  // namespace kvr
