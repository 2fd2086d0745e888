#pragma once

#include "pressure/component_make_up.hpp"
#include "run/records/simulation.hpp"

namespace kvr {

/// Amounts that fill the pores of the present state, with everything of cells and wells that follows.
void startComponents(Simulation& simulation);

/// Everything of cells and wells that follows from amounts and pressures.
void refreshMixtures(Simulation& simulation);

/// Streams and yields of wells that have just been taken from the schedule.
void takeComponentWells(Simulation& simulation);

/// Pressure by Newton on the volume balance until no cell changes by PressureTolerance, with its flow and
/// what wells bring and take on it. False where no pressure is found: pressures stand as the iteration left
/// them.
bool solveComponentFlow(Simulation& simulation);

/// Amounts over clock.dt on that flow, made up as lines tell it or by the cells; rates of the wells by what
/// has moved.
void moveOnFlow(const ComponentMakeUp& makeUp, Simulation& simulation);

/// Both, by the cells: a step of IMPES. False where nothing has moved.
bool componentStep(Simulation& simulation);

/// Puts a step back to its level, and keeps one.
void keepComponentLevel(Simulation& simulation);
void returnToComponentLevel(Simulation& simulation);

}  // namespace kvr
