#include "implicit/well_borders.hpp"

#include "pressure/wells/well_rates.hpp"
#include "pressure/wells/well_target.hpp"

#include <array>
#include <cmath>

namespace kvr {

namespace {

/// Rates of one connection with their slopes: by the unknowns of the cell, and by the bottom-hole pressure.
template <std::size_t N>
struct ConnectionFlow {
    std::array<Jet<N>, 3> rate{};   // by phase, surface volumes a day
    std::array<double, 3> byBhp{};  // a day and psi
    Jet<N> reservoir{};             // reservoir volume a day
    double reservoirByBhp = 0.0;
};

template <std::size_t N>
SurfaceVolumes<Jet<N>> termsOf(const Well& well, double flow, const ConnectionFluid<Jet<N>>& fluid) {
    if (!isInjector(well)) return producedTerms(flow, fluid);
    const Jet<N> injected = flow * totalMobility(fluid) / injectedFactor(well, fluid);
    if (well.InjectFluid == "gas") return {{}, {}, injected};
    if (well.InjectFluid == "oil") return {{}, injected, {}};
    return {injected, {}, {}};
}

/// Terms of a connection of an aquifer, whose flow hangs on no mobility; `total`: reservoir volume.
template <std::size_t N>
SurfaceVolumes<Jet<N>> aquiferTerms(const Well& well, const WellConnection& connection,
                                    const ConnectionFluid<Jet<N>>& fluid, Jet<N>& total) {
    total = connection.aquiferFlow * fluid.Bw;
    if (isInjector(well)) return {Jet<N>{connection.aquiferFlow, {}}, {}, {}};
    return producedTerms(total / totalMobility(fluid), fluid);
}

template <std::size_t N>
ConnectionFlow<N> connectionFlow(double flowUnit, const Well& well, const WellConnection& connection,
                                 double drawdown, const ConnectionFluid<Jet<N>>& fluid) {
    const double flow = connection.ConnWI * flowUnit;
    Jet<N> total = flow * totalMobility(fluid);
    const SurfaceVolumes<Jet<N>> terms =
        well.aquifer ? aquiferTerms(well, connection, fluid, total) : termsOf(well, flow, fluid);
    Jet<N> dp{drawdown, {}};
    dp.slope[PressurePlace] = -1.0;
    ConnectionFlow<N> result;
    result.rate = {terms.water * dp, terms.oil * dp, terms.gas * dp};
    result.byBhp = {terms.water.value, terms.oil.value, terms.gas.value};
    result.reservoir = total * dp;
    result.reservoirByBhp = total.value;
    return result;
}

template <std::size_t N>
void addToCell(const ConnectionFlow<N>& flow, std::size_t row, std::size_t place, WellBorder& border,
               BlockSystem& system) {
    double* block = system.block(system.diagonal[row]).data();
    for (std::size_t component = 0; component < N; ++component) {
        system.rhs[row * N + component] += flow.rate[component].value;
        border.columnBlocks[place * N + component] = -flow.byBhp[component];
        for (std::size_t k = 0; k < N; ++k) block[component * N + k] -= flow.rate[component].slope[k];
    }
}

template <std::size_t N>
void addToWell(const ConnectionFlow<N>& flow, const ControlShares& share, std::size_t place,
               WellBorder& border) {
    for (std::size_t k = 0; k < N; ++k)
        border.rowBlocks[place * N + k] =
            share.water * flow.rate[WaterPhase].slope[k] + share.oil * flow.rate[OilPhase].slope[k] +
            share.gas * flow.rate[GasPhase].slope[k] + share.reservoir * flow.reservoir.slope[k];
    border.diagonal += share.water * flow.byBhp[WaterPhase] + share.oil * flow.byBhp[OilPhase] +
                       share.gas * flow.byBhp[GasPhase] + share.reservoir * flow.reservoirByBhp;
}

/// Gas that is injected into a cell without free gas thins its oil, and thin oil lets more of it in: with
/// that slope the equations may ask for less dissolved gas where there is too much, and never free any.
void holdMobility(ConnectionFluid<Jet<3>>& fluid) {
    fluid.LambdaO.slope[GasPlace] = 0.0;
}

bool hasRateRow(const Well& well) {
    return !well.shut && isRateControlled(well);
}

/// The row of a well whose rate nothing moves, and of one that is held.
void finishRow(const Well& well, WellBorder& border) {
    if (hasRateRow(well) && border.diagonal != 0.0) {
        border.rhs = well.TargetRate - controlledRate(well, well.WellControl);
        return;
    }
    border.diagonal = 1.0;
    border.rhs = 0.0;
    std::fill(border.rowBlocks.begin(), border.rowBlocks.end(), 0.0);
}

/// False where the connection does not flow.
template <std::size_t N>
bool flowOf(const UnitSystem& units, const GridModel& grid, const FluidTables& tables, const CellState& state,
            double averagePressure, const Well& well, const WellConnection& connection, ThirdUnknown unknown,
            ConnectionFlow<N>& flow) {
    const ConnectionCoefficients c =
        connectionCoefficients(units, tables, state, averagePressure, well, connection);
    if (!(c.reservoir > 0.0)) return false;
    CellFluid<N> fluid = cellFluid<N>(grid, tables, state, connection.ConnCell, unknown);
    if constexpr (N == 3)
        if (well.InjectFluid == "gas" && unknown == ThirdUnknown::SolutionGas) holdMobility(fluid.mobile);
    flow = connectionFlow(units.FlowUnit, well, connection, c.dp, fluid.mobile);
    return true;
}

template <std::size_t N>
void addWell(const UnitSystem& units, const GridModel& grid, const FluidTables& tables,
             const CellState& state, double averagePressure, const Well& well, WellBorder& border,
             ImplicitWork& work) {
    const ControlShares share = hasRateRow(well) ? controlShares(well.WellControl) : ControlShares{};
    std::size_t place = 0;
    for (const WellConnection& connection : well.connections) {
        const int row = work.rowOfCell[static_cast<std::size_t>(connection.ConnCell)];
        if (row < 0) continue;
        const auto at = static_cast<std::size_t>(row);
        ConnectionFlow<N> flow;
        if (flowOf(units, grid, tables, state, averagePressure, well, connection, work.unknown[at], flow)) {
            addToCell(flow, at, place, border, work.system);
            addToWell(flow, share, place, border);
        }
        ++place;
    }
    finishRow(well, border);
}

template <std::size_t N>
ConnectionSlopes slopesOf(const ConnectionFlow<N>& flow, const ControlShares& share) {
    ConnectionSlopes slopes;
    slopes.byBhp = flow.byBhp;
    for (std::size_t component = 0; component < 3; ++component) {
        slopes.rate[component] = flow.rate[component].value;
        for (std::size_t k = 0; k < N; ++k) slopes.byUnknown[component][k] = flow.rate[component].slope[k];
    }
    slopes.controlled = share.water * slopes.rate[WaterPhase] + share.oil * slopes.rate[OilPhase] +
                        share.gas * slopes.rate[GasPhase] + share.reservoir * flow.reservoir.value;
    return slopes;
}

template <std::size_t N>
std::vector<ConnectionSlopes> slopesOfWell(const UnitSystem& units, const GridModel& grid,
                                           const FluidTables& tables, const CellState& state,
                                           double averagePressure, const Well& well,
                                           const ImplicitWork& work) {
    const ControlShares share = hasRateRow(well) ? controlShares(well.WellControl) : ControlShares{};
    std::vector<ConnectionSlopes> all;
    for (std::size_t n = 0; n < well.connections.size(); ++n) {
        const WellConnection& connection = well.connections[n];
        const int row = work.rowOfCell[static_cast<std::size_t>(connection.ConnCell)];
        ConnectionFlow<N> flow;
        if (row < 0 || !flowOf(units, grid, tables, state, averagePressure, well, connection,
                               work.unknown[static_cast<std::size_t>(row)], flow))
            continue;
        all.push_back(slopesOf(flow, share));
        all.back().row = row;
        all.back().connection = n;
    }
    return all;
}

}  // namespace

void buildWellBorders(const WellRecord& wells, ImplicitWork& work) {
    const auto size = static_cast<std::size_t>(work.system.blockSize);
    work.system.wells.assign(wells.wells.size(), {});
    for (std::size_t w = 0; w < wells.wells.size(); ++w) {
        WellBorder& border = work.system.wells[w];
        for (const WellConnection& connection : wells.wells[w].connections) {
            const int row = work.rowOfCell[static_cast<std::size_t>(connection.ConnCell)];
            if (row >= 0) border.cells.push_back(row);
        }
        border.columnBlocks.assign(border.cells.size() * size, 0.0);
        border.rowBlocks.assign(border.cells.size() * size, 0.0);
    }
    work.bhpChange.assign(wells.wells.size(), 0.0);
    work.switchesOfWell.assign(wells.wells.size(), 0);
    work.switchesOfRate.assign(wells.wells.size(), 0);
}

void addWells(const UnitSystem& units, const GridModel& grid, const FluidTables& tables,
              const CellState& state, double averagePressure, const WellRecord& wells, ImplicitWork& work) {
    for (std::size_t w = 0; w < wells.wells.size(); ++w) {
        WellBorder& border = work.system.wells[w];
        if (work.system.blockSize == 3)
            addWell<3>(units, grid, tables, state, averagePressure, wells.wells[w], border, work);
        else
            addWell<2>(units, grid, tables, state, averagePressure, wells.wells[w], border, work);
    }
}

std::vector<ConnectionSlopes> connectionSlopes(const UnitSystem& units, const GridModel& grid,
                                               const FluidTables& tables, const CellState& state,
                                               double averagePressure, const Well& well,
                                               const ImplicitWork& work) {
    return work.system.blockSize == 3
               ? slopesOfWell<3>(units, grid, tables, state, averagePressure, well, work)
               : slopesOfWell<2>(units, grid, tables, state, averagePressure, well, work);
}

}  // namespace kvr
