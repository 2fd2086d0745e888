#include "pressure/cell_transport.hpp"

#include "base/constants.hpp"
#include "fluid/saturation_functions.hpp"
#include "pressure/properties.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr int Faces = 6;
constexpr double MobilityGuard =
    1e-20;                        // 1/cp, keeps the fractions finite in a cell that holds no mobile phase
constexpr int SlopePoints = 200;  // over the saturation range when the steepest flux is looked for

/// Flow through a face into the cell, volume a day; negative out of it.
double inflowThroughFace(const DirectionArray<double>& flux, CellId c, int d) {
    return -FaceSign[static_cast<std::size_t>(d) - 1] * flux(c, d);
}

struct Viscosities {
    double oil = 0.0, water = 0.0, gas = 0.0;
};

Viscosities meanViscosities(const GridModel& grid, const CellState& state) {
    Viscosities mean;
    int count = 0;
    for (CellId c = 1; c <= grid.NCELLS; ++c) {
        if (grid.Active[c] == 0) continue;
        mean.oil += state.MuO[c];
        mean.water += state.MuW[c];
        mean.gas += state.MuG[c];
        ++count;
    }
    if (count == 0) return {1.0, 1.0, 1.0};
    return {mean.oil / count, mean.water / count, mean.gas / count};
}

/// Fraction of one phase in the flow of a region: water against oil, or gas against oil at connate water.
double fractionAt(const FluidTables& tables, const SaturationTable& table, const Viscosities& mu, bool gas,
                  double s) {
    const double sw = gas ? table.ConnateSw : s;
    const RelPerms kr = relPerms(table, tables.hasGas, sw, gas ? s : 0.0);
    const double water = kr.w / mu.water, oil = kr.o / mu.oil, other = kr.g / mu.gas;
    return (gas ? other : water) / (water + oil + other + MobilityGuard);
}

/// Steepest rise of the fractional flow with saturation, at least 1: how much faster than the fluid a
/// saturation travels.
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

double steepestOfRun(const GridModel& grid, const FluidTables& tables, const CellState& state) {
    const Viscosities mu = meanViscosities(grid, state);
    double steepest = 1.0;
    for (const SaturationTable& table : tables.regions) {
        steepest = std::max(steepest, steepestFraction(tables, table, mu, false));
        if (tables.hasGas) steepest = std::max(steepest, steepestFraction(tables, table, mu, true));
    }
    return steepest;
}

/// Largest ratio of throughput to pore volume over the cells, 1/day. Throughput is the larger of what
/// enters and what leaves.
double largestThroughput(const CellTransport& transport, const Simulation& s) {
    CellArray<double> in, out;
    in.assign(s.grid.NCELLS, 0.0);
    out.assign(s.grid.NCELLS, 0.0);
    const auto add = [&](CellId c, double inflow) { (inflow > 0.0 ? in : out)[c] += std::abs(inflow); };
    for (CellId c = 1; c <= s.grid.NCELLS; ++c)
        if (s.grid.Active[c] != 0)
            for (int d = 1; d <= Faces; ++d) add(c, inflowThroughFace(*transport.flux, c, d));
    if (transport.wellsLimit)
        for (const Well& well : s.wells.wells)
            for (const WellConnection& connection : well.connections)
                add(connection.ConnCell, connection.reservoirRate);
    double largest = 0.0;
    for (CellId c = 1; c <= s.grid.NCELLS; ++c)
        if (s.grid.Active[c] != 0 && s.state.PoreVolume[c] > 0.0)
            largest = std::max(largest, std::max(in[c], out[c]) / s.state.PoreVolume[c]);
    return largest;
}

/// Surface amounts that one reservoir volume leaving the cell carries.
void flowingAmounts(const GridModel& grid, const CellState& state, CellAmounts& carriedBy) {
    for (CellId c = 1; c <= grid.NCELLS; ++c) {
        if (grid.Active[c] == 0) continue;
        const double total = state.LambdaO[c] + state.LambdaW[c] + state.LambdaG[c] + MobilityGuard;
        carriedBy.water[c] = state.LambdaW[c] / total / state.Bw[c];
        carriedBy.oil[c] = state.LambdaO[c] / total / state.Bo[c];
        carriedBy.gas[c] = state.LambdaG[c] / total / state.Bg[c] + state.Rs[c] * carriedBy.oil[c];
    }
}

