#include "implicit/jacobian.hpp"

#include "base/constants.hpp"
#include "base/threads.hpp"
#include "pressure/flow_coefficients.hpp"
#include "pressure/properties.hpp"
#include "pressure/transfer_head.hpp"

#include <array>
#include <utility>
#include <vector>

namespace kvr {

namespace {

double seriesOf(double a, double b) {
    if (a == b) return a;
    return a * b > 0.0 ? 2.0 * a * b / (a + b) : 0.0;
}

void addConnectionsOf(CellId cell, const GridModel& grid, const ConnectionTable& connections,
                      ImplicitWork& work) {
    for (int d = 1; d <= connections.NDIR; ++d) {
        const CellId other = connections.Neighbour(cell, d);
        if (other <= cell || grid.Active[other] == 0) continue;
        const int back = directionBack(connections, cell, other, d);
        if (back == 0 || (connections.Trans(cell, d) == 0.0 && connections.Trans(other, back) == 0.0))
            continue;
        ImplicitConnection connection;
        connection.first = work.rowOfCell[static_cast<std::size_t>(cell)];
        connection.second = work.rowOfCell[static_cast<std::size_t>(other)];
        connection.direction = d;
        connection.isTransfer = grid.dual.isSet && d == TransferDirection;
        connection.g = connections.DepthDiff(cell, d) / SquareInchesPerSquareFoot;
        work.connections.push_back(connection);
    }
}

// --- values into the system ------------------------------------------------------------------------

template <std::size_t N, class Work>
auto& termsOf(Work& work) {
    if constexpr (N == 3)
        return work.threePhase;
    else
        return work.twoPhase;
}

template <std::size_t N, class Work>
auto& headsOf(Work& work) {
    if constexpr (N == 3)
        return work.threePhaseHeads;
    else
        return work.twoPhaseHeads;
}

/// One flow with its slopes by the unknowns of both ends, positive into the first cell.
template <std::size_t N>
struct Flow {
    double value = 0.0;
    std::array<double, N> first{}, second{};
};

template <std::size_t N>
void addToSystem(std::size_t component, const Flow<N>& flow, const ImplicitConnection& connection,
                 BlockSystem& system) {
    const auto first = static_cast<std::size_t>(connection.first);
    const auto second = static_cast<std::size_t>(connection.second);
    system.rhs[first * N + component] += flow.value;
    system.rhs[second * N + component] -= flow.value;
    const auto rowAt = [&](int place) { return system.block(place).data() + component * N; };
    double* ownFirst = rowAt(system.diagonal[first]);
    double* toSecond = rowAt(connection.places.forward);
    double* ownSecond = rowAt(system.diagonal[second]);
    double* toFirst = rowAt(connection.places.backward);
    for (std::size_t k = 0; k < N; ++k) {
        ownFirst[k] -= flow.first[k];
        toSecond[k] -= flow.second[k];
        ownSecond[k] += flow.second[k];
        toFirst[k] += flow.first[k];
    }
}

/// The terms of a cell with the heads of its phases in their pressures.
template <std::size_t N>
CellTerms<N> withHeads(const CellTerms<N>& terms, const PhaseJets<N>& heads) {
    CellTerms<N> raised = terms;
    for (std::size_t phase = 0; phase < N; ++phase)
        raised.pressure[phase] = terms.pressure[phase] + heads[phase];
    return raised;
}

/// Flow of one phase, and whether it comes from the second cell.
template <std::size_t N>
Flow<N> phaseFlow(std::size_t phase, const CellTerms<N>& a, const CellTerms<N>& b,
                  const ImplicitConnection& connection, bool& fromSecond) {
    const double phi = phasePotential(a.pressure[phase].value, b.pressure[phase].value,
                                      a.density[phase].value, b.density[phase].value, connection.g);
    fromSecond = phi > 0.0;
    const Jet<N>& mobile = fromSecond ? b.flow[phase] : a.flow[phase];
    const double conductance = connection.trans * mobile.value;
    Flow<N> flow;
    flow.value = conductance * phi;
    for (std::size_t k = 0; k < N; ++k) {
        // The potential is linear in what it is made of: its slopes are those of either end alone.
        flow.first[k] = conductance * phasePotential(a.pressure[phase].slope[k], 0.0,
                                                     a.density[phase].slope[k], 0.0, connection.g);
        flow.second[k] = conductance * phasePotential(0.0, b.pressure[phase].slope[k], 0.0,
                                                      b.density[phase].slope[k], connection.g);
        (fromSecond ? flow.second : flow.first)[k] += connection.trans * phi * mobile.slope[k];
    }
    return flow;
}

/// Adds what the oil carries of dissolved gas.
template <std::size_t N>
void addDissolved(const Flow<N>& oil, const Jet<N>& Rs, bool fromSecond, Flow<N>& gas) {
    gas.value += Rs.value * oil.value;
    for (std::size_t k = 0; k < N; ++k) {
        gas.first[k] += Rs.value * oil.first[k];
        gas.second[k] += Rs.value * oil.second[k];
        (fromSecond ? gas.second : gas.first)[k] += Rs.slope[k] * oil.value;
    }
}

/// Flows of all components between two cells, the first N of them.
template <std::size_t N>
std::array<Flow<N>, N> flowsBetween(const ImplicitConnection& connection, const CellTerms<N>& a,
                                    const CellTerms<N>& b) {
    bool fromSecond = false;
    std::array<Flow<N>, N> flows;
    flows[WaterPhase] = phaseFlow(WaterPhase, a, b, connection, fromSecond);
    flows[OilPhase] = phaseFlow(OilPhase, a, b, connection, fromSecond);
    if constexpr (N == 3) {
        const bool oilFromSecond = fromSecond;
        flows[GasPhase] = phaseFlow(GasPhase, a, b, connection, fromSecond);
        addDissolved(flows[OilPhase], oilFromSecond ? b.Rs : a.Rs, oilFromSecond, flows[GasPhase]);
    }
    return flows;
}

template <std::size_t N>
std::array<Flow<N>, N> flowsOf(const ImplicitConnection& connection, const ImplicitWork& work) {
    const auto first = static_cast<std::size_t>(connection.first);
    const auto second = static_cast<std::size_t>(connection.second);
    const std::vector<CellTerms<N>>& terms = termsOf<N>(work);
    const std::vector<PhaseJets<N>>& heads = headsOf<N>(work);
    if (!connection.isTransfer || heads.empty()) return flowsBetween(connection, terms[first], terms[second]);
    return flowsBetween(connection, withHeads(terms[first], heads[first]),
                        withHeads(terms[second], heads[second]));
}

template <std::size_t N>
void addConnection(const ImplicitConnection& connection, ImplicitWork& work) {
    const std::array<Flow<N>, N> flows = flowsOf<N>(connection, work);
    for (std::size_t component = 0; component < N; ++component)
        addToSystem(component, flows[component], connection, work.system);
}

template <std::size_t N>
std::array<double, 3> flowValues(const ImplicitConnection& connection, const ImplicitWork& work) {
    const std::array<Flow<N>, N> flows = flowsOf<N>(connection, work);
    std::array<double, 3> values{};
    for (std::size_t component = 0; component < N; ++component) values[component] = flows[component].value;
    return values;
}

template <std::size_t N>
void addAccumulation(double dt, std::size_t row, ImplicitWork& work) {
    const CellTerms<N>& terms = termsOf<N>(work)[row];
    const CellId cell = work.cellOfRow[row];
    const std::array<double, 3> old = {work.oldAmounts.water[cell], work.oldAmounts.oil[cell],
                                       work.oldAmounts.gas[cell]};
    double* block = work.system.block(work.system.diagonal[row]).data();
    double* accumulation = work.system.accumulation.data() + row * N * N;
    for (std::size_t component = 0; component < N; ++component) {
        work.system.rhs[row * N + component] -= (terms.amount[component].value - old[component]) / dt;
        for (std::size_t k = 0; k < N; ++k) {
            const double slope = terms.amount[component].slope[k] / dt;
            block[component * N + k] += slope;
            accumulation[component * N + k] = slope;
        }
    }
}

/// A share of the height with its slopes; none beyond its bounds.
template <std::size_t N>
Jet<N> shareOf(const HeightShare& share, const Jet<N>& saturation) {
    const double value = shareAt(share, saturation.value);
    const bool bounded = value <= 0.0 || value >= 1.0;
    return chained(value, bounded ? 0.0 : share.slope, saturation);
}

template <std::size_t N>
PhaseJets<N> transferHeads(const GridModel& grid, const FluidTables& tables, CellId cell,
                           const HeldFluid<Jet<N>>& held, const CellTerms<N>& terms) {
    const SaturationTable& table = regionTable(tables, grid.SATNUM[cell]);
    const double height = blockHeight(grid, cell);
    PhaseJets<N> heads;
    heads[WaterPhase] = headOf(height, terms.density[WaterPhase], terms.density[OilPhase],
                               shareOf(waterHeight(table), held.Sw));
    if constexpr (N == 3)
        heads[GasPhase] = headOf(height, terms.density[OilPhase], terms.density[GasPhase],
                                 shareOf(gasHeight(table), held.Sg));
    return heads;
}

template <std::size_t N>
void assemble(double dt, const GridModel& grid, const FluidTables& tables, const CellState& state,
              ImplicitWork& work) {
    std::vector<CellTerms<N>>& terms = termsOf<N>(work);
    const auto rows = static_cast<CellId>(work.cellOfRow.size());
    terms.resize(work.cellOfRow.size());
    std::vector<PhaseJets<N>>& heads = headsOf<N>(work);
    if (grid.dual.gravityDrainage) heads.resize(work.cellOfRow.size());
#pragma omp parallel for schedule(static) if (rows >= ParallelCells)
    for (CellId i = 0; i < rows; ++i) {
        const auto row = static_cast<std::size_t>(i);
        const CellId cell = work.cellOfRow[row];
        const CellFluid<N> fluid = cellFluid<N>(grid, tables, state, cell, work.unknown[row]);
        terms[row] = cellTerms(pvtAt(tables, cell), fluid);
        if (!heads.empty()) heads[row] = transferHeads(grid, tables, cell, fluid.held, terms[row]);
    }
    clearValues(work.system);
    for (std::size_t row = 0; row < work.cellOfRow.size(); ++row) addAccumulation<N>(dt, row, work);
    for (const ImplicitConnection& connection : work.connections) addConnection<N>(connection, work);
}

/// Matrix cells, of which each is connected to its fractures alone.
LeafRows matrixRowsOf(const GridModel& grid, const ImplicitWork& work) {
    std::vector<int> rows;
    for (std::size_t row = 0; row < work.cellOfRow.size(); ++row)
        if (grid.dual.isSet && isMatrixCell(grid, work.cellOfRow[row])) rows.push_back(static_cast<int>(row));
    return findLeafRows(work.system, rows);
}

}  // namespace

void buildImplicitPattern(const GridModel& grid, const ConnectionTable& connections, bool hasGas,
                          ImplicitWork& work) {
    work.cellOfRow.clear();
    work.connections.clear();
    work.rowOfCell.assign(static_cast<std::size_t>(grid.NCELLS) + 1, -1);
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        if (grid.Active[cell] == 0) continue;
        work.rowOfCell[static_cast<std::size_t>(cell)] = static_cast<int>(work.cellOfRow.size());
        work.cellOfRow.push_back(cell);
    }
    for (const CellId cell : work.cellOfRow) addConnectionsOf(cell, grid, connections, work);

