#pragma once

#include "run/simulation.hpp"

namespace kvr {

/// Gravity and capillary exchange between neighbouring cells over clock.workDt, explicit with its own
/// CFL limit; conserves each phase across faces of equal transmissibility.
void OSPLIT_GRVANDPC_GENERAL2(Simulation& simulation);

}  // namespace kvr
