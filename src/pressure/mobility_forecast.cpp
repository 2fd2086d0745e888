#include "pressure/mobility_forecast.hpp"

#include "base/threads.hpp"
#include "fluid/saturation_functions.hpp"
#include "pressure/cell_transport.hpp"
#include "pressure/properties.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

double totalMobility(CellId c, const CellState& state) {
    return state.LambdaO[c] + state.LambdaW[c] + state.LambdaG[c];
}

void setMobilities(const RelPerms& kr, CellId c, CellState& state) {
    state.KrwCell[c] = kr.w;
    state.KroCell[c] = kr.o;
    state.KrgCell[c] = kr.g;
    state.LambdaO[c] = kr.o / state.MuO[c];
    state.LambdaW[c] = kr.w / state.MuW[c];
    state.LambdaG[c] = kr.g / state.MuG[c];
}

/// What gravity and capillarity will bring behind the transport, at the rates of the step before, as far as
/// it is there.
void addExchange(double dt, const CellAmounts& rate, CellAmounts& amounts) {
    for (CellId c = 1; c <= rate.water.count(); ++c) {
        amounts.water[c] = std::max(0.0, amounts.water[c] + dt * rate.water[c]);
        amounts.oil[c] = std::max(0.0, amounts.oil[c] + dt * rate.oil[c]);
        amounts.gas[c] = std::max(0.0, amounts.gas[c] + dt * rate.gas[c]);
    }
}

}  // namespace

void forecastMobilities(double dt, Simulation& s) {
    CellAmounts amounts;
    measureWholeAmounts(s.grid, s.state, s.pressure.carried, amounts);
    TransportAccount account;
    advanceInOrder(dt, fractionSlopes(s.grid, s.fluids, s.state), s.grid, s.connections, s.fluids,
                   s.velocity.CellFaceFlux, s.wells, {}, buoyancyOf(s), s.state, amounts, account,
                   transferOf(s));
    addExchange(dt, s.pressure.exchanged, amounts);
    s.pressure.mobilityRatio.assign(s.grid.NCELLS, 1.0);
#pragma omp parallel for schedule(static) if (s.grid.NCELLS >= ParallelCells)
    for (CellId c = 1; c <= s.grid.NCELLS; ++c) {
        if (s.grid.Active[c] == 0 || !(s.state.PoreVolume[c] > 0.0)) continue;
        const PhaseState end = stateOfAmounts(s.options, s.grid, s.fluids, amounts, s.state, c);
        const RelPerms kr = relPermsAtCell(s.fluids, c, s.grid.SATNUM[c], 0.5 * (s.state.Sw[c] + end.Sw),
                                           0.5 * (s.state.Sg[c] + end.Sg));
        const double before = totalMobility(c, s.state);
        if (!std::isfinite(kr.w + kr.o + kr.g) || !(before > 0.0)) continue;
        setMobilities(kr, c, s.state);
        s.pressure.mobilityRatio[c] = totalMobility(c, s.state) / before;
    }
}

}  // namespace kvr
