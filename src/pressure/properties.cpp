#include "pressure/properties.hpp"

#include "base/constants.hpp"
#include "base/threads.hpp"
#include "fluid/black_oil.hpp"
#include "fluid/saturation_functions.hpp"
#include "pressure/transfer_head.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

/// Rock, formation factors, viscosities and densities: what follows the pressure and the bubble point.
void pressureProperties(const GridModel& grid, const FluidTables& all, CellId c, CellState& state) {
    const FluidTables& tables = pvtAt(all, c);
    const double p = state.Pressure[c];
    state.PoreFraction[c] = grid.PORO[c] * PoreFactor(tables, p);
    state.PoreVolume[c] = grid.BulkVolume[c] * grid.NTG[c] * state.PoreFraction[c];
    const OilProperties oil = usableOilProperties(tables, p, state.Pb[c]);
    const GasProperties gas = gasProperties(tables, p);
    state.Bo[c] = oil.Bo;
    state.MuO[c] = oil.MuO;
    state.Bg[c] = gas.Bg;
    state.MuG[c] = gas.MuG;
    state.Bw[c] = WaterFvf(tables, p);
    state.MuW[c] = WaterViscosity(tables, p);
    state.RhoO[c] = oilDensityAt(tables, state.Rs[c], oil.Bo);
    state.RhoW[c] = waterDensityAt(tables, state.Bw[c]);
    state.RhoG[c] = gasDensityAt(tables, gas.Bg);
}

void relativePermeabilities(const GridModel& grid, const FluidTables& tables, CellId c, CellState& state) {
    const RelPerms kr = relPermsAtCell(tables, c, grid.SATNUM[c], state.Sw[c], state.Sg[c]);
    state.KrwCell[c] = kr.w;
    state.KroCell[c] = kr.o;
    state.KrgCell[c] = kr.g;
}

void mobilities(CellId c, CellState& state) {
    state.LambdaO[c] = state.KroCell[c] / state.MuO[c];
    state.LambdaW[c] = state.KrwCell[c] / state.MuW[c];
    state.LambdaG[c] = state.KrgCell[c] / state.MuG[c];
}

void phasePressures(const GridModel& grid, const FluidTables& tables, CellId c, CellState& state) {
    const double p = state.Pressure[c];
    const double scale = grid.JFactor[c];
    state.PressureW[c] = p - scale * PcowFn(tables, state.Sw[c], grid.SATNUM[c]);
    state.PressureG[c] = p + scale * PcogFn(tables, state.Sg[c], grid.SATNUM[c]);
    if (grid.dual.gravityDrainage) setTransferHeads(grid, regionTable(tables, grid.SATNUM[c]), c, state);
}

/// Room for the heads of transfers, which only gravity drainage has.
void sizeHeads(const GridModel& grid, CellState& state) {
    if (!grid.dual.gravityDrainage || !state.HeadW.empty()) return;
    state.HeadW.assign(grid.NCELLS, 0.0);
    state.HeadG.assign(grid.NCELLS, 0.0);
}

/// Messages of the update, one line to the log with the cell number.
constexpr const char* NegativeRs = "Negative Solution GOR detected at matrix.pre. set zero.. @Grid {}";
constexpr const char* ExcessiveRs =
    "Exceed Solution GOR detected at Matrix pre.. oil pressure value.. @Grid {}";

/// Rs back into the table. A negative one is no amount at all; one of 0 takes the first row's.
void bringRsIntoTable(const Console& console, bool debug, const FluidTables& all, CellId c,
                      CellState& state) {
    const FluidTables& tables = pvtAt(all, c);
    if (tables.MaxRs <= 0.0) return;
    if (state.Rs[c] < 0.0) {
        if (debug) log(console, NegativeRs, c);
        state.Rs[c] = 0.0;
        state.Pb[c] = BubblePoint(tables, 0.0);
    } else if (state.Rs[c] == 0.0) {
        state.Pb[c] = BubblePoint(tables, tables.OilRs.front());
        state.Rs[c] = SolutionRs(tables, state.Pb[c]);
    }
    const double limit = SolutionRs(tables, state.Pressure[c]);
    if (state.Rs[c] <= limit) return;
    if (debug) log(console, ExcessiveRs, c);
    state.Rs[c] = limit;
    state.Pb[c] = BubblePoint(tables, limit);
}

