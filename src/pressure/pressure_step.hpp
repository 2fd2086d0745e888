#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// One implicit pressure solve over the step clock.dt, iterated to PressureTolerance; cuts the step (and
/// clock.dt) when it cannot. firstCall 0 asks for the full property update and saves the time level;
/// doSolve 0 only refreshes. Leaves CellState, WellRecord and the velocity field consistent.
void PressureStep(Simulation& simulation, int firstCall, int doSolve);

/// The level from which a step starts: state and amounts.
void saveTimeLevel(Simulation& simulation);

/// Puts saturations, Rs and Pb back to where the transport of the step's first pass began: those of
/// `start`, with what the step's time level holds flashed at the present pressures where gas is free or
/// comes out of solution. Pressures, rates and velocities stand.
void returnToStepStart(const CellState& start, Simulation& simulation);

}  // namespace kvr
