#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// Removes the .X, .S, .SLN and line plots that an earlier run of the same name left: those of the kinds that
/// this run writes, and those that the index of the earlier run lists. One line tells how many.
void removeStaleFiles(const Simulation& simulation);

/// Behind a run of a named deck: files that stayed empty are removed.
void removeEmptyFiles(const Simulation& simulation);

/// Writes KVR_Files.txt: every file of the run that holds something, with what it holds.
void writeFilesIndex(const Simulation& simulation);

}  // namespace kvr
