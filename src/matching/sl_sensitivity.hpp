#pragma once

#include "matching/sensitivities.hpp"
#include "run/records/simulation.hpp"

namespace kvr {

/// What an inversion is to be done for.
enum class MatchStage {
    Whole,           // travel times (or amplitudes) and pressures at once
    GlobalPressure,  // pressures alone: the first iterations of BHPLGMCH
    Twice            // pressures, then the rest on top of it: the later ones
};
MatchStage matchStage(const RunOptions& options, int iteration);

/// The sensitivities of the run that has just ended, from the files of its report steps.
MatchSensitivities rebuildSensitivities(const Simulation& simulation, MatchStage stage);

/// A new permeability field from misfits (`match.wells`) and sensitivities: rows with their constraint, the
/// minimisation, limits of the increment. Leaves the field that it starts from in `match.base`, the increment
/// in `match.dlnk`, the new field in the grid, and tells each step. Where nothing is left to be changed
/// `match.ended` is set.
void SL_SENSITIVITY(Simulation& simulation, MatchStage stage, MatchSensitivities sensitivities);

/// Share of `match.dlnk` that the present update takes: halved as often as `match.halvings` says, but with
/// HMPRIOR, which asks anew, whole.
double updateShare(const Simulation& simulation);

/// The field of the present update.
void takeUpdate(Simulation& simulation);

/// HMPRIOR: another update from the field of the last accepted run, behind one that has been refused.
void askAgain(Simulation& simulation);

}  // namespace kvr
