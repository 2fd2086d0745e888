#include "pressure/pressure_forecast.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double MostAstray = 0.5;  // of the change of a step, that its forecast may have missed
constexpr double LeastShare = 0.5;  // of a pressure that it may be foretold to come down to

}  // namespace

void keepPressureRise(double dt, const CellState& level, const CellState& state, PressureStage& stage) {
    CellArray<double>& rise = stage.pressureRise;
    const bool known = rise.count() == state.Pressure.count();
    if (!known) rise.assign(state.Pressure.count(), 0.0);
    double change = 0.0, missed = 0.0;
    for (CellId c = 1; c <= state.Pressure.count(); ++c) {
        const double now = state.Pressure[c] - level.Pressure[c];
        change += std::abs(now);
        missed += std::abs(now - dt * rise[c]);
        rise[c] = now / dt;
    }
    stage.riseGoesOn = known && missed < MostAstray * change;
}

void foretellPressures(double dt, const PressureStage& stage, CellState& state, WellRecord& wells) {
    if (!stage.riseGoesOn) return;
    const auto moved = [&](double pressure, CellId c) {
        return std::max(pressure + dt * stage.pressureRise[c], LeastShare * pressure);
    };
    for (Well& well : wells.wells)
        if (isRateControlled(well) && !well.connections.empty())
            well.Bhp = moved(well.Bhp, well.connections.front().ConnCell);
    for (CellId c = 1; c <= state.Pressure.count(); ++c) state.Pressure[c] = moved(state.Pressure[c], c);
}

}  // namespace kvr
