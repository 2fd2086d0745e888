#pragma once

#include "base/console.hpp"
#include "deck/options.hpp"
#include "model/grid.hpp"

#include <vector>

namespace kvr {

/// `passes` times every value becomes the mean of itself and its neighbours in the full table of 26
/// directions, all from the values of the pass before. A neighbour that stands in several rows of the table
/// counts as often; inactive cells take part; outside the box there is nobody. At most
/// MostSmoothingPasses passes.
void smooth(const GridModel& grid, int passes, CellArray<double>& values);

inline constexpr int MostSmoothingPasses = 1000;  // beyond them a field is as flat as it gets

/// Every row of the list in its order, once per run: repeated conditioning finds the smoothed rock. A warning
/// tells of rows with unknown properties and with too many passes.
void smoothRock(const Console& console, const std::vector<ConditioningRow>& rows, GridModel& grid);

}  // namespace kvr
