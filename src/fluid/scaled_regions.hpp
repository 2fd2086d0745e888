#pragma once

#include "base/console.hpp"
#include "fluid/tables.hpp"
#include "model/grid.hpp"

namespace kvr {

/// Gives every active cell whose end points differ from those of its table a saturation region of its own,
/// shared by the cells that agree in table and end points, and frees the arrays that gave them. Its table is
/// the scaled one. Nothing where the deck scales nothing. Stops on end points that no table can have, and
/// tells how many cells and tables there are.
void makeScaledRegions(const Console& console, bool hasWater, GridModel& grid, FluidTables& tables);

}  // namespace kvr
