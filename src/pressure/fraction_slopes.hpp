#pragma once

#include "fluid/tables.hpp"
#include "model/grid.hpp"
#include "pressure/records/cell_state.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace kvr {

/// Steepness of the fractional flow of water against oil in equal bins of water saturation.
struct RegionSlopes {
    static constexpr int Bins = 64;
    double low = 0.0, binsPerSaturation = 0.0;  // 0: the range is empty
    std::array<double, Bins> flow{};            // largest d fw/d Sw of each bin
    std::array<double, Bins> exchange{};        // largest |d(lw lo/(lw + lo))/d Sw|, 1/cp
};

/// How much faster than the fluid a saturation travels.
struct FractionSlopes {
    double steepest = 1.0;              // rise of a fractional flow, over all regions of cells
    std::vector<RegionSlopes> regions;  // by number - 1; empty: the steepest holds everywhere
};

inline std::size_t binOf(const RegionSlopes& slopes, double Sw) {
    const double bin = (Sw - slopes.low) * slopes.binsPerSaturation;
    return static_cast<std::size_t>(std::clamp(bin, 0.0, RegionSlopes::Bins - 1.0));
}

/// Largest slopes between two saturations.
struct SlopeRange {
    double flow = 0.0, exchange = 0.0;
};
inline SlopeRange steepestBetween(const RegionSlopes& slopes, double a, double b) {
    const std::size_t first = binOf(slopes, std::min(a, b)), last = binOf(slopes, std::max(a, b));
    SlopeRange steepest;
    for (std::size_t bin = first; bin <= last; ++bin) {
        steepest.flow = std::max(steepest.flow, slopes.flow[bin]);
        steepest.exchange = std::max(steepest.exchange, slopes.exchange[bin]);
    }
    return steepest;
}

/// Slopes at the mean viscosities of the cells that flow (fractures, not their matrix). The steepest is at
/// least 1; bins are there where no gas is, all 0 in a region that no cell is in.
FractionSlopes fractionSlopes(const GridModel& grid, const FluidTables& tables, const CellState& state);

}  // namespace kvr
