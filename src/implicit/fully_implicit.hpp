#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// Memory of the fully implicit method: rows, connections, pattern of the coupled system. The first step
/// calls it where nobody has.
void AllocateFullyImplicit(Simulation& simulation);

/// One time step of clock.dt by a Newton iteration on pressures, saturations and bottom-hole pressures at
/// once. Leaves CellState, WellRecord and the velocity field consistent, as PressureStep does, and the
/// saturations of the end of the step. A step that fails is halved (clock.dt) and taken anew. It starts from
/// what the cells hold, what is carried beyond their saturations included; nothing is carried afterwards.
/// The run stops with a message where no length succeeds.
void FullyImplicitStep(Simulation& simulation);

/// The same step for whoever has another way to go: after `mostCuts` cuts without success it puts cells,
/// wells and clock.dt back to where they were, but for properties, and returns false.
bool tryFullyImplicitStep(Simulation& simulation, int mostCuts);

/// Length of the next step after the last failures allow `longest` (0: any): an even part of `dt`.
double stepLengthAfterCuts(double longest, double dt);

/// One attempt at the step; false when it has failed, with state and wells as the failure left them.
/// `iterations` counts the Newton iterations.
bool attemptImplicitStep(Simulation& simulation, int& iterations);

/// Back to the start of the step, with half its length.
void cutImplicitStep(Simulation& simulation);

/// What an attempt starts from; saved for cuts.
void beginImplicitStep(Simulation& simulation);

}  // namespace kvr
