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
constexpr double SmallestOil = 1e-6;           // saturation; less oil dissolves no gas worth an unknown
constexpr double RoundedOil = 1e-13;           // saturation; less is what rounding leaves of 1 - Sw - Sg
constexpr double LeastShareOfRs = 0.5;         // of the saturated Rs that a cell losing its gas may fall to
constexpr int FreeSwitches = 3;                // of one cell and attempt, without overshoot asked
constexpr double OvershootPerSwitch = 1e-4;    // relative, for each further one

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

void saturate(const FluidTables& tables, CellMove& move) {
    move.Rs = SolutionRs(tables, move.p);
}

/// Volume of free gas that a unit of Rs in the cell's oil stands for.
double gasVolumeOfRs(const CellState& state, CellId c, double oil) {
    return oil * state.Bg[c] / state.Bo[c];
}

void moveFreeGas(const FluidTables& tables, const CellState& state, CellId c, std::size_t row, CellMove& move,
                 ImplicitWork& work) {
    saturate(tables, move);
    if (move.Sg >= 0.0) return;
    const double missing = -move.Sg;
    const double oil = 1.0 - std::max(0.0, move.Sw);
    move.Sg = 0.0;
    if (oil < SmallestOil || !canBeUnderSaturated(tables) || missing <= hysteresis(work.switchesOfStep[row]))
        return;
    work.unknown[row] = ThirdUnknown::SolutionGas;
    ++work.switchesOfStep[row];
    move.Rs = std::max(LeastShareOfRs * move.Rs, move.Rs - missing / gasVolumeOfRs(state, c, oil));
}

void moveSolutionGas(const FluidTables& tables, const CellState& state, CellId c, std::size_t row,
                     CellMove& move, ImplicitWork& work) {
    const double limit = SolutionRs(tables, move.p);
    const double oil = 1.0 - std::clamp(move.Sw, 0.0, 1.0);
    move.Sg = 0.0;
    move.Rs = std::max(0.0, move.Rs);
    const bool freed = move.Rs > limit * (1.0 + hysteresis(work.switchesOfStep[row]));
    if (oil >= SmallestOil && !freed) return;
    work.unknown[row] = ThirdUnknown::FreeGas;
    ++work.switchesOfStep[row];
    if (freed) move.Sg = std::min(LargestSaturationMove, (move.Rs - limit) * gasVolumeOfRs(state, c, oil));
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
    const bool freeGas = withGas && work.unknown[row] == ThirdUnknown::FreeGas;
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
    if (freeGas) moveFreeGas(tables, state, c, row, move, work);
    if (withGas && !freeGas) {
        move.Rs += change[GasPlace];
        moveSolutionGas(tables, state, c, row, move, work);
    }
    keepInUnitRange(move);
    return move;
}

void noteChange(const FluidTables& tables, const CellMove& move, double dp, const CellState& state, CellId c,
                NewtonChange& largest) {
    largest.Dp = std::max(largest.Dp, std::abs(dp));
    largest.DSw = std::max(largest.DSw, std::abs(move.Sw - state.Sw[c]));
    largest.DSg = std::max(largest.DSg, std::abs(move.Sg - state.Sg[c]));
    const double scale = SolutionRs(tables, move.p);
    if (scale > 0.0 && 1.0 - move.Sw >= SmallestOil)
        largest.DRs = std::max(largest.DRs, std::abs(move.Rs - state.Rs[c]) / scale);
}

void store(const FluidTables& tables, const CellMove& move, ThirdUnknown unknown, CellId c,
           CellState& state) {
    state.Pressure[c] = move.p;
    state.Sw[c] = move.Sw;
    state.Sg[c] = move.Sg;
    const double rest = 1.0 - move.Sw - move.Sg;
    state.So[c] = std::abs(rest) < RoundedOil ? 0.0 : rest;
    if (!tables.hasGas) return;
    state.Rs[c] = move.Rs;
    state.Pb[c] = unknown == ThirdUnknown::FreeGas ? move.p : BubblePoint(tables, move.Rs);
}

bool allFinite(const std::vector<double>& values) {
    return std::all_of(values.begin(), values.end(), [](double v) { return std::isfinite(v); });
}

}  // namespace

void chooseUnknowns(const FluidTables& tables, CellState& state, ImplicitWork& work) {
    std::fill(work.switchesOfStep.begin(), work.switchesOfStep.end(), std::uint8_t{0});
    if (!tables.hasGas) return;
    for (std::size_t row = 0; row < work.cellOfRow.size(); ++row) {
        const CellId c = work.cellOfRow[row];
        const double limit = SolutionRs(tables, state.Pressure[c]);
        const bool free = state.Sg[c] > 0.0 || state.So[c] < SmallestOil || !canBeUnderSaturated(tables) ||
                          state.Rs[c] >= limit;
        work.unknown[row] = free ? ThirdUnknown::FreeGas : ThirdUnknown::SolutionGas;
        if (free) state.Rs[c] = limit;
        state.Pb[c] = free ? state.Pressure[c] : BubblePoint(tables, state.Rs[c]);
    }
}

NewtonChange applyNewtonStep(const GridModel& grid, const FluidTables& tables, CellState& state,
                             WellRecord& wells, ImplicitWork& work) {
    NewtonChange largest;
    largest.finite = allFinite(work.solution) && allFinite(work.bhpChange);
    if (!largest.finite) return largest;
    const auto size = static_cast<std::size_t>(work.system.blockSize);
    for (std::size_t row = 0; row < work.cellOfRow.size(); ++row) {
        const CellId c = work.cellOfRow[row];
        const CellMove move = moveOfCell(grid, tables, state, c, row, work);
        noteChange(tables, move, work.solution[row * size], state, c, largest);
        store(tables, move, work.unknown[row], c, state);
    }
    for (std::size_t w = 0; w < wells.wells.size(); ++w)
        if (!wells.wells[w].shut) wells.wells[w].Bhp += work.bhpChange[w];
    return largest;
}

}  // namespace kvr
