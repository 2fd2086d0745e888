#include "pressure/fraction_slopes.hpp"

#include "fluid/saturation_functions.hpp"
#include "model/dual_porosity.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace kvr {

namespace {

constexpr double MobilityGuard =
    1e-20;                        // 1/cp, keeps the fractions finite in a cell that holds no mobile phase
constexpr int SlopePoints = 200;  // over the saturation range when the steepest flux is looked for
constexpr int PointsInBin = 8;    // tables have corners anywhere

struct Viscosities {
    double oil = 0.0, water = 0.0, gas = 0.0;
};

/// Over the cells that flow among each other: not over matrix, which passes nothing on.
Viscosities meanViscosities(const GridModel& grid, const CellState& state) {
    Viscosities mean;
    int count = 0;
    for (CellId c = matrixCells(grid) + 1; c <= grid.NCELLS; ++c) {
        if (grid.Active[c] == 0) continue;
        mean.oil += state.MuO[c];
        mean.water += state.MuW[c];
        mean.gas += state.MuG[c];
        ++count;
    }
    if (count == 0) return {1.0, 1.0, 1.0};
    return {mean.oil / count, mean.water / count, mean.gas / count};
}

/// Marks the saturation regions, by number - 1, that cells are in: a deck may hold thousands of others.
std::vector<std::uint8_t> regionsOfCells(const GridModel& grid, std::size_t count) {
    std::vector<std::uint8_t> used(count, 0);
    if (count == 0) return used;
    for (CellId c = 1; c <= grid.NCELLS; ++c)
        if (grid.Active[c] != 0) used[static_cast<std::size_t>(grid.SATNUM[c]) - 1] = 1;
    return used;
}

/// Fraction of one phase in the flow of a region: water against oil, or gas against oil at connate water.
double fractionAt(const FluidTables& tables, const SaturationTable& table, const Viscosities& mu, bool gas,
                  double s) {
    const double sw = gas ? table.ConnateSw : s;
    const RelPerms kr = relPerms(table, tables.hasGas, sw, gas ? s : 0.0);
    const double water = kr.w / mu.water, oil = kr.o / mu.oil, other = kr.g / mu.gas;
    return (gas ? other : water) / (water + oil + other + MobilityGuard);
}

/// Steepest rise of the fractional flow with saturation, at least 1.
double steepestFraction(const FluidTables& tables, const SaturationTable& table, const Viscosities& mu,
                        bool gas) {
    const double low = gas ? 0.0 : table.ConnateSw;
    const double high = gas ? 1.0 - table.ConnateSw : 1.0;
    const double step = (high - low) / SlopePoints;
    if (!(step > 0.0)) return 1.0;
    double steepest = 1.0;
    double before = fractionAt(tables, table, mu, gas, low);
    for (int k = 1; k <= SlopePoints; ++k) {
        const double here = fractionAt(tables, table, mu, gas, low + k * step);
        steepest = std::max(steepest, (here - before) / step);
        before = here;
    }
    return steepest;
}

/// Fractional flow of water, and what gravity can exchange: lw lo / (lw + lo).
SlopeRange flowsAt(const FluidTables& tables, const SaturationTable& table, const Viscosities& mu,
                   double Sw) {
    const RelPerms kr = relPerms(table, tables.hasGas, Sw, 0.0);
    const double water = kr.w / mu.water, oil = kr.o / mu.oil;
    const double fraction = water / (water + oil + MobilityGuard);
    return {fraction, fraction * oil};
}

RegionSlopes regionSlopes(const FluidTables& tables, const SaturationTable& table, const Viscosities& mu) {
    RegionSlopes slopes;
    slopes.low = table.ConnateSw;
    const double range = 1.0 - table.ConnateSw;
    if (!(range > 0.0)) return slopes;
    slopes.binsPerSaturation = RegionSlopes::Bins / range;
    const double step = range / (RegionSlopes::Bins * PointsInBin);
    SlopeRange before = flowsAt(tables, table, mu, slopes.low);
    for (std::size_t bin = 0; bin < RegionSlopes::Bins; ++bin)
        for (int k = 1; k <= PointsInBin; ++k) {
            const double Sw = slopes.low + (static_cast<double>(bin) * PointsInBin + k) * step;
            const SlopeRange here = flowsAt(tables, table, mu, Sw);
            slopes.flow[bin] = std::max(slopes.flow[bin], (here.flow - before.flow) / step);
            slopes.exchange[bin] =
                std::max(slopes.exchange[bin], std::abs(here.exchange - before.exchange) / step);
            before = here;
        }
    return slopes;
}

}  // namespace

FractionSlopes fractionSlopes(const GridModel& grid, const FluidTables& tables, const CellState& state) {
    const Viscosities mu = meanViscosities(grid, state);
    FractionSlopes slopes;
    const std::vector<std::uint8_t> used = regionsOfCells(grid, tables.regions.size());
    if (!tables.hasGas) slopes.regions.resize(tables.regions.size());
    for (std::size_t r = 0; r < tables.regions.size(); ++r) {
        if (used[r] == 0) continue;
        const SaturationTable& table = tables.regions[r];
        slopes.steepest = std::max(slopes.steepest, steepestFraction(tables, table, mu, false));
        if (tables.hasGas)
            slopes.steepest = std::max(slopes.steepest, steepestFraction(tables, table, mu, true));
        else
            slopes.regions[r] = regionSlopes(tables, table, mu);
    }
    return slopes;
}

}  // namespace kvr