    std::vector<std::pair<int, int>> pairs;
    pairs.reserve(work.connections.size());
    for (const ImplicitConnection& connection : work.connections)
        pairs.emplace_back(connection.first, connection.second);
    const int size = hasGas ? 3 : 2;
    const std::vector<ConnectionPlaces> places =
        buildBlockPattern(static_cast<int>(work.cellOfRow.size()), size, pairs, work.system);
    for (std::size_t n = 0; n < places.size(); ++n) work.connections[n].places = places[n];
    const auto blockValues = static_cast<std::size_t>(size) * static_cast<std::size_t>(size);
    work.system.accumulation.assign(work.cellOfRow.size() * blockValues, 0.0);
    work.unknown.assign(work.cellOfRow.size(), ThirdUnknown::FreeGas);
    work.switchesOfStep.assign(work.cellOfRow.size(), 0);
    work.solution.assign(work.cellOfRow.size() * static_cast<std::size_t>(size), 0.0);
    work.matrixRows = matrixRowsOf(grid, work);
}

void setConnectionTrans(const UnitSystem& units, const ConnectionTable& connections, ImplicitWork& work) {
    for (ImplicitConnection& connection : work.connections) {
        const CellId cell = work.cellOfRow[static_cast<std::size_t>(connection.first)];
        const CellId other = work.cellOfRow[static_cast<std::size_t>(connection.second)];
        const int back = directionBack(connections, cell, other, connection.direction);
        connection.trans = units.FlowUnit * seriesOf(connections.Trans(cell, connection.direction),
                                                     connections.Trans(other, back));
    }
}

void assembleCells(double dt, const GridModel& grid, const FluidTables& tables, const CellState& state,
                   ImplicitWork& work) {
    if (work.system.blockSize == 3)
        assemble<3>(dt, grid, tables, state, work);
    else
        assemble<2>(dt, grid, tables, state, work);
}

std::array<double, 3> connectionFlows(const ImplicitConnection& connection, const ImplicitWork& work) {
    return work.system.blockSize == 3 ? flowValues<3>(connection, work) : flowValues<2>(connection, work);
}

}  // namespace kvr
