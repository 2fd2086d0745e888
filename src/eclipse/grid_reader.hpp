#pragma once

#include "base/console.hpp"
#include "base/units.hpp"
#include "deck/options.hpp"
#include "eclipse/records.hpp"
#include "model/grid.hpp"

#include <string_view>

namespace kvr {

/// How the 24 values of a CORNERS block lie: eight x, eight y, eight z, or eight points x y z.
enum class CornerOrder { Undecided, ByAxis, ByPoint };

/// Which order makes a proper cell of the block: sides mainly horizontal, every top corner above its bottom
/// corner, a volume. By axis where both do or neither does.
CornerOrder cornerOrderOf(const std::vector<float>& values);

/// Takes DIMENS, COORDS and CORNERS from an open .GRID file, by the order of the bytes that DIMENS shows.
/// Dimensions are taken where the grid has none; a cell's place must be the one that its number says.
/// Cells that the file does not name keep their corners.
ReadResult readGridBlocks(const Console& console, RecordReader& reader, GridModel& grid);

/// Corners, I, J, K and activity of the cells from the .GRID file of an outside run in the working folder, or
/// from its .EGRID file where there is no other; then the nodes, and for a grid that the file brought,
/// centres, sizes and volumes. Where neither is there, that is told and everything stays as it was.
void input_GRID(const Console& console, const RunOptions& options, const UnitSystem& units,
                std::string_view header, GridModel& grid);

}  // namespace kvr
