#include "pressure/component_transport.hpp"

#include "pressure/component_pressure.hpp"
#include "pressure/component_properties.hpp"
#include "pressure/velocity.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double LargestPoreShare = 0.1;  // of a cell's pores that leave it in a substep
constexpr double LargestMoleShare = 0.5;  // of what it holds of a component
constexpr double LeastSubstep = 1e-9;     // of the step: the moves go on, whatever the limits say

/// A day's changes of all cells.
struct Changes {
    DirectionArray<double> moles;    // lb-mole
    DirectionArray<double> leaving;  // lb-mole
    CellArray<double> water;         // surface volume
    CellArray<double> volume;        // internal volume that leaves
    SourceTotals sources;
};

void clear(CellId cells, int count, Changes& changes) {
    changes.moles.assign(cells, count, 0.0);
    changes.leaving.assign(cells, count, 0.0);
    changes.water.assign(cells, 0.0);
    changes.volume.assign(cells, 0.0);
    changes.sources = {};
}

/// Takes a volume of a phase out of a cell; `to` 0: into a source.
void takeMixture(const ComponentStage& stage, double volumeFactor, const CellState& state, CellId from,
                 CellId to, bool isLiquid, double volume, Changes& changes) {
    const FlashState& flash = stage.cells.flash[static_cast<std::size_t>(from)];
    const Composition& fractions = isLiquid ? flash.liquid : flash.vapour;
    const double moles = volume * phaseMoles(stage.set, volumeFactor, state.Pressure[from],
                                             isLiquid ? flash.zLiquid : flash.zVapour);
    changes.volume[from] += volume;
    for (int i = 0; i < stage.set.count; ++i) {
        // A composition holds traces of what is not there.
        if (!(stage.amounts.moles(from, i + 1) > 0.0)) continue;
        const double part = moles * fractions[i];
        changes.moles(from, i + 1) -= part;
        changes.leaving(from, i + 1) += part;
        if (to > 0)
            changes.moles(to, i + 1) += part;
        else
            changes.sources.moles[i] -= part;
    }
}

void takeWater(const CellState& state, CellId from, CellId to, double volume, Changes& changes) {
    const double surface = volume / state.Bw[from];
    changes.volume[from] += volume;
    changes.water[from] -= surface;
    if (to > 0)
        changes.water[to] += surface;
    else
        changes.sources.water -= surface;
}

void throughFaces(const UnitSystem& units, const GridModel& grid, const ConnectionTable& connections,
                  const ComponentFlow& flow, const ComponentStage& stage, const CellState& state,
                  Changes& changes) {
    for (CellId c = 1; c <= grid.NCELLS; ++c) {
        if (grid.Active[c] == 0) continue;
        for (int axis = 1; axis <= AxisCount; ++axis) {
            const int face = 2 * axis;
            const CellId n = connections.Neighbour(c, face);
            if (n <= 0 || connections.Trans(c, face) == 0.0) continue;
            const PhaseFlux flux =
                phaseSharesThroughFace(units.FlowUnit, connections, state, c, face, flow.total(c, axis));
            const auto from = [c, n](double volume) { return volume > 0.0 ? c : n; };
            const auto to = [c, n](double volume) { return volume > 0.0 ? n : c; };
            takeMixture(stage, units.VolumeFactor, state, from(flux.oil), to(flux.oil), true,
                        std::abs(flux.oil), changes);
            takeMixture(stage, units.VolumeFactor, state, from(flux.gas), to(flux.gas), false,
                        std::abs(flux.gas), changes);
            takeWater(state, from(flux.water), to(flux.water), std::abs(flux.water), changes);
        }
    }
}

