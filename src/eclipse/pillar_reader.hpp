#pragma once

#include "base/console.hpp"
#include "eclipse/records.hpp"
#include "model/grid.hpp"

namespace kvr {

/// Takes GRIDUNIT, GRIDHEAD, COORD, ZCORN and ACTNUM of the first grid in an open .EGRID file and places the
/// corners of every cell on the pillars, in ft. Dimensions are taken where the grid has none, and have to be
/// those of the file where it has. Without ACTNUM every cell is active.
ReadResult readPillarBlocks(const Console& console, RecordReader& reader, GridModel& grid);

}  // namespace kvr