/// Stores a state; true when a saturation has changed, so that relative permeabilities must follow.
bool store(const PhaseState& found, CellId c, CellState& state) {
    const bool changed = found.Sw != state.Sw[c] || found.So != state.So[c] || found.Sg != state.Sg[c];
    storePhases(found, c, state);
    return changed;
}

/// The end points of a gas table must not put gas into a run that has none.
void withoutGas(PhaseState& state) {
    const double liquid = state.Sw + state.So;
    if (state.Sg == 0.0 || !(liquid > 0.0)) return;
    state.Sg = 0.0;
    state.Sw /= liquid;
    state.So /= liquid;
}

PhaseState updatedState(const FluidTables& tables, int region, bool keepEndPoints, const CellAmounts& amounts,
                        CellId c, const CellState& state) {
    PhaseState found = phasesOf(state, c);
    const double p = state.Pressure[c];
    if (tables.hasGas && (found.Sg > MachineEpsilon || found.Pb > p))
        return flashCell(pvtAt(tables, c), regionTable(tables, region), keepEndPoints, p, state, c,
                         {amounts.water[c], amounts.oil[c], amounts.gas[c]});
    limitSaturations(regionTable(tables, region), keepEndPoints, found);
    if (!tables.hasGas) withoutGas(found);
    return found;
}

bool isGiven(GivenArrays given, CellArray<double> CellState::*array) {
    return std::find(given.begin(), given.end(), array) != given.end();
}

/// Which of the properties that lead to others are given.
struct GivenProperties {
    bool Rs, Pb, RhoO, RhoW, RhoG;
};

void completeSolutionGas(const FluidTables& all, const GivenProperties& given, CellId c, CellState& state) {
    const FluidTables& tables = pvtAt(all, c);
    if (tables.MaxRs <= 0.0) return;
    const double p = state.Pressure[c];
    const bool free = state.Sg[c] > MachineEpsilon;
    if (!given.Rs) {
        const double most = SolutionRs(tables, p);
        state.Rs[c] = free ? most : std::min(state.Rs[c], most);
    }
    if (!given.Pb) state.Pb[c] = free ? p : std::min(p, BubblePoint(tables, state.Rs[c]));
}

void completeDensities(const FluidTables& all, const GivenProperties& given, CellId c, CellState& state) {
    const FluidTables& tables = pvtAt(all, c);
    if (!given.RhoO) state.RhoO[c] = oilDensityAt(tables, state.Rs[c], state.Bo[c]);
    if (!given.RhoW) state.RhoW[c] = waterDensityAt(tables, state.Bw[c]);
    if (!given.RhoG) state.RhoG[c] = gasDensityAt(tables, state.Bg[c]);
}

}  // namespace

void completeProperties(const GridModel& grid, const FluidTables& tables, GivenArrays given,
                        CellState& state) {
    sizeHeads(grid, state);
    const GivenProperties known{isGiven(given, &CellState::Rs), isGiven(given, &CellState::Pb),
                                isGiven(given, &CellState::RhoO), isGiven(given, &CellState::RhoW),
                                isGiven(given, &CellState::RhoG)};
#pragma omp parallel if (grid.NCELLS >= ParallelCells)
    {
        std::vector<double> kept(given.size());
#pragma omp for schedule(static)
        for (CellId c = 1; c <= grid.NCELLS; ++c) {
            if (grid.Active[c] == 0) continue;
            for (std::size_t n = 0; n < given.size(); ++n) kept[n] = (state.*given[n])[c];
            completeSolutionGas(tables, known, c, state);
            pressureProperties(grid, tables, c, state);
            relativePermeabilities(grid, tables, c, state);
            phasePressures(grid, tables, c, state);
            for (std::size_t n = 0; n < given.size(); ++n) (state.*given[n])[c] = kept[n];
            completeDensities(tables, known, c, state);
            mobilities(c, state);
        }
    }
}

