#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// At a report time of a run that keeps sensitivities: writes those of the step that has ended, of pressure
/// and then of travel time, the same into the sums of the run, and forgets them. Coupled forms are formed
/// here, well by well, so that one cell array and one solve are held at a time. A step without lines leaves
/// zeros; so does a report whose step did not advance. Kinds in the form of adjoints are left to
/// writeAdjoints.
void writeSensitivities(Simulation& simulation);

/// At the end of such a run: the files of every report and of the run of the kinds that come from adjoints,
/// whose values of all wells and reports are held at once.
void writeAdjoints(const Simulation& simulation);

}  // namespace kvr
