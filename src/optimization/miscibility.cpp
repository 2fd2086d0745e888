#include "optimization/miscibility.hpp"

#include "pressure/accumulation.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

double fieldStorage(const GridModel& grid, const FluidTables& tables, const CellState& state) {
    double sum = 0.0;
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        if (grid.Active[cell] == 0 || !(state.PoreVolume[cell] > 0.0)) continue;
        const CellCompressibility c = cellCompressibility(tables, state.Pb[cell], state, cell);
        const double oil = state.So[cell];
        double total = c.CompressR + state.Sw[cell] * c.CompressW + oil * c.CompressO;
        if (tables.hasGas)
            total += state.Sg[cell] * c.CompressG + oil * state.Bg[cell] / state.Bo[cell] * c.rsSlope;
        sum += state.PoreVolume[cell] * std::max(total, 0.0);
    }
    return sum;
}

double injectionFactor(const PressureState& now, double wmin, double wmax) {
    if (!(now.target > 0.0) || !(now.average > 0.0) || !(now.injected > 0.0)) return 1.0;
    const double wanted = now.produced * std::abs(now.target / now.average - 1.0);
    const double off = std::abs(now.target - now.average);
    const double taken = now.storage > 0.0 && now.step > 0.0 ? now.storage * off / now.step : wanted;
    const double sign = now.target >= now.average ? 1.0 : -1.0;
    const double injection = std::max(0.0, now.produced + sign * std::min(wanted, taken));
    return std::clamp(injection / now.injected, 1.0 + std::min(wmin, 0.0), 1.0 + std::max(wmax, 0.0));
}

}  // namespace kvr
