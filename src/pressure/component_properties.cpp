#include "pressure/component_properties.hpp"

#include "base/threads.hpp"
#include "fluid/black_oil.hpp"
#include "fluid/component_equilibrium.hpp"
#include "fluid/components/mixture_volume.hpp"
#include "fluid/saturation_functions.hpp"
#include "pressure/records/upstream_sides.hpp"

namespace kvr {

namespace {

constexpr double LeastMoles = 1e-30;  // of a cell; below it there is no mixture

void refreshPores(const GridModel& grid, const FluidTables& tables, CellId c, CellState& state) {
    state.PoreFraction[c] = grid.PORO[c] * PoreFactor(tables, state.Pressure[c]);
    state.PoreVolume[c] = grid.BulkVolume[c] * grid.NTG[c] * state.PoreFraction[c];
}

void refreshWater(const FluidTables& tables, CellId c, CellState& state) {
    state.Bw[c] = WaterFvf(tables, state.Pressure[c]);
    state.MuW[c] = WaterViscosity(tables, state.Pressure[c]);
    state.RhoW[c] = waterDensityAt(tables, state.Bw[c]);
}

void refreshFlow(const GridModel& grid, const FluidTables& tables, CellId c, CellState& state) {
    const int region = grid.SATNUM[c];
    const RelPerms kr = relPermsAtCell(tables, c, region, state.Sw[c], state.Sg[c]);
    state.KrwCell[c] = kr.w;
    state.KroCell[c] = kr.o;
    state.KrgCell[c] = kr.g;
    state.LambdaO[c] = kr.o / state.MuO[c];
    state.LambdaW[c] = kr.w / state.MuW[c];
    state.LambdaG[c] = kr.g / state.MuG[c];
    state.PressureW[c] = state.Pressure[c] - grid.JFactor[c] * PcowFn(tables, state.Sw[c], region);
    state.PressureG[c] = state.Pressure[c] + grid.JFactor[c] * PcogFn(tables, state.Sg[c], region);
}

/// Overall fractions of a cell from its moles; their sum.
double takeComposition(CellId c, ComponentStage& stage, Composition& z) {
    const int count = stage.set.count;
    const double* moles = stage.amounts.moles.row(c);
    double sum = 0.0;
    for (int i = 0; i < count; ++i) sum += moles[i];
    if (sum < LeastMoles) return 0.0;
    double* fractions = stage.cells.z.row(c);
    for (int i = 0; i < count; ++i) z[i] = fractions[i] = moles[i] / sum;
    return sum;
}

std::uint8_t lackingOf(const FlashState& flash) {
    if (flash.phases == FluidPhases::Both) return 0;
    return flash.phases == FluidPhases::Vapour ? OilSide : GasSide;
}

/// Saturations as shares of the volumes of the phases.
void shareVolumes(double oil, double gas, double water, CellId c, CellState& state) {
    const double total = oil + gas + water;
    state.Sw[c] = water / total;
    state.Sg[c] = gas / total;
    state.So[c] = 1.0 - state.Sw[c] - state.Sg[c];
    if (oil == 0.0) state.So[c] = 0.0;
}

void refreshCell(const GridModel& grid, const FluidTables& all, double volumeFactor, VolumeSlopes slopes,
                 Saturations saturations, CellId c, ComponentStage& stage, CellState& state) {
    const FluidTables& tables = pvtAt(all, c);
    refreshPores(grid, tables, c, state);
    refreshWater(tables, c, state);
    Composition z{};
    const double moles = takeComposition(c, stage, z);
    FlashState& flash = stage.cells.flash[static_cast<std::size_t>(c)];
    const double p = state.Pressure[c], toInternal = moles / volumeFactor;
    const double water = stage.amounts.water[c] * state.Bw[c];
    if (slopes == VolumeSlopes::All) {
        const MixtureVolume mixture = mixtureVolume(stage.set, z, p, flash);
        stage.FluidSlope[c] = toInternal * mixture.slope + stage.amounts.water[c] * WaterFvfSlope(tables, p);
        for (int i = 0; i < stage.set.count; ++i) stage.Partial(c, i + 1) = mixture.partial[i] / volumeFactor;
    } else if (slopes == VolumeSlopes::Pressure) {
        FlashPT(stage.set, z, p, flash);
        stage.FluidSlope[c] = toInternal * mixtureSlope(stage.set, z, p, flash) +
                              stage.amounts.water[c] * WaterFvfSlope(tables, p);
    } else {
        FlashPT(stage.set, z, p, flash);
    }
    const PhaseVolumes volumes = phaseVolumes(stage.set, p, flash);
    stage.FluidVolume[c] = toInternal * (volumes.liquid + volumes.vapour) + water;
    if (saturations == Saturations::Found)
        shareVolumes(toInternal * volumes.liquid, toInternal * volumes.vapour, water, c, state);
    refreshPhases(stage.set, c, stage.cells, state);
    state.lacking[c] = lackingOf(flash);
    refreshFlow(grid, all, c, state);
    if (!stage.takesMean) return;
    state.LambdaO[c] = stage.mean.oil[c];
    state.LambdaW[c] = stage.mean.water[c];
    state.LambdaG[c] = stage.mean.gas[c];
}

void sizeStage(CellId cells, ComponentStage& stage) {
    const int count = stage.set.count;
    stage.FluidVolume.assign(cells, 0.0);
    stage.FluidSlope.assign(cells, 0.0);
    stage.leftOver.assign(cells, 0.0);
    stage.Partial.assign(cells, count, 0.0);
    stage.amounts.moles.assign(cells, count, 0.0);
    stage.amounts.water.assign(cells, 0.0);
}

}  // namespace

void keepSolvedMobilities(const CellState& state, ComponentStage& stage) {
    const CellId cells = stage.FluidVolume.count();
    stage.solvedMobility.assign(cells, 0.0);
    for (CellId c = 1; c <= cells; ++c)
        stage.solvedMobility[c] = state.LambdaO[c] + state.LambdaW[c] + state.LambdaG[c];
}

void leaveMeanMobilities(const GridModel& grid, ComponentStage& stage, CellState& state) {
    if (!stage.takesMean) return;
    stage.takesMean = false;
    for (CellId c = 1; c <= grid.NCELLS; ++c) {
        if (grid.Active[c] == 0) continue;
        state.LambdaO[c] = state.KroCell[c] / state.MuO[c];
        state.LambdaW[c] = state.KrwCell[c] / state.MuW[c];
        state.LambdaG[c] = state.KrgCell[c] / state.MuG[c];
    }
}

void fillPores(const GridModel& grid, const FluidTables& tables, double volumeFactor, const CellState& state,
               ComponentStage& stage) {
    sizeStage(grid.NCELLS, stage);
    for (CellId c = 1; c <= grid.NCELLS; ++c) {
        if (grid.Active[c] == 0) continue;
        const FluidTables& fluids = pvtAt(tables, c);
        const double pores =
            grid.BulkVolume[c] * grid.NTG[c] * grid.PORO[c] * PoreFactor(fluids, state.Pressure[c]);
        const Composition z = compositionOf(stage.cells, c);
        FlashState& flash = stage.cells.flash[static_cast<std::size_t>(c)];
        FlashPT(stage.set, z, state.Pressure[c], flash);
        const PhaseVolumes volumes = phaseVolumes(stage.set, state.Pressure[c], flash);
        const double moles = pores * (1.0 - state.Sw[c]) * volumeFactor / (volumes.liquid + volumes.vapour);
        for (int i = 0; i < stage.set.count; ++i) stage.amounts.moles(c, i + 1) = moles * z[i];
        stage.amounts.water[c] = pores * state.Sw[c] / WaterFvf(fluids, state.Pressure[c]);
    }
}

void refreshComponents(const GridModel& grid, const FluidTables& tables, double volumeFactor,
                       VolumeSlopes slopes, Saturations saturations, ComponentStage& stage,
                       CellState& state) {
#pragma omp parallel for schedule(dynamic, 64) if (grid.NCELLS >= ParallelCells)
    for (CellId c = 1; c <= grid.NCELLS; ++c)
        if (grid.Active[c] != 0)
            refreshCell(grid, tables, volumeFactor, slopes, saturations, c, stage, state);
}

void refreshCells(const GridModel& grid, const FluidTables& tables, double volumeFactor,
                  std::span<const CellId> cells, ComponentStage& stage, CellState& state) {
    const std::size_t count = cells.size();
#pragma omp parallel for schedule(dynamic, 64) if (count >= static_cast <std::size_t>(ParallelHeavyCells))
    for (std::size_t k = 0; k < count; ++k)
        refreshCell(grid, tables, volumeFactor, VolumeSlopes::None, Saturations::Found, cells[k], stage,
                    state);
}

}  // namespace kvr
