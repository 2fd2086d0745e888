#pragma once

#include "model/connections.hpp"
#include "model/grid.hpp"

namespace kvr {

/// Marks the inactive cells that are pinched out, see Pinch, and joins the active cells above and below each
/// run of them: they become neighbours through faces 6 and 5, with the transmissibility of their own halves
/// as if they touched. `before`: what was active
/// before MINPV closed its cells. A further conditioning finds the pairs as neighbours. Returns how many
/// pairs are joined.
CellId joinAcrossPinchOuts(bool cornerFormula, const CellArray<std::uint8_t>& before, GridModel& grid,
                           ConnectionTable& connections);

}  // namespace kvr
