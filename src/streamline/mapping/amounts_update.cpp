#include "streamline/mapping/amounts_update.hpp"

#include "base/threads.hpp"
#include "fluid/black_oil.hpp"
#include "pressure/cell_transport.hpp"
#include "pressure/flow_order.hpp"
#include "streamline/mapping/face_transfer.hpp"
#include "streamline/mapping/mapping.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr int Axes = 3;

/// Surface amounts scaled to one reservoir volume at the factors of a cell; false where there are none. What
/// a clamped node has made negative counts as nothing.
bool makeUpOf(const FluidTables& tables, const CellState& state, CellId cell, ConservedAmounts amounts,
              ConservedAmounts& perVolume) {
    amounts = {std::max(0.0, amounts.water), std::max(0.0, amounts.oil), std::max(0.0, amounts.gas)};
    double volume = state.Bw[cell] * amounts.water + state.Bo[cell] * amounts.oil;
    if (tables.hasGas) {
        const double dissolved = std::min(
            amounts.gas,
            allowedRs(state, cell, SolutionRs(pvtAt(tables, cell), state.Pressure[cell])) * amounts.oil);
        volume += state.Bg[cell] * (amounts.gas - dissolved);
    }
    if (!(volume > 0.0)) return false;
    perVolume = {amounts.water / volume, amounts.oil / volume, amounts.gas / volume};
    return true;
}

/// Whether lines tell the make-up of a flow: those that do have to be enough to stand for all. Lines that are
/// slow in a cell have the finer nodes there, and carry other fluids than fast ones.
bool isTold(double told, double flow) {
    constexpr double LeastShare = 0.25;
    return told * flow > 0.0 && std::abs(told) >= LeastShare * std::abs(flow);
}

/// Cells that fluids reach through connections which lines know nothing of: those of cells that are not
/// neighbours. Empty where there are none.
CellArray<std::uint8_t> beyondLines(const Simulation& s) {
    CellArray<std::uint8_t> beyond;
    if (s.connections.further.empty()) return beyond;
    beyond.assign(s.grid.NCELLS, 0);
    const DirectionArray<double>& flux = s.velocity.CellFaceFlux;
    std::vector<CellId> open;
    const auto reach = [&](CellId cell) {
        if (beyond[cell] == 0) open.push_back(cell);
        beyond[cell] = 1;
    };
    for (const FurtherConnection& further : s.connections.further) {
        const double flow = flux(further.first, further.fromFirst);
        if (flow != 0.0) reach(flow > 0.0 ? further.second : further.first);
    }
    while (!open.empty()) {
        const CellId cell = open.back();
        open.pop_back();
        for (int d = 1; d <= s.connections.flowDirections; ++d) {
            const CellId next = s.connections.Neighbour(cell, d);
            if (next > 0 && outflowThrough(s.connections, flux, cell, d) > 0.0) reach(next);
        }
    }
    return beyond;
}

/// Whether lines may speak of what leaves a cell.
bool linesSpeak(const CellArray<std::uint8_t>& beyond, CellId cell) {
    return beyond.empty() || beyond[cell] == 0;
}

/// Faces that lines cross along their flow.
void faceMakeUp(const Simulation& s, const CellArray<std::uint8_t>& beyond, MakeUp& makeUp) {
    const FaceTransfer& lines = s.lines.transfer;
    makeUp.faceKnown.assign(s.grid.NCELLS, Axes, 0);
    makeUp.face.assign(s.grid.NCELLS, Axes, {});
#pragma omp parallel for schedule(static) if (s.grid.NCELLS >= ParallelCells)
    for (CellId cell = 1; cell <= s.grid.NCELLS; ++cell)
        for (int axis = 1; axis <= Axes; ++axis) {
            const double flow = lines.flow(cell, axis);
            const double flux = s.velocity.CellFaceFlux(cell, 2 * axis);
            const double told = lines.told(cell, axis);
            if (!(flow * flux > 0.0) || !isTold(told, flow)) continue;
            const CellId from = flux > 0.0 ? cell : s.connections.Neighbour(cell, 2 * axis);
            if (!linesSpeak(beyond, from)) continue;
            const ConservedAmounts amounts{lines.water(cell, axis) / told, lines.oil(cell, axis) / told,
                                           lines.gas(cell, axis) / told};
            makeUp.faceKnown(cell, axis) =
                makeUpOf(s.fluids, s.state, from, amounts, makeUp.face(cell, axis)) ? 1 : 0;
        }
}

/// Producing connections that lines reach.
void connectionMakeUp(const Simulation& s, const CellArray<std::uint8_t>& beyond, MakeUp& makeUp) {
    const OutletTable& outlets = s.lines.outlets;
    makeUp.connectionKnown.resize(outlets.size());
    makeUp.connection.resize(outlets.size());
    for (std::size_t w = 0; w < outlets.size(); ++w) {
        makeUp.connectionKnown[w].assign(outlets[w].size(), 0);
        makeUp.connection[w].assign(outlets[w].size(), {});
        for (std::size_t n = 0; n < outlets[w].size(); ++n) {
            const OutletRates& sum = outlets[w][n];
            const CellId cell = s.wells.wells[w].connections[n].ConnCell;
            if (!isTold(sum.told, sum.reservoir) || !linesSpeak(beyond, cell)) continue;
            makeUp.connectionKnown[w][n] =
                makeUpOf(s.fluids, s.state, cell, {sum.water, sum.oil, sum.gas}, makeUp.connection[w][n]) ? 1
                                                                                                          : 0;
        }
    }
}

/// Water saturation that lines leave in the cells which they cross.
void saturationOfLines(const GridModel& grid, const MappingSums& sums, CellArray<double>& Sw) {
    constexpr double Untold = -1.0;
    Sw.assign(grid.NCELLS, Untold);
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell)
        if (sums.weight[cell] > 0.0) Sw[cell] = sums.water[cell] / sums.weight[cell];
}

}  // namespace

void advanceByFaceTransfer(Simulation& simulation) {
    MakeUp makeUp;
    const CellArray<std::uint8_t> beyond = beyondLines(simulation);
    faceMakeUp(simulation, beyond, makeUp);
    connectionMakeUp(simulation, beyond, makeUp);
    // Analytic lines know nothing of tracers,
    const bool analytic = simulation.lines.field.solver == LineSolver::Analytic;
    // ... and what they pass is what they hold: there is nothing to compare.
    if (!analytic) saturationOfLines(simulation.grid, simulation.mapping, makeUp.Sw);
    makeUp.holdsGravity = simulation.lines.field.gravity;
    // ... nor do others behind connections that they do not pass.
    const bool byCells = analytic || !beyond.empty();
    transportAmounts(makeUp, byCells, simulation);
    if (!byCells) mapTracers(simulation.grid, simulation.mapping, simulation.state);
}

}  // namespace kvr
