#include "report/component_balance.hpp"

#include "base/constants.hpp"
#include "base/threads.hpp"
#include "report/material_balance.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double WaterMolarMass = 18.01528;  // lb/lb-mole
constexpr double Thousand = 1000.0;          // "M" of the report
constexpr double LeastMoles = 1e-9;          // lb-mole; rounding leaves less of a component that is not there

/// Surface volumes of a cell, internal units.
void sumCell(CellId c, Simulation& s) {
    ComponentRun& run = s.components;
    ComponentBalance& balance = run.balance;
    const ComponentStage& stage = run.stage;
    const double* moles = stage.amounts.moles.row(c);
    double sum = 0.0;
    for (int i = 0; i < stage.set.count; ++i) sum += moles[i];
    balance.cellOil[c] = balance.cellGas[c] = balance.cellFreeGas[c] = 0.0;
    if (!(sum > 0.0)) return;
    const double toInternal = sum / s.units.VolumeFactor;
    const PhaseVolumes whole = surfaceVolumes(run.surface, compositionOf(stage.cells, c),
                                              run.surfaceFlash[static_cast<std::size_t>(c)]);
    balance.cellOil[c] = toInternal * whole.liquid;
    balance.cellGas[c] = toInternal * whole.vapour;
    const FlashState& flash = stage.cells.flash[static_cast<std::size_t>(c)];
    if (!(flash.vapourFraction > 0.0)) return;
    FlashState own;
    const PhaseVolumes free = surfaceVolumes(run.surface, flash.vapour, own);
    balance.cellFreeGas[c] = std::min(balance.cellGas[c], toInternal * flash.vapourFraction * free.vapour);
}

/// Moles, pore volumes and masses of the report, each of oil, water and gas.
struct PhaseSums {
    double oil = 0.0, water = 0.0, gas = 0.0;
};

struct PhaseBlocks {
    PhaseSums moles, volumes, masses;
};

PhaseBlocks phaseBlocks(const Simulation& s) {
    PhaseBlocks blocks;
    const ComponentStage& stage = s.components.stage;
    for (CellId c = 1; c <= s.grid.NCELLS; ++c) {
        if (s.grid.Active[c] == 0) continue;
        const FlashState& flash = stage.cells.flash[static_cast<std::size_t>(c)];
        const double* moles = stage.amounts.moles.row(c);
        double sum = 0.0;
        for (int i = 0; i < stage.set.count; ++i) sum += moles[i];
        const double oil = (1.0 - flash.vapourFraction) * sum, gas = flash.vapourFraction * sum;
        blocks.moles.oil += oil;
        blocks.moles.gas += gas;
        blocks.masses.oil += oil * molarMass(stage.set, flash.liquid);
        blocks.masses.gas += gas * molarMass(stage.set, flash.vapour);
        blocks.masses.water += stage.amounts.water[c] * s.units.VolumeFactor * s.fluids.waterDensity;
    }
    blocks.moles.water = blocks.masses.water / WaterMolarMass;
    const InPlaceSums& now = s.balance.now;
    blocks.volumes = {toBarrels(s.units, now.oilPore), toBarrels(s.units, now.waterPore),
                      toBarrels(s.units, now.gasPore)};
    return blocks;
}

void logBlock(const Console& console, std::string_view name, std::string_view water, const PhaseSums& sums) {
    const auto row = [&](std::string_view phase, double value) {
        log(console, " {} in {:<6}:: {} M lb-M", name, phase, number(value / Thousand));
    };
    row("Oil", sums.oil);
    row(water, sums.water);
    row(name == "Volume" ? "Gas" : "gas", sums.gas);
    row("Total", sums.oil + sums.water + sums.gas);
}

}  // namespace

