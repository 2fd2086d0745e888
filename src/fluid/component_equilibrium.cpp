#include "fluid/component_equilibrium.hpp"

#include "base/constants.hpp"
#include "base/hard_stop.hpp"
#include "base/messages.hpp"
#include "fluid/black_oil.hpp"
#include "fluid/column_state.hpp"
#include "fluid/components/viscosity.hpp"
#include "fluid/equilibrium.hpp"

#include <algorithm>

namespace kvr {

namespace {

Composition blend(const Composition& low, const Composition& high, int count, double share) {
    Composition z{};
    for (int i = 0; i < count; ++i) z[i] = low[i] + share * (high[i] - low[i]);
    return z;
}

/// One row a layer: the mean composition of its active cells at their mean depth.
CompositionByDepth layerCompositions(const GridModel& grid, const DirectionArray<double>& given) {
    const auto layers = static_cast<std::size_t>(std::max<int>(grid.NZ, 1));
    std::vector<double> cells(layers, 0.0), depth(layers, 0.0);
    std::vector<Composition> sum(layers);
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        if (grid.Active[cell] == 0) continue;
        const auto k = static_cast<std::size_t>(grid.CellK[cell]) - 1;
        cells[k] += 1.0;
        depth[k] += grid.CellCentre(cell, 3);
        for (int i = 0; i < given.width; ++i) sum[k][i] += given(cell, i + 1);
    }
    CompositionByDepth rows;
    for (std::size_t k = 0; k < layers; ++k) {
        if (cells[k] == 0.0) continue;
        for (double& fraction : sum[k]) fraction /= cells[k];
        rows.Depth.push_back(depth[k] / cells[k]);
        rows.z.push_back(sum[k]);
    }
    return rows;
}

[[noreturn]] void stopWithoutComposition(const Console& console) {
    log(console, "INITIALIZING Failed :: Initial Composition is not given");
    screen(console, "Initializing Failed :: Initial Composition is not given");
    hardStop(console);
}

bool isGiven(const DirectionArray<double>& values) {
    return values.width > 0;
}

/// The cell's own composition where the deck has one by cell, else that of its depth.
Composition cellComposition(const InitialConditions& initial, const CompositionByDepth& rows, CellId cell,
                            double depth) {
    if (!isGiven(initial.initialZ)) return compositionAt(rows, depth);
    Composition z{};
    for (int i = 0; i < std::min(initial.initialZ.width, MaxComponents); ++i)
        z[i] = initial.initialZ(cell, i + 1);
    return z;
}

struct Setting {
    const GridModel& grid;
    const FluidTables& tables;
    const InitialConditions& initial;
    const RunOptions& options;
    const CompositionByDepth& composition;
    const ComponentSet& set;
};

/// Columns of the equilibrium regions; false where a row went to and fro between phases.
bool componentColumns(const Console& console, const Setting& s, std::vector<InitDepthTable>& columns) {
    bool allSettled = true;
    columns.resize(s.initial.regions.size());
    FlashState last;
    const ColumnDensity density = [&](ColumnPhase phase, double depth, double pressure) {
        if (phase == ColumnPhase::Water) return waterDensityAt(s.tables, WaterFvf(s.tables, pressure));
        return phaseDensity(s.set, compositionAt(s.composition, depth), pressure, phase == ColumnPhase::Oil,
                            last);
    };
    for (std::size_t region = 0; region < columns.size(); ++region) {
        if (!s.initial.regions[region].isGiven) continue;
        bool isSettled = true;
        columns[region] =
            buildColumns(console, s.grid, density, s.initial.regions[region], s.options.hasWater, isSettled);
        allSettled = allSettled && isSettled;
    }
    return allSettled;
}

/// Water saturation and pressure of a cell by its columns.
DepthState waterAndPressure(const Setting& s, const std::vector<InitDepthTable>& columns,
                            const std::vector<RegionInverse>& inverses, CellId cell) {
    const auto region = static_cast<std::size_t>(s.grid.EQLNUM.empty() ? 1 : s.grid.EQLNUM[cell]) - 1;
    const int saturation = s.grid.SATNUM[cell];
    const bool hasPcow = s.options.hasWater && s.tables.PcowSpan > CapillarySpanLimit;
    const CellView view{
        regionTable(s.tables, saturation),    inverses[static_cast<std::size_t>(saturation) - 1],
        hasPcow ? s.grid.JFactor[cell] : 0.0, 0.0,
        s.grid.CellCentre(cell, 3),           {}};
    DepthState found =
        meanState(view, columns[region], false, depthRange(s.grid, cell), s.initial.regions[region].slices);
    if (!s.options.hasWater) found.Sw = 0.0;
    return found;
}

/// Oil and gas share what water leaves by the volumes that the composition splits into.
void storeCell(const Setting& s, CellId cell, double pressure, double water, CellState& state,
               ComponentState& components) {
    FlashState& flash = components.flash[static_cast<std::size_t>(cell)];
    const Composition z = cellComposition(s.initial, s.composition, cell, s.grid.CellCentre(cell, 3));
    std::copy_n(z.begin(), components.count, components.z.row(cell));
    FlashPT(s.set, z, pressure, flash);
    const PhaseVolumes volumes = phaseVolumes(s.set, pressure, flash);
    const double gasShare = volumes.vapour / (volumes.liquid + volumes.vapour);
    state.Pressure[cell] = pressure;
    state.Sw[cell] = water;
    state.Sg[cell] = (1.0 - water) * gasShare;
    state.So[cell] = 1.0 - state.Sw[cell] - state.Sg[cell];
    refreshPhases(s.set, cell, components, state);
}

/// Water of a cell whose arrays give the saturations.
double givenWater(const InitialConditions& initial, CellId cell) {
    const auto at = [cell](const CellArray<double>& values) { return values.empty() ? 0.0 : values[cell]; };
    const double water = initial.swatGiven || !initial.soilGiven
                             ? at(initial.initialSwat)
                             : 1.0 - at(initial.initialSoil) - at(initial.initialSgas);
    return std::clamp(water, 0.0, 1.0);
}

/// True where every cell's flash came to its end.
bool storeCells(const Setting& s, const std::vector<InitDepthTable>& columns, CellState& state,
                ComponentState& components) {
    std::vector<RegionInverse> inverses;
    for (const SaturationTable& table : s.tables.regions) inverses.push_back(invert(table));
    const bool byDepth = s.initial.equilibrationMode;
#pragma omp parallel for schedule(static)
    for (CellId cell = 1; cell <= s.grid.NCELLS; ++cell) {
        if (s.grid.Active[cell] == 0) continue;
        if (byDepth) {
            const DepthState found = waterAndPressure(s, columns, inverses, cell);
            storeCell(s, cell, found.pressure, found.Sw, state, components);
        } else {
            const double pressure = s.initial.initialPressure.empty() ? 0.0 : s.initial.initialPressure[cell];
            storeCell(s, cell, std::max(pressure, StandardPressure), givenWater(s.initial, cell), state,
                      components);
        }
    }
    return std::all_of(components.flash.begin(), components.flash.end(),
                       [](const FlashState& f) { return f.isSolved; });
}

}  // namespace

