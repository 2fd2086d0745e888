#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// KVR_HM_Resume.bin: where a match stands, so that one that was ended goes on with its next run. Holds the
/// iteration, the misfits of the runs so far, the histories of the first one, the field that the present
/// update started from and the update; a sum over the deck, the observed histories and the rock tells whether
/// it belongs to the same match, another over its own bytes whether it is whole. Nothing is changed by it,
/// though one walk over the record puts and takes alike; the record is not copied, its rows are what a match
/// holds most of.
void writeMatchResume(Simulation& simulation);

enum class ResumeState {
    None,     // there is no such file
    Foreign,  // of another deck, other data, or damaged: not used
    Taken     // `match` and the iteration are those of the file
};
/// `match.prior` has to stand.
ResumeState readMatchResume(Simulation& simulation);

/// A match that has come to its end leaves nothing to go on with.
void removeMatchResume(const Simulation& simulation);

}  // namespace kvr
