#include "pressure/component_transport.hpp"

#include "base/threads.hpp"
#include "pressure/component_properties.hpp"
#include "pressure/velocity.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double LargestPoreShare = 0.1;  // of a cell's pores that leave it in a substep
constexpr double LargestMoleShare = 0.5;  // of what it holds of a component
constexpr double LeastShare =
    1e-20;  // of a cell's moles: a component that is not there; flashes hold traces of it
constexpr double LeastSubstep = 1e-9;  // of the step: the moves go on, whatever the limits say

/// A day's flow through faces and sources. A face has two rows: what goes through it toward the high side,
/// and what comes back; a row has the moles of each component, the surface volume of water and the volume.
struct Moves {
    int count = 0;                   // components
    DirectionArray<double> faces;    // (cell, rows of its three high faces)
    std::vector<double> sourceRows;  // [source * width], into the reservoir positive
    DirectionArray<double> net;      // (cell, row): what a day brings
    CellArray<double> longest;       // days that the limits of a cell allow
    [[nodiscard]] int width() const { return count + 2; }
    [[nodiscard]] int water() const { return count; }
    [[nodiscard]] int volume() const { return count + 1; }
    [[nodiscard]] std::size_t rowOf(int axis, bool back) const {
        return static_cast<std::size_t>((2 * (axis - 1) + (back ? 1 : 0)) * width());
    }
};

void sizeMoves(CellId cells, int count, std::size_t sources, Moves& moves) {
    moves.count = count;
    moves.faces.assign(cells, 2 * AxisCount * moves.width(), 0.0);
    moves.net.assign(cells, moves.width(), 0.0);
    moves.longest.assign(cells, 0.0);
    moves.sourceRows.assign(sources * static_cast<std::size_t>(moves.width()), 0.0);
}

/// A volume of a phase of a cell as amounts, added to a row.
void addMixture(const ComponentStage& stage, double volumeFactor, const CellState& state, CellId from,
                bool isLiquid, double volume, double* row) {
    if (volume == 0.0) return;
    const FlashState& flash = stage.cells.flash[static_cast<std::size_t>(from)];
    const Composition& fractions = isLiquid ? flash.liquid : flash.vapour;
    const double moles = volume * phaseMolesIn(stage, volumeFactor, state, from, isLiquid);
    const double* held = stage.amounts.moles.row(from);
    const double* z = stage.cells.z.row(from);
    row[stage.set.count + 1] += volume;
    for (int i = 0; i < stage.set.count; ++i)
        if (held[i] > 0.0 && z[i] > LeastShare) row[i] += moles * fractions[i];
}

void addWater(const ComponentStage& stage, const CellState& state, CellId from, double volume, double* row) {
    row[stage.set.count] += volume / state.Bw[from];
    row[stage.set.count + 1] += volume;
}

void measureFaces(const UnitSystem& units, const ConnectionTable& connections, const VelocityField& velocity,
                  const ComponentStage& stage, const CellState& state, CellId c, Moves& moves) {
    double* const rows = moves.faces.row(c);
    std::fill(rows, rows + moves.faces.width, 0.0);
    for (int axis = 1; axis <= AxisCount; ++axis) {
        const int face = 2 * axis;
        const CellId n = connections.Neighbour(c, face);
        if (n <= 0 || connections.Trans(c, face) == 0.0) continue;
        const PhaseFlux flux = phaseSharesThroughFace(units.FlowUnit, connections, state, c, face,
                                                      velocity.CellFaceFlux(c, face));
        const auto from = [c, n](double volume) { return volume > 0.0 ? c : n; };
        const auto row = [&](double volume) { return rows + moves.rowOf(axis, !(volume > 0.0)); };
        addMixture(stage, units.VolumeFactor, state, from(flux.oil), true, std::abs(flux.oil), row(flux.oil));
        addMixture(stage, units.VolumeFactor, state, from(flux.gas), false, std::abs(flux.gas),
                   row(flux.gas));
        addWater(stage, state, from(flux.water), std::abs(flux.water), row(flux.water));
    }
}

void measureSources(const UnitSystem& units, std::span<const ComponentSource> sources,
                    const ComponentStage& stage, const CellState& state, Moves& moves) {
    for (std::size_t s = 0; s < sources.size(); ++s) {
        double* const row = moves.sourceRows.data() + s * static_cast<std::size_t>(moves.width());
        std::fill(row, row + moves.width(), 0.0);
        const CellId c = sources[s].cell;
        const double mobility = state.LambdaO[c] + state.LambdaG[c] + state.LambdaW[c];
        if (sources[s].produced > 0.0 && mobility > 0.0) {
            const double perMobility = sources[s].produced / mobility;
            addMixture(stage, units.VolumeFactor, state, c, true, perMobility * state.LambdaO[c], row);
            addMixture(stage, units.VolumeFactor, state, c, false, perMobility * state.LambdaG[c], row);
            addWater(stage, state, c, perMobility * state.LambdaW[c], row);
        }
        for (int k = 0; k < moves.width(); ++k) row[k] = -row[k];
        for (int i = 0; i < stage.set.count; ++i) row[i] += sources[s].stream[i];
        row[moves.water()] += sources[s].waterStream;
    }
}

/// Adds a row to what a cell gains, and to what leaves it where it is a loss.
void addRow(const double* row, double sign, int width, double* net, double* leaving) {
    for (int k = 0; k < width; ++k) {
        net[k] += sign * row[k];
        if (sign < 0.0) leaving[k] += row[k];
    }
}

