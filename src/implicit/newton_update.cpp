#include "implicit/newton_update.hpp"

#include "base/constants.hpp"
#include "fluid/black_oil.hpp"
#include "implicit/residual_ramp.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double LargestSaturationMove = 0.2;  // of one iteration
constexpr double LargestPressureFactor = 2.0;  // of one iteration
constexpr double SmallestOil = 1e-9;           // saturation; less oil dissolves no gas worth an unknown
constexpr double Rounding = 1e-13;             // saturation; less is what differences of saturations leave
constexpr double LeastShareOfRs = 0.5;         // that one iteration leaves: at 0 there is no way back
constexpr double LargestConcentration = 2.0;   // of Rs in oil that shrinks, in one iteration
constexpr int FreeSwitches = 3;                // of one cell and attempt, without overshoot asked
constexpr double OvershootPerSwitch = 1e-5;    // relative, for each further one

bool canBeUnderSaturated(const FluidTables& tables) {
    return tables.MaxRs > 0.0 && tables.SatRows >= 2;
}

/// Overshoot that the next change of side asks for.
double hysteresis(int switches) {
    return OvershootPerSwitch * std::max(0, switches - FreeSwitches);
}

struct CellMove {
    double p = 0.0, Sw = 0.0, Sg = 0.0, Rs = 0.0;  // where the cell goes
};

void keepInUnitRange(CellMove& move) {
    move.Sw = std::clamp(move.Sw, 0.0, 1.0);
    move.Sg = std::clamp(move.Sg, 0.0, 1.0);
    const double sum = move.Sw + move.Sg;
    if (sum <= 1.0) return;
    move.Sw /= sum;
    move.Sg /= sum;
}

/// Volume of free gas that a unit of Rs in the cell's oil stands for.
double gasVolumeOfRs(const CellState& state, CellId c, double oil) {
    return oil * state.Bg[c] / state.Bo[c];
}

void changeSide(ThirdUnknown to, std::size_t row, ImplicitWork& work) {
    if (work.unknown[row] == to) return;
    work.unknown[row] = to;
    ++work.switchesOfStep[row];
}

/// Oil that dissolves all gas of the cell and lacks `missing` of it.
void dissolveAll(const CellState& state, CellId c, double oil, double missing, CellMove& move) {
    move.Sg = 0.0;
    move.Rs = std::max(LeastShareOfRs * move.Rs, move.Rs - missing / gasVolumeOfRs(state, c, oil));
}

void moveFreeGas(const FluidTables& tables, const CellState& state, CellId c, std::size_t row, CellMove& move,
                 ImplicitWork& work) {
    const double limit = allowedRs(state, c, SolutionRs(tables, move.p));
    const double oil = 1.0 - std::clamp(move.Sw, 0.0, 1.0) - std::max(0.0, move.Sg);
    if (!canBeUnderSaturated(tables)) {
        move.Rs = limit;
    } else if (oil < SmallestOil) {
        changeSide(ThirdUnknown::WithoutOil, row, work);
    } else if (move.Sg < 0.0) {
        // What the linear equations have dissolved: Rs of the pressure, or the one that has been held.
        if (work.unknown[row] == ThirdUnknown::FreeGas) move.Rs = limit;
        dissolveAll(state, c, oil, -move.Sg, move);
        changeSide(ThirdUnknown::SolutionGas, row, work);
    } else {
        move.Rs = limit;
        changeSide(ThirdUnknown::FreeGas, row, work);
    }
    if (move.Sg < Rounding) move.Sg = 0.0;
}

/// Rs from the amount of dissolved gas: the equations are linear in Rs So, and where oil comes to a cell that
/// has little the change of Rs alone would be out of all measure.
///   Rs + dRs So/(So + dSo)
double mixedRs(double Rs, double dRs, double oilBefore, double oil) {
    return std::max(LeastShareOfRs * Rs, Rs + dRs * std::min(LargestConcentration, oilBefore / oil));
}

void moveSolutionGas(const FluidTables& tables, const CellState& state, CellId c, std::size_t row, double dRs,
                     CellMove& move, ImplicitWork& work) {
    const double oil = 1.0 - std::clamp(move.Sw, 0.0, 1.0);
    move.Sg = 0.0;
    if (oil < SmallestOil) {
        changeSide(ThirdUnknown::WithoutOil, row, work);
        return;
    }
    const double limit = allowedRs(state, c, SolutionRs(tables, move.p));
    move.Rs = mixedRs(state.Rs[c], dRs, state.So[c], oil);
    if (move.Rs <= limit * (1.0 + hysteresis(work.switchesOfStep[row]))) return;
    changeSide(ThirdUnknown::FreeGas, row, work);
    move.Sg = std::min(LargestSaturationMove, (move.Rs - limit) * gasVolumeOfRs(state, c, oil));
    move.Rs = limit;
}

/// Share of a saturation move that keeps every phase within the largest one.
double chop(double dSw, double dSg) {
    const double largest = std::max({std::abs(dSw), std::abs(dSg), std::abs(dSw + dSg)});
    return largest > LargestSaturationMove ? LargestSaturationMove / largest : 1.0;
}

double limitedPressure(double p, double dp) {
    return std::clamp(p + dp, p / LargestPressureFactor, p * LargestPressureFactor);
}

