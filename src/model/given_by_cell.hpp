#pragma once

#include "model/connections.hpp"
#include "model/grid.hpp"

namespace kvr {

/// A pore volume takes the place of what the cell has, multipliers that came before it included.
void givePoreVolume(CellId cell, double poreVolume, GridModel& grid);

/// A transmissibility to the upper neighbour along an axis (0 x .. 2 z) does so, with the multipliers of both
/// cells for their connection.
void giveTrans(CellId cell, int axis, double trans, GridModel& grid);

/// PORO of the cells with a given pore volume: porosity = volume * MULTPV / (bulk volume * net-to-gross).
void takeGivenPoreVolumes(GridModel& grid);

/// Shuts the active cells whose pore volume, PORO * NTG * BulkVolume, is 0 or below `grid.leastPoreVolume`,
/// and closes their connections. Returns how many.
CellId closeSmallCells(GridModel& grid, ConnectionTable& connections);

/// Trans of the connections that have a given value, from both sides. Multipliers act behind.
void takeGivenTrans(const GridModel& grid, ConnectionTable& connections);

}  // namespace kvr
