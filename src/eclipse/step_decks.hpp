#pragma once

#include "base/console.hpp"
#include "base/units.hpp"
#include "deck/options.hpp"
#include "model/grid.hpp"
#include "pressure/records/cell_state.hpp"

#include <string>

namespace kvr {

/// Name, without extension, of the deck that the outside simulator runs for one step: header, _RST and four
/// digits.
std::string restartDeckName(const RunOptions& options, int step);
/// Name of its initial state: SOLUTION_STP and four digits.
std::string stepSolutionName(int step);

/// The deck of one step: lines of the main deck up to SOLUTION, then in place of the contents of SOLUTION and
/// of SCHEDULE the files of that step; what stands between them is copied. A deck without SCHEDULE gets one.
/// Stops without the main deck.
void splitDeck(const Console& console, const RunOptions& options, int step);

/// Writes the state of every cell as the solution of one step, in the units of the deck: PRESSURE, SWAT, and
/// with gas SGAS and RS where any is dissolved.
void writeStepSolution(const Console& console, const RunOptions& options, const UnitSystem& units,
                       const CellState& state, int step);

/// The solution of a step that goes on from the step before, by RESTART; that of the first step is the main
/// deck's own.
void writeRestartSolution(const Console& console, const RunOptions& options, int step);

}  // namespace kvr
