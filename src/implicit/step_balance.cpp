#include "implicit/step_balance.hpp"

#include "pressure/properties.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace kvr {

namespace {

constexpr double LeastShare = 1e-3;  // of the pores that a component is taken to fill

double sumOf(const CellArray<double>& values) {
    return std::accumulate(values.cells().begin(), values.cells().end(), 0.0);
}

/// What the pores would hold of a component alone.
double capacity(const GridModel& grid, const CellArray<double>& poreVolume, const CellArray<double>& factor) {
    double sum = 0.0;
    for (CellId c = 1; c <= grid.NCELLS; ++c)
        if (grid.Active[c] != 0) sum += poreVolume[c] / factor[c];
    return sum;
}

double errorOf(const CellArray<double>& old, const CellArray<double>& now, double inflow, double capacity) {
    const double after = sumOf(now);
    const double error = after - sumOf(old) - inflow;
    const double scale = std::max({std::abs(after), std::abs(inflow), LeastShare * capacity});
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
    const auto hold = [&](const CellArray<double>& factor) {
        return capacity(grid, state.PoreVolume, factor);
    };
    return std::max({errorOf(oldAmounts.water, nowAmounts.water, water, hold(state.Bw)),
                     errorOf(oldAmounts.oil, nowAmounts.oil, oil, hold(state.Bo)),
                     errorOf(oldAmounts.gas, nowAmounts.gas, gas, hold(state.Bg))});
}

}  // namespace kvr