Composition compositionAt(const CompositionByDepth& rows, double depth) {
    const auto above = std::upper_bound(rows.Depth.begin(), rows.Depth.end(), depth);
    if (above == rows.Depth.begin()) return rows.z.front();
    if (above == rows.Depth.end()) return rows.z.back();
    const auto high = static_cast<std::size_t>(above - rows.Depth.begin());
    const double share = (depth - rows.Depth[high - 1]) / (rows.Depth[high] - rows.Depth[high - 1]);
    return blend(rows.z[high - 1], rows.z[high], MaxComponents, share);
}

CompositionByDepth initialComposition(const GridModel& grid, const FluidTables& tables,
                                      const InitialConditions& initial) {
    if (isGiven(initial.initialZ)) return layerCompositions(grid, initial.initialZ);
    const std::size_t count = std::min<std::size_t>(tables.TCRIT.size(), MaxComponents);
    const std::size_t width = tables.TCRIT.size() + 1;
    CompositionByDepth rows;
    for (std::size_t r = 0; r + width <= tables.ZMFVD.size(); r += width) {
        rows.Depth.push_back(tables.ZMFVD[r]);
        rows.z.emplace_back();
        std::copy_n(tables.ZMFVD.begin() + static_cast<std::ptrdiff_t>(r) + 1, count, rows.z.back().begin());
    }
    if (rows.z.empty() && !tables.ZI.empty()) {
        rows.Depth.push_back(0.0);
        rows.z.emplace_back();
        std::copy_n(tables.ZI.begin(), std::min(count, tables.ZI.size()), rows.z.back().begin());
    }
    return rows;
}

double phaseDensity(const ComponentSet& set, const Composition& feed, double pressure, bool isLiquid,
                    FlashState& state) {
    FlashPT(set, feed, pressure, state);
    return isLiquid ? molarDensity(set, pressure, state.zLiquid) * molarMass(set, state.liquid)
                    : molarDensity(set, pressure, state.zVapour) * molarMass(set, state.vapour);
}

void refreshPhases(const ComponentSet& set, CellId cell, const ComponentState& components, CellState& state) {
    const FlashState& flash = components.flash[static_cast<std::size_t>(cell)];
    const double p = state.Pressure[cell];
    state.RhoO[cell] = molarDensity(set, p, flash.zLiquid) * molarMass(set, flash.liquid);
    state.MuO[cell] = VIS_COMPS(set, p, flash.zLiquid, flash.liquid);
    const bool isOne = flash.phases != FluidPhases::Both;  // the same in both
    state.RhoG[cell] =
        isOne ? state.RhoO[cell] : molarDensity(set, p, flash.zVapour) * molarMass(set, flash.vapour);
    state.MuG[cell] = isOne ? state.MuO[cell] : VIS_COMPS(set, p, flash.zVapour, flash.vapour);
}

void SETEQUILIBRIUM_COMPS(const Console& console, const GridModel& grid, const FluidTables& tables,
                          const InitialConditions& initial, RunOptions& options, CellState& state,
                          ComponentState& components) {
    log(console, "INITIALIZING...");
    screen(console, "Initializing...");
    const CompositionByDepth composition = initialComposition(grid, tables, initial);
    if (composition.z.empty()) stopWithoutComposition(console);
    tellInitialBranch(console, initial.equilibrationMode);
    requireRegions(console, grid, tables, initial);
    chooseDirectSolver(console, grid, options);
    const ComponentSet set = componentSet(tables, tables.reservoirTemperature);
    components.count = set.count;
    components.z.assign(grid.NCELLS, set.count, 0.0);
    components.flash.assign(static_cast<std::size_t>(grid.NCELLS) + 1, FlashState{});
    const Setting setting{grid, tables, initial, options, composition, set};
    std::vector<InitDepthTable> columns;
    if (initial.equilibrationMode && !componentColumns(console, setting, columns)) {
        both(console, "Initialization Part-1 not Succeded, but will go forward");
        both(console, "(Most probably because of phase transition )");
    }
    if (!storeCells(setting, columns, state, components))
        both(console,
             "Initialization Part-2 not Succeded, This leads to unrealistic saturation distribution.");
}

}  // namespace kvr