/// What the faces of a cell bring it in a day, and how long it can give what leaves it.
void gatherCell(const ConnectionTable& connections, const ComponentStage& stage, const CellState& state,
                CellId c, Moves& moves) {
    constexpr int MostWidth = MaxComponents + 2;
    double leaving[MostWidth] = {};
    double* const net = moves.net.row(c);
    const int width = moves.width();
    std::fill(net, net + width, 0.0);
    for (int axis = 1; axis <= AxisCount; ++axis) {
        const double* const high = moves.faces.row(c);
        addRow(high + moves.rowOf(axis, false), -1.0, width, net, leaving);
        addRow(high + moves.rowOf(axis, true), 1.0, width, net, leaving);
        const CellId low = connections.Neighbour(c, 2 * axis - 1);
        if (low <= 0) continue;
        const double* const before = moves.faces.row(low);
        addRow(before + moves.rowOf(axis, false), 1.0, width, net, leaving);
        addRow(before + moves.rowOf(axis, true), -1.0, width, net, leaving);
    }
    double longest = HUGE_VAL;
    if (leaving[moves.volume()] > 0.0)
        longest = LargestPoreShare * state.PoreVolume[c] / leaving[moves.volume()];
    for (int i = 0; i < moves.count; ++i)
        if (leaving[i] > 0.0)
            longest = std::min(longest, LargestMoleShare * stage.amounts.moles(c, i + 1) / leaving[i]);
    moves.longest[c] = longest;
}

/// Sources take of their cells what faces leave them: their part bounds the substep too.
void addSources(std::span<const ComponentSource> sources, const ComponentStage& stage, const CellState& state,
                Moves& moves) {
    for (std::size_t s = 0; s < sources.size(); ++s) {
        const CellId c = sources[s].cell;
        const double* const row = moves.sourceRows.data() + s * static_cast<std::size_t>(moves.width());
        double* const net = moves.net.row(c);
        for (int k = 0; k < moves.width(); ++k) net[k] += row[k];
        double perDay = 1.0 / moves.longest[c];
        perDay += std::max(0.0, -row[moves.volume()]) / (LargestPoreShare * state.PoreVolume[c]);
        for (int i = 0; i < moves.count; ++i)
            if (row[i] < 0.0)
                perDay = std::max(perDay, -row[i] / (LargestMoleShare * stage.amounts.moles(c, i + 1)));
        moves.longest[c] = 1.0 / perDay;
    }
}

void applyMoves(const Moves& moves, double dt, CellId c, ComponentStage& stage) {
    const double* const net = moves.net.row(c);
    double* const moles = stage.amounts.moles.row(c);
    for (int i = 0; i < moves.count; ++i) moles[i] += dt * net[i];
    stage.amounts.water[c] += dt * net[moves.water()];
}

double longestSubstep(const GridModel& grid, const Moves& moves, double left) {
    double longest = left;
    for (CellId c = 1; c <= grid.NCELLS; ++c)
        if (grid.Active[c] != 0) longest = std::min(longest, moves.longest[c]);
    return longest;
}

void measureMoves(const UnitSystem& units, const GridModel& grid, const ConnectionTable& connections,
                  const VelocityField& velocity, std::span<const ComponentSource> sources,
                  const ComponentStage& stage, const CellState& state, Moves& moves) {
    const bool inParallel = grid.NCELLS >= ParallelCells;
#pragma omp parallel for schedule(static) if (inParallel)
    for (CellId c = 1; c <= grid.NCELLS; ++c)
        if (grid.Active[c] != 0) measureFaces(units, connections, velocity, stage, state, c, moves);
#pragma omp parallel for schedule(static) if (inParallel)
    for (CellId c = 1; c <= grid.NCELLS; ++c)
        if (grid.Active[c] != 0) gatherCell(connections, stage, state, c, moves);
    measureSources(units, sources, stage, state, moves);
    addSources(sources, stage, state, moves);
}

}  // namespace

void moveComponents(const UnitSystem& units, const GridModel& grid, const ConnectionTable& connections,
                    const FluidTables& tables, const VelocityField& velocity,
                    std::span<const ComponentSource> sources, double dt, ComponentStage& stage,
                    CellState& state, std::vector<SourceTotals>& moved) {
    Moves moves;
    sizeMoves(grid.NCELLS, stage.set.count, sources.size(), moves);
    moved.assign(sources.size(), {});
    for (double left = dt; left > 0.0;) {
        measureMoves(units, grid, connections, velocity, sources, stage, state, moves);
        const double substep = std::max(longestSubstep(grid, moves, left), std::min(left, LeastSubstep * dt));
#pragma omp parallel for schedule(static) if (grid.NCELLS >= ParallelCells)
        for (CellId c = 1; c <= grid.NCELLS; ++c)
            if (grid.Active[c] != 0) applyMoves(moves, substep, c, stage);
        for (std::size_t s = 0; s < sources.size(); ++s) {
            const double* const row = moves.sourceRows.data() + s * static_cast<std::size_t>(moves.width());
            for (int i = 0; i < moves.count; ++i) moved[s].moles[i] += substep * row[i];
            moved[s].water += substep * row[moves.water()];
        }
        refreshComponents(grid, tables, units.VolumeFactor, VolumeSlopes::None, Saturations::Found, stage,
                          state);
        left = substep < left ? left - substep : 0.0;
    }
}

}  // namespace kvr
