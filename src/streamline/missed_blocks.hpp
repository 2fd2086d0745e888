#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// The step has lines from the cells that no launched line reached: asked for, or mode "cel", in which they
/// are all there are.
bool tracesMissedBlocks(const Simulation& simulation);

/// Memory for the lines of such a step; behind nodeCapacity and results.
void sizeMissedBlocks(LineStage& lines);

/// Starts a line in every active cell with pore volume and permeability that no line of the step has
/// entered yet, in cell order, solves it where it joins two wells, and adds it to the mapping of the cells
/// outside the visited snapshot. LaunchMode is "inj" meanwhile, since every line runs from its injector.
/// In mode "cel" no launched line gives the producers their rates, and the lines through cells do not carry
/// one flow each: a line stands for the flow that fills, in the time it takes from end to end, the pore
/// volume that it was the first to enter. That flow weighs its end at the producer and its residence times
/// in the mapping.
void traceMissedBlocks(Simulation& simulation, int iterationsLeft);

}  // namespace kvr
