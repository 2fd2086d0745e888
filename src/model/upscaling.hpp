#pragma once

#include "base/console.hpp"
#include "deck/options.hpp"
#include "model/grid.hpp"

#include <vector>

namespace kvr {

/// Averages of the rock over windows of cells, counted from cell 1 and cut at the end of the grid, on the
/// fine cells and constant in each window: porosity by net volume over the active cells, permeability along
/// each axis by the flow through the window (model/window_flow). Properties without a row are as they stand
/// in the grid, which is left as it is. A window beyond the dense solver stops the run.
void upscaleRock(const Console& console, const std::vector<ConditioningRow>& rows, GridModel& grid);

}  // namespace kvr
