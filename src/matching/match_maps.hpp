#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// Maps of the field that a match starts from: KVR_Inv_InitialK.out, HM_Perm_Latest.plt and its logarithm.
void writeFirstMaps(Simulation& simulation);

/// Maps behind an update: KVR_Inv_FinalK.out, KVR_Inv_IncrementK.out, HM_Perm_Latest.plt and its logarithm
/// (base ten), HM_Perm_Change_FromINI.plt (change of ln k since the first run), HM_ITE_ and the iteration;
/// with the Tecplot switch a further zone in each KVR_HM_Perm_*.plt. And the
/// field as deck text: HM_Perm_Latest.DATA, and the file of PERMFILE.
void writeUpdateMaps(Simulation& simulation);

}  // namespace kvr
