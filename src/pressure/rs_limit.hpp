#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// DRSDT of the present schedule entry: where it limits, the state keeps Rs as it is at the start of a step.
void startRsLimit(Simulation& simulation);

/// How far a step of the present length may raise it; called wherever the length changes.
///   RsRise = DRSDT dt
void setRsRise(Simulation& simulation);

}  // namespace kvr
