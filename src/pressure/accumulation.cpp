#include "pressure/accumulation.hpp"

#include "base/constants.hpp"
#include "base/threads.hpp"
#include "fluid/black_oil.hpp"
#include "pressure/properties.hpp"

#include <cmath>

namespace kvr {

namespace {

constexpr double DifferenceStep = 0.0001;       // psi
constexpr double SmallestPoreFraction = 1e-12;  // below it a cell stores nothing

bool isSaturatedCell(const FluidTables& tables, double bubblePointAtTimeLevel, const CellState& state,
                     CellId c) {
    if (!tables.hasGas || tables.MaxRs <= 0.0) return false;
    const bool freeGasAtBubblePoint = state.Sg[c] > MachineEpsilon &&
                                      std::abs(state.Pressure[c] - state.Pb[c]) < SaturationPressureTolerance;
    return freeGasAtBubblePoint || state.Pb[c] < bubblePointAtTimeLevel - SaturationPressureTolerance;
}

/// Storage of one cell: per psi (the negative of the diagonal) and as a rate.
struct Storage {
    double perPsi = 0.0;
    double rate = 0.0;
};

/// What both forms share: discrete product rule of pore space and density.
double storageTerm(double poreNew, double poreOld, double rock, double fluid, double bOld, double bNew,
                   double saturation) {
    return (poreNew * rock / bOld + fluid * poreOld / bNew) * saturation;
}

struct LiquidTerms {
    double oil, water;
};

LiquidTerms liquidTerms(const CellCompressibility& comp, const CellState& old, const CellState& now,
                        CellId c) {
    const double poreNew = now.PoreFraction[c], poreOld = old.PoreFraction[c];
    return {storageTerm(poreNew, poreOld, comp.CompressR, comp.CompressO, old.Bo[c], now.Bo[c], now.So[c]),
            storageTerm(poreNew, poreOld, comp.CompressR, comp.CompressW, old.Bw[c], now.Bw[c], now.Sw[c])};
}

Storage twoPhaseStorage(bool linear, double bulk, double dt, const CellCompressibility& comp,
                        const CellState& old, const CellAmounts& amounts, const CellState& now, CellId c) {
    const auto [TO, TW] = liquidTerms(comp, old, now, c);
    Storage storage;
    storage.perPsi = (TO * now.Bo[c] + TW * now.Bw[c]) * bulk / dt;
    if (linear) {
        storage.rate = storage.perPsi * (now.Pressure[c] - old.Pressure[c]);
        return storage;
    }
    const ConservedAmounts shown = shownAmounts(now, c);
    const double pores = now.PoreVolume[c];
    storage.rate = ((shown.oil * pores - amounts.oil[c]) * now.Bo[c] +
                    (shown.water * pores - amounts.water[c]) * now.Bw[c]) /
                   dt;
    return storage;
}

Storage threePhaseStorage(bool linear, double bulk, double dt, const CellCompressibility& comp,
                          const CellState& old, const CellAmounts& amounts, const CellState& now, CellId c) {
    const double poreNew = now.PoreFraction[c], poreOld = old.PoreFraction[c];
    const auto [TO, TW] = liquidTerms(comp, old, now, c);
    const double dissolved = now.Rs[c] * TO + poreNew * now.So[c] / now.Bo[c] * comp.rsSlope;
    const double TG =
        storageTerm(poreNew, poreOld, comp.CompressR, comp.CompressG, old.Bg[c], now.Bg[c], now.Sg[c]) +
        dissolved;
    const double W = now.Bo[c] - now.Bg[c] * now.Rs[c];
    Storage storage;
    storage.perPsi = (TO * W + TW * now.Bw[c] + TG * now.Bg[c]) * bulk / dt;
    if (linear) {
        const double dP = now.Pressure[c] - old.Pressure[c];
        const double dPg = now.PressureG[c] - old.PressureG[c];
        storage.rate = ((TO * W + TW * now.Bw[c]) * dP + TG * now.Bg[c] * dPg) * bulk / dt;
        return storage;
    }
    const ConservedAmounts shown = shownAmounts(now, c);
    const double pores = now.PoreVolume[c];
    storage.rate =
        ((shown.gas * pores - amounts.gas[c]) * now.Bg[c] +
         (shown.water * pores - amounts.water[c]) * now.Bw[c] + W * (shown.oil * pores - amounts.oil[c])) /
        dt;
    return storage;
}

using CellStorage = Storage (*)(bool, double, double, const CellCompressibility&, const CellState&,
                                const CellAmounts&, const CellState&, CellId);

template <CellStorage storageOf>
void accumulate(bool linear, double dt, const GridModel& grid, const FluidTables& tables,
                const CellState& timeLevel, const CellAmounts& old, const CellState& state,
                PressureMatrix& matrix) {
#pragma omp parallel for schedule(static) if (grid.NCELLS >= ParallelCells)
    for (CellId c = 1; c <= grid.NCELLS; ++c) {
        Storage storage;
        if (grid.Active[c] != 0 && state.PoreFraction[c] >= SmallestPoreFraction)
            storage =
                storageOf(linear, grid.BulkVolume[c] * grid.NTG[c], dt,
                          cellCompressibility(tables, timeLevel.Pb[c], state, c), timeLevel, old, state, c);
        matrix.MatDiag[c] = -storage.perPsi;
        matrix.MatRhs[c] = -storage.rate;
    }
    matrix.storage = 0.0;
    for (CellId c = 1; c <= grid.NCELLS; ++c) matrix.storage -= matrix.MatDiag[c];
}

}  // namespace

CellCompressibility cellCompressibility(const FluidTables& all, double bubblePointAtTimeLevel,
                                        const CellState& state, CellId c) {
    const FluidTables& tables = pvtAt(all, c);
    CellCompressibility comp;
    comp.CompressR = tables.rockCompressibility;
    comp.CompressW = tables.waterCompressibility;
    const double p = state.Pressure[c];
    const double moved = p + DifferenceStep;
    if (isSaturatedCell(tables, bubblePointAtTimeLevel, state, c)) {
        comp.CompressO = -OilFvfSlope(tables, p, p) / state.Bo[c];
        comp.rsSlope = SolutionRsSlope(tables, p);
    } else {
        // Rs is constant, so the mass density varies as 1/Bo. No table rows above the bubble point: none.
        const double factor = OilFvf(tables, moved, state.Pb[c]);
        comp.CompressO = factor > 0.0 ? (state.Bo[c] / factor - 1.0) / DifferenceStep : 0.0;
    }
    if (tables.hasGas) comp.CompressG = (state.Bg[c] / GasFvf(tables, moved) - 1.0) / DifferenceStep;
    return comp;
}

void accumulateTwoPhase(int firstIteration, double dt, const GridModel& grid, const FluidTables& tables,
                        const CellState& timeLevel, const CellAmounts& old, const CellState& state,
                        PressureMatrix& matrix) {
    accumulate<twoPhaseStorage>(firstIteration != 0, dt, grid, tables, timeLevel, old, state, matrix);
}

void accumulateThreePhase(int firstIteration, double dt, const GridModel& grid, const FluidTables& tables,
                          const CellState& timeLevel, const CellAmounts& old, const CellState& state,
                          PressureMatrix& matrix) {
    accumulate<threePhaseStorage>(firstIteration != 0, dt, grid, tables, timeLevel, old, state, matrix);
}

}  // namespace kvr
