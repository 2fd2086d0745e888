#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// The cells at the end of a streamline sub-step of a run that carries amounts, in place of the mapped
/// saturations: every face passes its own total flow, made up as the lines through it were; a face that no
/// line crosses passes it upstream by the cell that the flow comes from. Wells give and take their rates, so
/// every balance closes. States are recovered from the amounts; tracers are mapped as ever. `substep`
/// counts the mapping sub-steps of the pressure step from 1; producers' rates are means over those so far.
void advanceByFaceTransfer(int substep, Simulation& simulation);

}  // namespace kvr
