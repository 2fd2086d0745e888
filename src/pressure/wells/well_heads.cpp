#include "pressure/wells/well_heads.hpp"

#include "base/constants.hpp"
#include "fluid/black_oil.hpp"
#include "pressure/wells/well_rates.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

double injectedDensity(const CellState& state, const std::string& fluid, CellId cell) {
    if (fluid == "gas") return state.RhoG[cell];
    return fluid == "oil" ? state.RhoO[cell] : state.RhoW[cell];
}

/// Phase densities weighted by mobility; the oil density where nothing is mobile.
double producedDensity(const CellState& state, CellId cell) {
    const double total = state.LambdaO[cell] + state.LambdaW[cell] + state.LambdaG[cell];
    if (total <= 0.0) return state.RhoO[cell];
    return (state.LambdaO[cell] * state.RhoO[cell] + state.LambdaW[cell] * state.RhoW[cell] +
            state.LambdaG[cell] * state.RhoG[cell]) /
           total;
}

double boreDensity(const CellState& state, const Well& well, CellId cell) {
    if (isInjector(well) && well.mixtureDensity > 0.0) return well.mixtureDensity;
    return isInjector(well) ? injectedDensity(state, well.InjectFluid, cell) : producedDensity(state, cell);
}

/// Depth of cell b below cell a, ft: of their connection, or half of both sizes where they are none.
double depthBetween(const GridModel& grid, const ConnectionTable& connections, CellId a, CellId b) {
    for (int d = 1; d <= connections.NDIR; ++d)
        if (connections.Neighbour(a, d) == b) return connections.DepthDiff(a, d);
    return 0.5 * (grid.DZ[a] + grid.DZ[b]);
}

// --- between the datum and the first connection ------------------------------------------------------

void addRates(const SurfaceVolumes<double>& rates, SurfaceVolumes<double>& sum) {
    sum.water += std::abs(rates.water);
    sum.oil += std::abs(rates.oil);
    sum.gas += std::abs(rates.gas);
}

/// What comes up the bore of a producer, in any unit of surface volume.
SurfaceVolumes<double> producedMixture(const CellState& state, const Well& well) {
    SurfaceVolumes<double> sum{0.0, 0.0, 0.0};
    for (const WellConnection& connection : well.connections)
        addRates({connection.ConnQw, connection.ConnQo, connection.ConnQg}, sum);
    if (sum.water + sum.oil + sum.gas > 0.0) return sum;
    for (const WellConnection& connection : well.connections)
        addRates(producedTerms<double>(connection.ConnWI, fluidAt(state, connection.ConnCell)), sum);
    return sum;
}

/// Without a gas phase all gas stays in the oil.
double dissolvedAt(const FluidTables& tables, double gasOilRatio, double p) {
    return tables.hasGas ? std::min(SolutionRs(tables, p), gasOilRatio) : gasOilRatio;
}

/// Bore volume of the mixture.
double volumeAt(const FluidTables& tables, const SurfaceVolumes<double>& mixture, double p) {
    double volume = mixture.water > 0.0 ? mixture.water * WaterFvf(tables, p) : 0.0;
    double freeGas = mixture.gas;
    if (mixture.oil > 0.0) {
        const double Rs = dissolvedAt(tables, mixture.gas / mixture.oil, p);
        const double Pb = tables.MaxRs > 0.0 ? BubblePoint(tables, Rs) : p;
        volume += mixture.oil * usableOilProperties(tables, p, Pb).Bo;
        freeGas -= Rs * mixture.oil;
    }
    return freeGas > 0.0 ? volume + freeGas * GasFvf(tables, p) : volume;
}

double producedMixtureDensity(const FluidTables& tables, const CellState& state, const Well& well, double p) {
    const SurfaceVolumes<double> mixture = producedMixture(state, well);
    const double mass = mixture.water * tables.waterDensity + mixture.oil * tables.oilDensity +
                        mixture.gas * tables.gasDensity;
    const double volume = volumeAt(tables, mixture, p);
    return volume > 0.0 ? mass / volume : producedDensity(state, well.connections.front().ConnCell);
}

double headFromDatum(const GridModel& grid, const FluidTables& all, const CellState& state,
                     const Well& well) {
    const CellId first = well.connections.front().ConnCell;
    const FluidTables& tables = pvtAt(all, first);
    const double g = (grid.CellCentre(first, 3) - well.datumDepth) / SquareInchesPerSquareFoot;
    const double bhp = well.Bhp > 0.0 ? well.Bhp : state.Pressure[first];
    // The fluid of the middle of the stretch: of its upper end first, to find where the middle is.
    const double head = boreMixtureDensity(tables, state, well, std::max(bhp, StandardPressure)) * g;
    const double middle = std::max(bhp + 0.5 * head, StandardPressure);
    return boreMixtureDensity(tables, state, well, middle) * g;
}

// --- one well ----------------------------------------------------------------------------------------

void headOfWell(const GridModel& grid, const ConnectionTable& connections, const FluidTables& tables,
                const CellState& state, Well& well) {
    if (well.connections.empty()) return;
    double head = hasDatum(well) ? headFromDatum(grid, tables, state, well) : 0.0;
    double densityAbove = 0.0;
    for (std::size_t n = 0; n < well.connections.size(); ++n) {
        const CellId cell = well.connections[n].ConnCell;
        // A cell without flow has no fluid of its own; the bore keeps what it held above.
        double density = grid.Active[cell] != 0 ? boreDensity(state, well, cell) : densityAbove;
        if (n > 0) {
            if (densityAbove == 0.0) densityAbove = density;
            const double g = depthBetween(grid, connections, well.connections[n - 1].ConnCell, cell) /
                             SquareInchesPerSquareFoot;
            if (std::abs(g) >= MachineEpsilon) head += 0.5 * (densityAbove + density) * g;
        }
        well.connections[n].ConnHead = head;
        densityAbove = density;
    }
}

}  // namespace

double boreMixtureDensity(const FluidTables& tables, const CellState& state, const Well& well, double p) {
    if (well.mixtureDensity > 0.0) return well.mixtureDensity;
    if (!isInjector(well)) return producedMixtureDensity(tables, state, well, p);
    if (well.InjectFluid == "gas") return gasDensityAt(tables, GasFvf(tables, p));
    if (well.InjectFluid == "wat") return waterDensityAt(tables, WaterFvf(tables, p));
    return injectedDensity(state, well.InjectFluid, well.connections.front().ConnCell);
}

double datumHead(const Well& well) {
    return well.connections.empty() ? 0.0 : well.connections.front().ConnHead;
}

void WellHead(const GridModel& grid, const ConnectionTable& connections, const FluidTables& tables,
              const CellState& state, WellRecord& wells) {
    for (Well& well : wells.wells)
        if (!well.aquifer) headOfWell(grid, connections, tables, state, well);
}

}  // namespace kvr