void sumComponents(Simulation& s) {
    ComponentRun& run = s.components;
    ComponentBalance& balance = run.balance;
    if (run.surfaceFlash.empty()) {
        run.surfaceFlash.assign(static_cast<std::size_t>(s.grid.NCELLS) + 1, FlashState{});
        for (CellArray<double>* volumes : {&balance.cellOil, &balance.cellGas, &balance.cellFreeGas})
            volumes->assign(s.grid.NCELLS, 0.0);
    }
#pragma omp parallel for schedule(static) if (s.grid.NCELLS >= ParallelCells)
    for (CellId c = 1; c <= s.grid.NCELLS; ++c)
        if (s.grid.Active[c] != 0) sumCell(c, s);
    balance.now = {};
    for (CellId c = 1; c <= s.grid.NCELLS; ++c)
        for (int i = 0; i < run.stage.set.count && s.grid.Active[c] != 0; ++i)
            balance.now[static_cast<std::size_t>(i)] += run.stage.amounts.moles(c, i + 1);
    if (!balance.started) balance.initial = balance.now;
    balance.started = true;
    balance.produced = balance.injected = {};
    for (const WellMixture& well : run.wells)
        for (std::size_t i = 0; i < balance.produced.size(); ++i) {
            balance.produced[i] += well.produced.moles[i];
            balance.injected[i] += well.injected.moles[i];
        }
}

void takeComponentSums(const Simulation& s, InPlaceSums& sums) {
    const ComponentBalance& balance = s.components.balance;
    sums.oil = sums.water = sums.freeGas = sums.dissolvedGas = 0.0;
    for (CellId c = 1; c <= s.grid.NCELLS; ++c) {
        if (s.grid.Active[c] == 0) continue;
        sums.oil += balance.cellOil[c];
        sums.water += s.components.stage.amounts.water[c];
        sums.freeGas += balance.cellFreeGas[c];
        sums.dissolvedGas += balance.cellGas[c] - balance.cellFreeGas[c];
    }
}

double componentError(const ComponentRun& components, int i) {
    const ComponentBalance& balance = components.balance;
    const auto n = static_cast<std::size_t>(i);
    const double net = balance.injected[n] - balance.produced[n];
    const double now = balance.now[n], first = balance.initial[n];
    if (first >= LeastMoles) return 1.0 - (now - net) / first;
    return now >= LeastMoles ? (now - net) / now : 0.0;
}

double worstComponentError(const ComponentRun& components) {
    double worst = 0.0;
    for (int i = 0; i < components.stage.set.count; ++i)
        if (const double error = componentError(components, i); !(std::abs(error) <= std::abs(worst)))
            worst = error;
    return worst;
}

double producedFraction(const Simulation& s, int i, int well) {
    double part = 0.0, whole = 0.0;
    for (std::size_t w = 0; w < std::min(s.wells.wells.size(), s.components.wells.size()); ++w) {
        if (isInjector(s.wells.wells[w]) || (well >= 0 && static_cast<std::size_t>(well) != w)) continue;
        const Composition& moles = s.components.wells[w].step.moles;
        part += moles[static_cast<std::size_t>(i)];
        for (const double amount : moles) whole += amount;
    }
    return whole != 0.0 ? part / whole : 0.0;
}

ComponentSums componentSums(const ComponentRun& components) {
    ComponentSums sums;
    for (std::size_t i = 0; i < static_cast<std::size_t>(components.stage.set.count); ++i) {
        sums.moles += components.balance.now[i];
        sums.mass += components.balance.now[i] * components.stage.set.Mw[i];
    }
    return sums;
}

void logComponents(const Simulation& s) {
    const PhaseBlocks blocks = phaseBlocks(s);
    lineToLog(s.console, " Mole In Place **   ");
    logBlock(s.console, "Mole", "wat", blocks.moles);
    logBlock(s.console, "Volume", "Wat", blocks.volumes);
    logBlock(s.console, "Mas", "wat", blocks.masses);
}

std::string componentSheetRow(const Simulation& s) {
    const BalanceRow& row = s.balance.rows.back();
    const double done = s.clock.endTime > 0.0 ? row.time / s.clock.endTime : 1.0;
    std::string line =
        fmt::format("{}\t{}\t{}\t{}\t{}\t{}", number(row.time), number(row.poreVolumesInjected),
                    number(Percent * row.errorOil), number(Percent * row.errorWater),
                    number(Percent * row.errorGas), number(Percent * done));
    const ComponentStage& stage = s.components.stage;
    for (int i = 0; i < stage.set.count; ++i)
        line += fmt::format("\t{}", number(s.components.balance.now[static_cast<std::size_t>(i)] *
                                           stage.set.Mw[static_cast<std::size_t>(i)]));
    for (int i = 0; i < stage.set.count; ++i)
        line += fmt::format("\t{}", number(Percent * componentError(s.components, i)));
    return line + "\n";
}

}  // namespace kvr
