#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// From the banner to the first report: input, output files, deck, initial state, memory, connections,
/// first material balance. Ends the process where there is nothing to simulate.
void startUp(Simulation& simulation);

/// Connections, and all that follows from rock and connections; again where the rock has changed.
void conditionGeometry(Simulation& simulation);

/// Wells of schedule step `entry` (1-based) with everything that is derived from them.
void rebuildWells(int entry, Simulation& simulation);

/// Connections through the faults that MULTFLT of schedule step `entry` (1-based) names, on top of what they
/// are. Once per entry, before its wells.
void applyFaultMultipliers(int entry, Simulation& simulation);

}  // namespace kvr
