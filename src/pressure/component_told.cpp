#include "pressure/component_told.hpp"

#include <algorithm>
#include <array>
#include <cmath>

namespace kvr {

namespace {

constexpr double LeastEnd = 1e-12;  // of all that is left, for what is not there: no cell is overdrawn
constexpr int MostFillings = 6;
constexpr double FilledPores = 1e-6;  // of them, that may be missing
constexpr double LeastSlope = 0.1;    // of volume, where a reservoir volume more is held

using Amounts = std::array<double, MaxComponents + 1>;  // of components, then of water

/// Reservoir volume of amounts at the pressure of a cell; `flash` goes from one call to the next.
double volumeOf(const ComponentSet& set, double volumeFactor, const CellState& state, CellId c,
                const Amounts& amounts, FlashState& flash) {
    const auto water = at(set.count);
    double moles = 0.0;
    for (std::size_t i = 0; i < water; ++i) moles += amounts[i];
    const double waterVolume = state.Bw[c] * amounts[water];
    if (!(moles > 0.0)) return waterVolume;
    Composition feed{};
    for (std::size_t i = 0; i < water; ++i) feed[i] = amounts[i] / moles;
    FlashPT(set, feed, state.Pressure[c], flash);
    const PhaseVolumes volumes = phaseVolumes(set, state.Pressure[c], flash);
    return waterVolume + moles * (volumes.liquid + volumes.vapour) / volumeFactor;
}

/// What fills the pores of a cell at the end: what lines leave it, and as much more or less of what they
/// leave behind it as it takes, since what stands apart before and behind a front is one mixture in a cell.
/// False where that is no number.
bool fillCell(const ComponentSet& set, double volumeFactor, const CellState& state, CellId c,
              const double* left, const Amounts& behind, FlashState flash, Amounts& held) {
    const double pores = state.PoreVolume[c];
    double all = 0.0, more = 0.0, moreBefore = 0.0, volumeBefore = 0.0;
    for (std::size_t i = 0; i < at(set.count); ++i) all += pores * left[i];
    for (int n = 0; n < MostFillings; ++n) {
        for (std::size_t k = 0; k <= at(set.count); ++k) held[k] = pores * left[k] + more * behind[k];
        for (std::size_t i = 0; i < at(set.count); ++i) held[i] = std::max(held[i], LeastEnd * all);
        const double volume = volumeOf(set, volumeFactor, state, c, held, flash);
        if (!std::isfinite(volume)) return false;
        if (std::abs(volume - pores) <= FilledPores * pores) return true;
        const double slope = n > 0 ? (volume - volumeBefore) / (more - moreBefore) : 1.0;
        moreBefore = more;
        volumeBefore = volume;
        more += (pores - volume) / std::max(slope, LeastSlope);
    }
    return true;
}

/// Reservoir volume a day that goes out of a cell as it is told, and what lines leave where it goes.
double sumBehind(const ConnectionTable& connections, const DirectionArray<double>& flux,
                 const ComponentMakeUp& makeUp, const DirectionArray<double>& told, CellId c,
                 Amounts& behind) {
    double leaves = 0.0;
    behind = {};
    forToldOutflows(connections, flux, makeUp, c, [&](CellId low, int axis, double) {
        const double flow = std::abs(told(low, axis));
        const double* const next = makeUp.left.row(low == c ? connections.Neighbour(c, 2 * axis) : low);
        for (int k = 0; k <= makeUp.count; ++k) behind[at(k)] += flow * next[k];
        leaves += flow;
    });
    if (leaves > 0.0)
        for (double& each : behind) each /= leaves;
    return leaves;
}

/// Adds to what a reservoir volume out of a cell is made of, down to nothing.
void giveMore(const ConnectionTable& connections, const DirectionArray<double>& flux,
              const ComponentMakeUp& makeUp, const DirectionArray<double>& told, CellId c,
              const Amounts& more, DirectionArray<double>& net, DirectionArray<double>& faces) {
    forToldOutflows(connections, flux, makeUp, c, [&](CellId low, int axis, double) {
        double* const row = faces.row(low) + makeUp.rowOf(axis);
        const CellId to = low == c ? connections.Neighbour(c, 2 * axis) : low;
        const double flow = std::abs(told(low, axis));
        for (int k = 0; k <= makeUp.count; ++k) {
            const double added = std::max(more[at(k)], -row[k]);
            row[k] += added;
            net(c, k + 1) -= flow * added;
            net(to, k + 1) += flow * added;
        }
    });
}

}  // namespace

void sumOutflows(const ConnectionTable& connections, const DirectionArray<double>& flux,
                 const GridModel& grid, std::span<const ComponentSource> sources,
                 CellArray<double>& outflow) {
    outflow.assign(grid.NCELLS, 0.0);
    for (CellId c = 1; c <= grid.NCELLS; ++c) {
        if (grid.Active[c] == 0) continue;
        for (int face = 1; face <= FaceCount; ++face)
            if (connections.Neighbour(c, face) > 0)
                outflow[c] += std::max(0.0, outflowThrough(connections, flux, c, face));
    }
    for (const ComponentSource& source : sources) outflow[source.cell] += source.produced;
}

void reachEnds(double volumeFactor, const GridModel& grid, const ConnectionTable& connections,
               const DirectionArray<double>& flux, std::span<const ComponentSource> sources,
               const ComponentMakeUp& makeUp, const ComponentStage& stage, const CellState& state,
               const DirectionArray<double>& told, double dt, DirectionArray<double>& net,
               DirectionArray<double>& faces) {
    FlowOrder order;
    orderByFlow(grid, connections, flux, order);
    CellArray<double> outflow;
    sumOutflows(connections, flux, grid, sources, outflow);
    Amounts behind{}, held{}, more{};
    for (const CellId c : order.cells) {
        const double leaves = sumBehind(connections, flux, makeUp, told, c, behind);
        if (!(leaves > 0.0) || leaves < (1.0 - AllTold) * outflow[c]) continue;
        if (!fillCell(stage.set, volumeFactor, state, c, makeUp.left.row(c), behind, stage.cells.flash[at(c)],
                      held))
            continue;
        // No faster than the flow turns the cell over: else what one cell has wrong is at the well at once.
        const double perVolume = std::min(1.0 / (leaves * dt), 1.0 / state.PoreVolume[c]);
        for (int k = 0; k <= makeUp.count; ++k) {
            const double now = k < makeUp.count ? stage.amounts.moles(c, k + 1) : stage.amounts.water[c];
            more[at(k)] = perVolume * (now + dt * net(c, k + 1) - held[at(k)]);
        }
        giveMore(connections, flux, makeUp, told, c, more, net, faces);
    }
}

}  // namespace kvr
