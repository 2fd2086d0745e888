#pragma once

#include "base/console.hpp"
#include "base/units.hpp"
#include "deck/options.hpp"
#include "deck/schedule.hpp"
#include "fluid/tables.hpp"
#include "model/connections.hpp"
#include "model/grid.hpp"
#include "pressure/records/cell_state.hpp"
#include "pressure/wells/wells.hpp"

#include <string>

namespace kvr {

/// Turns schedule step `stepIndex` (1-based) into the flat well arrays, checks controls and locations
/// (stops on a bad one), computes well indices and prints the control table and the connection report.
///
/// Wells stand in the order in which the deck introduced them, so that a well keeps its number when a
/// later step changes it. A well without a control keyword, without completions, with status SHUT or STOP
/// or with a rate target of 0 is on the list and shut. A rate well that was open before keeps its Bhp as
/// the starting value, except in step 1.
void AssignWells(int stepIndex, const Console& console, const RunOptions& options, const UnitSystem& units,
                 const Schedule& schedule, const GridModel& grid, WellRecord& wells);

/// The checks of controls and locations for all that later steps change, so that a run does not come upon it.
void checkLaterWells(const Console& console, const GridModel& grid, const Schedule& schedule);

/// Well index of every connection again, after the rock arrays have changed.
void computeWellIndices(const GridModel& grid, WellRecord& wells);

/// First bottom-hole pressures, once cell pressures and heads are known: that without flow for a rate well
/// that has none yet, the limit for a "bhp" well.
void initialiseBottomHolePressures(const CellState& state, WellRecord& wells);

/// A well held at its limit goes back to its rate control at the start of a time step when the rate it
/// gave at the limit, by the last rate update of the pressure solve, exceeds its target. One line to console
/// and log at each switch.
void releaseWellsFromLimit(const Console& console, WellRecord& wells);

/// The well is held at its limit and gives more than its target there.
bool exceedsTargetAtLimit(const Well& well);
/// Onto its limit, and back to the rate control, each with its line; `well` is one of `wells`.
void holdWellAtLimit(const Console& console, Well& well, WellRecord& wells);
void releaseWellFromLimit(const Console& console, Well& well, WellRecord& wells);

/// The line of a switch, `from` the control that the well has left.
void tellSwitch(const Console& console, const Well& well, const std::string& from);

/// After a rate update inside a pressure iteration: a rate well whose Bhp has passed its limit goes to
/// "bhp" at the limit. One line at each switch. True when any well changed, so that the number of
/// matrix rows did.
bool switchWellsAtLimit(const Console& console, WellRecord& wells);

/// After the solver has changed the bottom-hole pressures: a value that is not above 0 or not finite is
/// put 500 psi past that without flow, with the two lines of that. False when a well
/// needs it a second time since `clearBottomHoleResets`: the solve has failed.
bool repairBottomHolePressures(const Console& console, const CellState& state, WellRecord& wells);
void clearBottomHoleResets(WellRecord& wells);

}  // namespace kvr
