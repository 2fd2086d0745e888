#pragma once

#include "pressure/component_make_up.hpp"
#include "run/records/simulation.hpp"

namespace kvr {

/// Start-up memory of the streamline stage: mapping sums, visited flags, line records, launch settings.
void allocateStreamlines(Simulation& simulation);

/// One saturation advance over clock.workDt on the frozen velocity field: launch, trace, transport on
/// every line, mapping to the cells, producer rates from the lines.
/// remainingToEnd, remainingToReport: days from the end of this sub-step.
void StreamlineStep(Simulation& simulation, int iterationsLeft, int iteration, double remainingToEnd,
                    double remainingToReport);

/// The same on a field that an outside run has left (input_RST2Velocity): lines, their files, the rates by
/// pair and the maps, but no transport and no mapping, since cells and wells are those of the restart.
void StreamlineRestartStep(Simulation& simulation, int iterationsLeft, int iteration, double remainingToEnd,
                           double remainingToReport);

/// The lines of a step with components on its flow, over clock.workDt: launch, trace, transport on every
/// line, their files. Returns what they tell of the flow; cells and wells stay.
ComponentMakeUp traceMixtures(Simulation& simulation, double remainingToEnd, double remainingToReport);

/// Lines on the flow field and the cells of the end of a step whose saturations have moved without any: for
/// the files of a report, the rates by pair and the maps of the end of the run alone. Nothing is done where
/// none of them is due. The step still stands at its begin.
void drawLines(Simulation& simulation, double remainingToEnd, double remainingToReport);

}  // namespace kvr
