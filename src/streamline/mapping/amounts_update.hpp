#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// The cells at the end of a streamline sub-step: every face passes its own total flow, made up as the lines
/// through it were; a face that no line crosses, and a producer that none reaches, take what their cell
/// holds. Wells give and take their rates, so every balance closes. States are recovered from the amounts;
/// tracers are mapped as ever.
void advanceByFaceTransfer(Simulation& simulation);

}  // namespace kvr