/// Where the solution takes a cell, limited; its third unknown may change.
CellMove moveOfCell(const GridModel& grid, const FluidTables& tables, const CellState& state, CellId c,
                    std::size_t row, ImplicitWork& work) {
    const bool withGas = work.system.blockSize == 3;
    const double* change = work.solution.data() + row * static_cast<std::size_t>(work.system.blockSize);
    const bool freeGas = withGas && work.unknown[row] != ThirdUnknown::SolutionGas;
    const double dSg = freeGas ? change[GasPlace] : 0.0;
    double share = chop(change[WaterPlace], dSg);
    if (freeGas)
        share *= shareOntoRamp(grid, tables, c, state.Sw[c], state.Sg[c],
                               state.Sw[c] + share * change[WaterPlace], state.Sg[c] + share * dSg);
    CellMove move;
    move.p = limitedPressure(state.Pressure[c], change[PressurePlace]);
    move.Sw = state.Sw[c] + share * change[WaterPlace];
    move.Sg = state.Sg[c] + share * dSg;
    move.Rs = state.Rs[c];
    const FluidTables& pvt = pvtAt(tables, c);
    if (freeGas) moveFreeGas(pvt, state, c, row, move, work);
    if (withGas && !freeGas) moveSolutionGas(pvt, state, c, row, change[GasPlace], move, work);
    keepInUnitRange(move);
    return move;
}

void noteChange(const FluidTables& tables, const CellMove& move, double dp, const CellState& state, CellId c,
                NewtonChange& largest) {
    largest.Dp = std::max(largest.Dp, std::abs(dp));
    largest.DSw = std::max(largest.DSw, std::abs(move.Sw - state.Sw[c]));
    largest.DSg = std::max(largest.DSg, std::abs(move.Sg - state.Sg[c]));
    const double scale = SolutionRs(tables, move.p);
    const double oil = 1.0 - move.Sw - move.Sg;
    if (scale > 0.0) largest.DRs = std::max(largest.DRs, oil * std::abs(move.Rs - state.Rs[c]) / scale);
}

/// Free gas stands beside oil that may not take it up.
bool isLimited(const FluidTables& tables, const CellState& state, CellId c) {
    if (state.RsStart.empty()) return false;
    const double saturated = SolutionRs(tables, state.Pressure[c]);
    return allowedRs(state, c, saturated) < saturated;
}

void store(const FluidTables& tables, const CellMove& move, ThirdUnknown unknown, CellId c,
           CellState& state) {
    state.Pressure[c] = move.p;
    state.Sw[c] = move.Sw;
    state.Sg[c] = move.Sg;
    const double rest = 1.0 - move.Sw - move.Sg;
    state.So[c] = std::abs(rest) < Rounding ? 0.0 : rest;
    if (!tables.hasGas) return;
    state.Rs[c] = move.Rs;
    const bool saturated = unknown == ThirdUnknown::FreeGas && !isLimited(tables, state, c);
    state.Pb[c] = saturated ? move.p : BubblePoint(tables, move.Rs);
}

bool allFinite(const std::vector<double>& values) {
    return std::all_of(values.begin(), values.end(), [](double v) { return std::isfinite(v); });
}

void scaleStep(double share, ImplicitWork& work) {
    for (double& value : work.solution) value *= share;
    for (double& value : work.bhpChange) value *= share;
}

/// Changes as the whole step would have made them: a damped one must not pass for convergence.
void undoScale(double share, NewtonChange& change) {
    for (double* value : {&change.Dp, &change.DSw, &change.DSg, &change.DRs}) *value /= share;
}

}  // namespace

void chooseUnknowns(const FluidTables& tables, CellState& state, ImplicitWork& work) {
    std::fill(work.switchesOfStep.begin(), work.switchesOfStep.end(), std::uint8_t{0});
    resetDamping(work.damping);
    if (!tables.hasGas) return;
    for (std::size_t row = 0; row < work.cellOfRow.size(); ++row) {
        const CellId c = work.cellOfRow[row];
        const FluidTables& pvt = pvtAt(tables, c);
        const double limit = allowedRs(state, c, SolutionRs(pvt, state.Pressure[c]));
        const bool free = state.Sg[c] > 0.0 || !canBeUnderSaturated(pvt) || state.Rs[c] >= limit;
        work.unknown[row] = free ? ThirdUnknown::FreeGas : ThirdUnknown::SolutionGas;
        if (state.So[c] < SmallestOil && canBeUnderSaturated(pvt))
            work.unknown[row] = ThirdUnknown::WithoutOil;
        if (free) state.Rs[c] = limit;
        const bool saturated = free && !isLimited(pvt, state, c);
        state.Pb[c] = saturated ? state.Pressure[c] : BubblePoint(pvt, state.Rs[c]);
    }
}

NewtonChange applyNewtonStep(const GridModel& grid, const FluidTables& tables, CellState& state,
                             WellRecord& wells, ImplicitWork& work) {
    NewtonChange largest;
    largest.finite = allFinite(work.solution) && allFinite(work.bhpChange);
    if (!largest.finite) return largest;
    const auto size = static_cast<std::size_t>(work.system.blockSize);
    const double share = dampedShare(work.solution, size, work.unknown, work.damping);
    if (share < 1.0) scaleStep(share, work);
    for (std::size_t row = 0; row < work.cellOfRow.size(); ++row) {
        const CellId c = work.cellOfRow[row];
        const CellMove move = moveOfCell(grid, tables, state, c, row, work);
        noteChange(pvtAt(tables, c), move, work.solution[row * size], state, c, largest);
        store(pvtAt(tables, c), move, work.unknown[row], c, state);
    }
    for (std::size_t w = 0; w < wells.wells.size(); ++w)
        if (!wells.wells[w].shut) wells.wells[w].Bhp += work.bhpChange[w];
    if (share < 1.0) undoScale(share, largest);
    return largest;
}

}  // namespace kvr
