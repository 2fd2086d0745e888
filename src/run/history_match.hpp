#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// Behind start-up, before the first run of a match: keeps what runs start from, and goes on with a match
/// that was ended where the folder has one. Nothing happens without DOINV.
void beginMatch(Simulation& simulation);

/// Behind a forward run: its misfits; a new permeability field, or the last update halved where it made them
/// grow; the run put back to its start. False where nothing more is to be run: without DOINV, behind the last
/// iteration, where the data are matched, and where no update makes the misfit smaller.
bool goOnMatching(Simulation& simulation);

}  // namespace kvr
