#pragma once

#include "run/records/simulation.hpp"

#include <string>

namespace kvr {

/// "12.05.2003   43.2 % of the schedule   elapsed 0:01:23   left 0:01:50": the date and the share of the
/// schedule reached, the wall time of the time loop and what it will still take at its mean pace ("-" while
/// nothing is known). Cut to `width` characters.
std::string statusText(const RunClock& clock, double elapsedSeconds, std::size_t width);

/// Gives the console its status line if the screen is a terminal that can rewrite a line; files and pipes
/// never get one.
void startStatus(Simulation& simulation);
/// Brings the line up to date.
void updateStatus(Simulation& simulation);
/// Takes the line away for good.
void endStatus(Simulation& simulation);

}  // namespace kvr