void throughSources(const UnitSystem& units, std::span<const ComponentSource> sources,
                    const ComponentFlow& flow, const ComponentStage& stage, const CellState& state,
                    Changes& changes) {
    for (std::size_t s = 0; s < sources.size(); ++s) {
        const CellId c = sources[s].cell;
        for (int i = 0; i < stage.set.count; ++i) {
            const double part = flow.injected[s] * sources[s].stream[i];
            changes.moles(c, i + 1) += part;
            changes.sources.moles[i] += part;
        }
        const double mobility = state.LambdaO[c] + state.LambdaG[c] + state.LambdaW[c];
        if (!(flow.produced[s] > 0.0 && mobility > 0.0)) continue;
        const double perMobility = flow.produced[s] / mobility;
        takeMixture(stage, units.VolumeFactor, state, c, 0, true, perMobility * state.LambdaO[c], changes);
        takeMixture(stage, units.VolumeFactor, state, c, 0, false, perMobility * state.LambdaG[c], changes);
        takeWater(state, c, 0, perMobility * state.LambdaW[c], changes);
    }
}

double longestSubstep(const GridModel& grid, const ComponentStage& stage, const CellState& state,
                      const Changes& changes, double left) {
    double longest = left;
    for (CellId c = 1; c <= grid.NCELLS; ++c) {
        if (grid.Active[c] == 0) continue;
        if (changes.volume[c] > 0.0)
            longest = std::min(longest, LargestPoreShare * state.PoreVolume[c] / changes.volume[c]);
        for (int i = 1; i <= stage.set.count; ++i)
            if (changes.leaving(c, i) > 0.0)
                longest =
                    std::min(longest, LargestMoleShare * stage.amounts.moles(c, i) / changes.leaving(c, i));
    }
    return longest;
}

void apply(const Changes& changes, double dt, ComponentStage& stage) {
    std::vector<double>& moles = stage.amounts.moles.slots;
    for (std::size_t k = 0; k < moles.size(); ++k) moles[k] += dt * changes.moles.slots[k];
    std::vector<double>& water = stage.amounts.water.slots;
    for (std::size_t k = 0; k < water.size(); ++k) water[k] += dt * changes.water.slots[k];
}

}  // namespace

void takeFlow(const UnitSystem& units, const GridModel& grid, const ConnectionTable& connections,
              std::span<const ComponentSource> sources, const ComponentStage& stage, const CellState& state,
              ComponentFlow& flow) {
    flow.total.assign(grid.NCELLS, AxisCount, 0.0);
    for (CellId c = 1; c <= grid.NCELLS; ++c) {
        if (grid.Active[c] == 0) continue;
        for (int axis = 1; axis <= AxisCount; ++axis) {
            const PhaseFlux flux = phaseFluxThroughFace(units.FlowUnit, connections, state, c, 2 * axis);
            flow.total(c, axis) = flux.oil + flux.water + flux.gas;
        }
    }
    flow.produced.assign(sources.size(), 0.0);
    flow.injected.assign(sources.size(), 0.0);
    for (std::size_t s = 0; s < sources.size(); ++s) {
        const SourceFlow pressed = sourceFlow(sources[s], state);
        const double volume = pressed.coefficient * pressed.drawdown;
        flow.injected[s] = sources[s].molarRate;
        if (!injects(sources[s])) {
            flow.produced[s] = -volume;
            continue;
        }
        double perMole = 0.0;
        for (int i = 0; i < stage.set.count; ++i)
            perMole += sources[s].stream[i] * stage.Partial(sources[s].cell, i + 1);
        flow.injected[s] += volume / perMole;
    }
}

SourceTotals moveComponents(const UnitSystem& units, const GridModel& grid,
                            const ConnectionTable& connections, const FluidTables& tables,
                            std::span<const ComponentSource> sources, const ComponentFlow& flow, double dt,
                            ComponentStage& stage, CellState& state) {
    SourceTotals totals;
    Changes changes;
    for (double left = dt; left > 0.0;) {
        clear(grid.NCELLS, stage.set.count, changes);
        throughFaces(units, grid, connections, flow, stage, state, changes);
        throughSources(units, sources, flow, stage, state, changes);
        const double substep =
            std::max(longestSubstep(grid, stage, state, changes, left), std::min(left, LeastSubstep * dt));
        apply(changes, substep, stage);
        for (int i = 0; i < stage.set.count; ++i) totals.moles[i] += substep * changes.sources.moles[i];
        totals.water += substep * changes.sources.water;
        refreshComponents(grid, tables, units.VolumeFactor, VolumeSlopes::None, stage, state);
        left = substep < left ? left - substep : 0.0;
    }
    return totals;
}

}  // namespace kvr
