#pragma once

#include "base/console.hpp"
#include "model/grid.hpp"
#include "run/records/clock.hpp"

#include <span>

namespace kvr {

/// Largest |DeltaP| of the cell rows and the first cell that has it. A value that is no number wins.
struct LargestChange {
    double DIFFP = 0.0;
    CellId cell = 1;
};
LargestChange largestChange(std::span<const double> solution, CellId cells);

/// The head of a pressure solve, and the line of each of its iterations.
void printHead(const Console& console, const RunClock& clock);
void printIteration(const Console& console, const GridModel& grid, int it, const LargestChange& largest);

}  // namespace kvr
