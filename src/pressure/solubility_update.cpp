#include "pressure/solubility_update.hpp"

#include "base/constants.hpp"
#include "fluid/black_oil.hpp"
#include "pressure/cell_transport.hpp"
#include "pressure/properties.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double LeastMoved = 1e-9;  // of the pore volume, free gas; what iterations leave over is less

double mostRs(const Simulation& s, CellId cell) {
    return allowedRs(s.state, cell, SolutionRs(pvtAt(s.fluids, cell), s.state.Pressure[cell]));
}

/// Hardly any gas would go from one store to the other: out of oil that holds too much, or into oil that
/// could take more, as far as there is free gas.
bool isInEquilibrium(const CellState& state, CellId cell, double most) {
    const double room = (most - state.Rs[cell]) * state.So[cell] / state.Bo[cell] * state.Bg[cell];
    return std::abs(std::min(room, state.Sg[cell])) <= LeastMoved;
}

bool holdsGas(const CellState& state, CellId cell) {
    return state.Sg[cell] > MachineEpsilon || (state.So[cell] > MachineEpsilon && state.Rs[cell] > 0.0);
}

std::vector<CellId> cellsThatChange(bool reacts, const Simulation& s) {
    std::vector<CellId> cells;
    for (CellId cell = 1; cell <= s.grid.NCELLS; ++cell) {
        if (s.grid.Active[cell] == 0 || !(s.state.PoreVolume[cell] > 0.0) || !holdsGas(s.state, cell))
            continue;
        if (reacts || !isInEquilibrium(s.state, cell, mostRs(s, cell))) cells.push_back(cell);
    }
    return cells;
}

void changeCell(double days, CellId cell, CellAmounts& amounts, Simulation& s, Co2Movement& moved) {
    const double oil = amounts.oil[cell], gas = amounts.gas[cell];
    const GasShares before = gasShares(s.state, cell, gas, oil);
    const double saturated = mostRs(s, cell) * std::max(oil, 0.0);
    amounts.gas[cell] = gasBehindReaction(gas, saturated, s.options.co2SolidRate, days);
    const PhaseState found = stateOfAmounts(s.options, s.grid, s.fluids, amounts, s.state, cell);
    if (!std::isfinite(found.Sw + found.So + found.Sg + found.Rs + found.Pb)) {
        amounts.gas[cell] = gas;
        return;
    }
    storePhases(found, cell, s.state);
    const GasShares after = gasShares(s.state, cell, amounts.gas[cell], oil);
    const double solid = gas - amounts.gas[cell];
    s.state.SolidGas[cell] += solid;
    moved.free += after.free - before.free;
    moved.dissolved += after.dissolved - before.dissolved;
    moved.solid += solid;
}

}  // namespace

GasShares gasShares(const CellState& state, CellId cell, double gas, double oil) {
    if (!(state.Sg[cell] > MachineEpsilon)) return {0.0, gas};
    const double dissolved = std::min(gas, state.Rs[cell] * oil);
    return {gas - dissolved, dissolved};
}

double gasBehindReaction(double gas, double saturated, double rate, double days) {
    if (!(gas > 0.0 && saturated > 0.0 && rate > 0.0 && days > 0.0)) return gas;
    const double untilDissolved = std::max(0.0, (gas - saturated) / (rate * saturated));  // days
    if (days <= untilDissolved) return gas - rate * saturated * days;
    return std::min(gas, saturated) * std::exp(-rate * (days - untilDissolved));
}

Co2Movement UPDATE_SOLUBILITYRATIO(int iterationsLeft, double days, Simulation& s) {
    Co2Movement moved;
    if (!s.options.co2Model || !s.fluids.hasGas) return moved;
    const std::vector<CellId> cells = cellsThatChange(s.options.co2SolidRate > 0.0, s);
    if (cells.empty()) return moved;
    CellAmounts amounts;
    measureWholeAmounts(s.grid, s.state, s.pressure.carried, amounts);
    for (const CellId cell : cells) changeCell(days, cell, amounts, s, moved);
    refreshProperties(s.grid, s.fluids, s.state);
    if (carriesAmounts(s.options) || s.options.method == "FIM")
        measureCarried(s.grid, s.state, amounts, s.pressure.carried);
    if (iterationsLeft == 0)
        log(s.console, "CO2 UPDATE :: {} cells, Mscf free {} dissolved {} solid {}", cells.size(),
            number(toMscf(s.units, moved.free)), number(toMscf(s.units, moved.dissolved)),
            number(toMscf(s.units, moved.solid)));
    return moved;
}

}  // namespace kvr
