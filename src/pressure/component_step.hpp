#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// Amounts that fill the pores of the present state, with everything of cells and wells that follows.
void startComponents(Simulation& simulation);

/// Everything of cells and wells that follows from amounts and pressures.
void refreshMixtures(Simulation& simulation);

/// Streams and yields of wells that have just been taken from the schedule.
void takeComponentWells(Simulation& simulation);

/// One IMPES step of components over clock.dt: pressure by Newton on the volume balance until no cell changes
/// by PressureTolerance, then amounts on its flow, rates of the wells by what has moved. False where no
/// pressure is found: nothing has moved then, but pressures stand as the iteration left them.
bool componentStep(Simulation& simulation);

/// Puts a step back to its level, and keeps one.
void keepComponentLevel(Simulation& simulation);
void returnToComponentLevel(Simulation& simulation);

}  // namespace kvr