void advanceThroughFaces(double dt, const GridModel& grid, const ConnectionTable& connections,
                         const DirectionArray<double>& flux, const CellAmounts& flowing,
                         CellAmounts& amounts) {
    for (CellId c = 1; c <= grid.NCELLS; ++c) {
        if (grid.Active[c] == 0) continue;
        for (int d = 1; d <= Faces; ++d) {
            const double volume = dt * inflowThroughFace(flux, c, d);
            if (volume == 0.0) continue;
            const CellId from = volume > 0.0 ? connections.Neighbour(c, d) : c;
            amounts.water[c] += volume * flowing.water[from];
            amounts.oil[c] += volume * flowing.oil[from];
            amounts.gas[c] += volume * flowing.gas[from];
        }
    }
}

void advanceByRates(double dt, const CellAmounts& rates, CellAmounts& amounts) {
    for (CellId c = 1; c <= rates.water.count(); ++c) {
        amounts.water[c] += dt * rates.water[c];
        amounts.oil[c] += dt * rates.oil[c];
        amounts.gas[c] += dt * rates.gas[c];
    }
}

/// State of one cell from its amounts. Without gas factors, Rs and bubble point stand.
PhaseState recoveredCell(const FluidTables& tables, int region, bool keepEndPoints,
                         const ConservedAmounts& perPoreVolume, const CellState& state, CellId c) {
    const double p = state.Pressure[c];
    if (tables.hasGas) return flashCell(tables, region, keepEndPoints, p, perPoreVolume);
    PhaseState found = recoverState(tables, region, keepEndPoints, {p, state.Bw[c], state.Bo[c], state.Bg[c]},
                                    perPoreVolume);
    found.Rs = state.Rs[c];
    found.Pb = state.Pb[c];
    return found;
}

/// Saturations, Rs and Pb from the amounts. What a well has taken beyond the content of its cell stays owed:
/// it is carried into the next step. A cell whose amounts are no numbers keeps its state.
void recoverCells(const RunOptions& options, const GridModel& grid, const FluidTables& tables,
                  const CellAmounts& amounts, CellState& state) {
    for (CellId c = 1; c <= grid.NCELLS; ++c) {
        if (grid.Active[c] == 0 || !(state.PoreVolume[c] > 0.0)) continue;
        const double inverse = 1.0 / state.PoreVolume[c];
        const PhaseState found = recoveredCell(
            tables, grid.SATNUM[c], options.keepIrreducibleSaturation,
            {amounts.water[c] * inverse, amounts.oil[c] * inverse, amounts.gas[c] * inverse}, state, c);
        if (!std::isfinite(found.Sw + found.So + found.Sg + found.Rs + found.Pb)) continue;
        state.Sw[c] = found.Sw;
        state.So[c] = found.So;
        state.Sg[c] = found.Sg;
        state.Rs[c] = found.Rs;
        state.Pb[c] = found.Pb;
    }
}

/// Length of the equal-sized sub-steps, never below the floor; the time left beats both.
double substepLength(const CellTransport& transport, const Simulation& s) {
    const double speed = largestThroughput(transport, s) * steepestOfRun(s.grid, s.fluids, s.state);
    const double courant = speed > 0.0 ? s.options.cfl / speed : s.clock.workDt;
    return std::max(courant, s.options.minCflStep);
}

}  // namespace

void transportAmounts(const CellTransport& transport, CellAmounts& amounts, Simulation& s) {
    CellAmounts flowing = amounts;
    const double length = substepLength(transport, s);
    for (double left = s.clock.workDt; left > 0.0;) {
        const double dt = std::min(length, left);
        flowingAmounts(s.grid, s.state, flowing);
        advanceThroughFaces(dt, s.grid, s.connections, *transport.flux, flowing, amounts);
        advanceByRates(dt, transport.rates, amounts);
        recoverCells(s.options, s.grid, s.fluids, amounts, s.state);
        if (s.fluids.hasGas)
            refreshProperties(s.grid, s.fluids, s.state);
        else
            refreshMobilities(s.grid, s.fluids, s.state);
        left = left - dt > TimeTolerance ? left - dt : 0.0;
    }
    measureCarried(s.grid, s.state, amounts, s.pressure.carried);
}

void addWellRates(const WellRecord& wells, CellAmounts& rates) {
    for (const Well& well : wells.wells)
        for (const WellConnection& connection : well.connections) {
            rates.water[connection.ConnCell] += connection.ConnQw;
            rates.oil[connection.ConnCell] += connection.ConnQo;
            rates.gas[connection.ConnCell] += connection.ConnQg;
        }
}

}  // namespace kvr