PhaseState flashCell(const FluidTables& tables, const SaturationTable& table, bool keepEndPoints, double p,
                     const CellState& state, CellId cell, const ConservedAmounts& amounts) {
    const double saturated = SolutionRs(tables, p);
    const double most = allowedRs(state, cell, saturated);
    const bool limited = most < saturated;
    const bool free = amounts.oil <= 0.0 || amounts.gas > most * amounts.oil;
    const double rs = free ? most : amounts.gas / amounts.oil;
    const double pb = free && !limited ? p : std::min(p, BubblePoint(tables, rs));
    const RecoveryFactors factors{p, WaterFvf(tables, p), usableOilProperties(tables, p, pb).Bo,
                                  GasFvf(tables, p), limited};
    return recoverState(tables, table, keepEndPoints, factors, most, amounts);
}

void refreshProperties(const GridModel& grid, const FluidTables& tables, CellState& state) {
    sizeHeads(grid, state);
#pragma omp parallel for schedule(static) if (grid.NCELLS >= ParallelCells)
    for (CellId c = 1; c <= grid.NCELLS; ++c) {
        if (grid.Active[c] == 0) continue;
        pressureProperties(grid, tables, c, state);
        relativePermeabilities(grid, tables, c, state);
        mobilities(c, state);
        phasePressures(grid, tables, c, state);
    }
}

void refreshMobilities(const GridModel& grid, const FluidTables& tables, CellState& state) {
    sizeHeads(grid, state);
#pragma omp parallel for schedule(static) if (grid.NCELLS >= ParallelCells)
    for (CellId c = 1; c <= grid.NCELLS; ++c) {
        if (grid.Active[c] == 0) continue;
        relativePermeabilities(grid, tables, c, state);
        mobilities(c, state);
        phasePressures(grid, tables, c, state);
    }
}

void UpdateProperties(const Console& console, const RunOptions& options, const GridModel& grid,
                      const FluidTables& tables, const CellAmounts& flashAmounts, CellState& state,
                      bool relPermsHeld) {
    sizeHeads(grid, state);
    const bool debug = options.debugOutput;  // its lines keep the order of the cells
    const bool keep = options.keepIrreducibleSaturation;
#pragma omp parallel for schedule(static) if (grid.NCELLS >= ParallelCells && !debug)
    for (CellId c = 1; c <= grid.NCELLS; ++c) {
        if (grid.Active[c] == 0) continue;
        const bool changed =
            store(updatedState(tables, grid.SATNUM[c], keep, flashAmounts, c, state), c, state);
        bringRsIntoTable(console, debug, tables, c, state);
        pressureProperties(grid, tables, c, state);
        if (changed && !relPermsHeld) relativePermeabilities(grid, tables, c, state);
        mobilities(c, state);
        phasePressures(grid, tables, c, state);
    }
}

void sizeAmounts(CellId count, CellAmounts& amounts) {
    for (CellArray<double>* array : {&amounts.water, &amounts.oil, &amounts.gas}) array->assign(count, 0.0);
}

void measureAmounts(const GridModel& grid, const CellState& state, CellAmounts& amounts) {
    sizeAmounts(grid.NCELLS, amounts);
    for (CellId c = 1; c <= grid.NCELLS; ++c) {
        if (grid.Active[c] == 0) continue;
        const ConservedAmounts shown = shownAmounts(state, c);
        amounts.water[c] = shown.water * state.PoreVolume[c];
        amounts.oil[c] = shown.oil * state.PoreVolume[c];
        amounts.gas[c] = shown.gas * state.PoreVolume[c];
    }
}

void measureWholeAmounts(const GridModel& grid, const CellState& state, const CellAmounts& carried,
                         CellAmounts& amounts) {
    measureAmounts(grid, state, amounts);
    for (CellId c = 1; c <= carried.water.count(); ++c) {
        amounts.water[c] += carried.water[c];
        amounts.oil[c] += carried.oil[c];
        amounts.gas[c] += carried.gas[c];
    }
}

bool carriesAmounts(const RunOptions& options) {
    if (options.method == "IMPES") return true;
    return options.method == "streamline" && options.conservativeMapping;
}

void measureCarried(const GridModel& grid, const CellState& state, const CellAmounts& whole,
                    CellAmounts& carried) {
    measureAmounts(grid, state, carried);
    for (CellId c = 1; c <= grid.NCELLS; ++c) {
        carried.water[c] = whole.water[c] - carried.water[c];
        carried.oil[c] = whole.oil[c] - carried.oil[c];
        carried.gas[c] = whole.gas[c] - carried.gas[c];
    }
}

}  // namespace kvr
