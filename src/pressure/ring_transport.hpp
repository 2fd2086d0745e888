#pragma once

#include "base/cell_array.hpp"
#include "pressure/transport_walk.hpp"

#include <span>

namespace kvr {

/// Cells that flow into each other in a ring, as planRing has it: its units down the flow, one of several
/// cells as one tank; groups of several units are swept until what passes back is what was passed back, by
/// accelerated steps (see acceleratedStep).
void passRing(std::span<const CellId> cells, Walk& walk);

}  // namespace kvr
