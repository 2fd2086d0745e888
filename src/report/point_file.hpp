#pragma once

#include "base/cell_array.hpp"
#include "model/grid.hpp"

#include <cstdio>
#include <string_view>

namespace kvr {

/// A whole file in point format: head, then X, Y, Z of each cell's centre (ft) and its value. Values of
/// at least 1e-20 in size stand in fixed-point columns, smaller ones in general form. The stream is
/// flushed.
void writePointFile(std::FILE* stream, const GridModel& grid, const CellArray<double>& values,
                    std::string_view title);

}  // namespace kvr
