#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// The tables of a match, each written anew from its head with every run: misfits by iteration, of all wells
/// and of each; histories and misfits of the first run and of the last one.
///   KVR_HM_ObjFnc.out, KVR_Info_aspect.out     iteration, travel time RMS (days), what updates are judged by
///   KVR_HM_ObjFnc_<Q>.out, .._<Q>_Abs.out      iteration, by well: sum of observed minus calculated, of its
///                                              absolute values
///   KVR_HM_ObjFnc_BETA.out                     iteration, by well: steepest rise of the matched curve, a day
///   KVR_Inv_RMSError.out, .._BHP.out           iteration, root mean square over the wells: days; psi
///   KVR_Inv_InitTTime.out, .._FinalTTime.out   well, shift (days); .._InitBHP, .._FinalBHP: psi
///   KVR_Inv_*ObsCalWCT.out, .._*ObsCalBHP.out  well, time, observed, calculated
/// `last` is the run just judged.
void writeMatchTables(Simulation& simulation, const RunMisfit& last);

}  // namespace kvr
