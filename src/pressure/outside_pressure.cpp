#include "pressure/outside_pressure.hpp"

#include "pressure/pressure_step.hpp"
#include "pressure/properties.hpp"

namespace kvr {

void beginOutsideStep(Simulation& s) {
    refreshProperties(s.grid, s.fluids, s.state);
    saveTimeLevel(s);
    s.timeLevelWells = s.wells;
}

void keepOutsidePressure(Simulation& s) {
    CellArray<double> pressure = s.state.Pressure;
    returnToLevel(s.timeLevel, s.state);
    s.state.Pressure = std::move(pressure);
    UpdateProperties(s.console, s.options, s.grid, s.fluids, s.pressure.flashAmounts, s.state);
    if (carriesAmounts(s.options))
        measureCarried(s.grid, s.state, s.pressure.timeLevelAmounts, s.pressure.carried);
    s.pressure.DeltaP.assign(s.grid.NCELLS, 0.0);
    for (CellId c = 1; c <= s.grid.NCELLS; ++c)
        s.pressure.DeltaP[c] = s.state.Pressure[c] - s.timeLevel.Pressure[c];
    s.pressure.fieldStands = true;
}

}  // namespace kvr
