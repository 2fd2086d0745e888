#pragma once

#include "base/cell_array.hpp"
#include "model/grid.hpp"

#include <cstdio>
#include <string_view>

namespace kvr {

/// Spreadsheet text of one field at one time: a block per layer with Y down and X across, tabs between
/// the values, positions those of the cell centres (ft). A model of one row along y gets one more block
/// with its layers down. The stream is flushed.
void writeSlices(std::FILE* stream, const GridModel& grid, const CellArray<double>& values, double time,
                 std::string_view label);

}  // namespace kvr
