#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// The level from which a step starts whose pressure an outside simulator finds.
void beginOutsideStep(Simulation& simulation);

/// Behind the restart of such a step: its pressures stand, while saturations, Rs and bubble points are those
/// of the level again, with what the level holds flashed at the new pressures where gas is free or comes out
/// of solution. Rates and flow field stay those of the restart.
void keepOutsidePressure(Simulation& simulation);

}  // namespace kvr
