#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// At a report time: opens the plot of its lines where it is asked for and starts the file of line geometry
/// anew.
void openLineOutput(double remainingToReport, Simulation& simulation);

/// A launched line that has a solver step: to the pair table where it joins two wells, to the plot in the
/// last pass of a report time.
void putLaunchedLine(const LineResult& result, int iterationsLeft, Simulation& simulation);

/// A line through a missed cell: to the plot alike; to the geometry where nothing else shows the lines of the
/// run and the line joins two wells or there is one side of wells only. In a run that only traces restarts
/// the plot alone takes it, and with one side of wells only where it is long.
void putMissedLine(const LineResult& result, int iterationsLeft, Simulation& simulation);

void closeLineOutput(Simulation& simulation);

/// " Calculation Finished : " and the number of a line that has been solved, about ten times in a step.
void tellFinished(const Console& console, int number, int activeLines);

}  // namespace kvr
