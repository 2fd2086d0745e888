#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// One step of a run that traces an outside simulator's: its run where that is due, its restart into cells,
/// wells and flow field, then lines on that field. Cells stay those of the restart; with useEclipsePressure
/// the restart gives the pressure alone, and saturations move by the run's own transport from where they
/// stood. Leaves clock.dt and clock.workDt at the length that was covered. False: a signal has asked the run
/// to end, and the step has not been made.
bool takeTracedStep(Simulation& simulation);

/// The clock of a run that goes on from a restart (RESTART) starts at its time; a schedule that begins there
/// is moved to it. Behind the reading of the deck.
void startAtRestart(Simulation& simulation);

/// Takes the tables of times past what the time of a restart has left behind: the steps of an outside run are
/// its own.
void passTableEntries(Simulation& simulation);
/// The same for a run that has started at a restart: what ends there is past, too.
void passTablesAtRestart(Simulation& simulation);
/// The same for well events, with the wells of the last of them; behind the report of the step, which shows
/// those of the restart.
void passWellEvents(Simulation& simulation);

}  // namespace kvr
