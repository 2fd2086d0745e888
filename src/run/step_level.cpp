#include "run/step_level.hpp"

#include "eclipse/line_files.hpp"
#include "pressure/properties.hpp"

namespace kvr {

void keepStepLevel(const Simulation& s, StepLevel& level) {
    keepLevel(s.fluids.hasGas, s.state, level.state);
    level.carried = s.pressure.carried;
    level.wells = s.wells;
    level.clock = s.clock;
    level.fieldStands = s.pressure.fieldStands;
    level.averagePressure = s.pressure.AveragePressure;
    level.faceFlux = s.velocity.CellFaceFlux;
    level.transferFlux = s.velocity.TransferFlux;
    level.exchanged = s.pressure.exchanged;
    level.pressureRise = s.pressure.pressureRise;
    level.riseGoesOn = s.pressure.riseGoesOn;
}

void returnToStepLevel(const StepLevel& level, Simulation& s) {
    returnToLevel(level.state, s.state);
    refreshProperties(s.grid, s.fluids, s.state);
    s.pressure.carried = level.carried;
    s.pressure.AveragePressure = level.averagePressure;
    s.pressure.fieldStands = level.fieldStands;
    s.pressure.exchanged = level.exchanged;
    s.pressure.pressureRise = level.pressureRise;
    s.pressure.riseGoesOn = level.riseGoesOn;
    s.velocity.CellFaceFlux = level.faceFlux;
    s.velocity.TransferFlux = level.transferFlux;
    s.wells = level.wells;
    s.clock = level.clock;
    clearPaths(s.eclipse.paths);
}

}  // namespace kvr
