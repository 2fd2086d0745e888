#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// Well, production, water-cut and recovery tables of one finished step, with the totals that
/// `advanceBalance` has brought up to its end. Every file is complete and
/// handed to the operating system when this returns. The recovery table always ends at the present
/// time; a phase of the analytical solver leaves it as it is.
void reportWells(Simulation& simulation);

/// Heads of the well tables, written when the wells of the run are known, and the recovery row of time
/// zero. Comes before the first row of the balance: nothing has flowed.
void startWellTables(Simulation& simulation);

/// Puts new empty files in place of the recovery, production and water-cut tables: the schedule is run
/// again from its start. Stops as the opening of the output set does.
void emptyRunTables(const Console& console, OutputStreams& outputs);

}  // namespace kvr
