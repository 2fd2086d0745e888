#pragma once

#include "model/grid.hpp"
#include "pressure/records/cell_state.hpp"
#include "report/balance_record.hpp"
#include "report/mean_pressure.hpp"
#include "run/records/simulation.hpp"

#include <vector>

namespace kvr {

/// Fluids in place of one region, and its mean pressure, psia.
struct RegionInPlace {
    InPlaceSums sums;
    MeanPressure pressure;
};

/// The same sums as those of the field (sumInPlace with what cells hold beyond their saturations), by region
/// of FIPNUM; region r at [r - 1]. Empty where the deck has no regions.
std::vector<RegionInPlace> sumRegions(const GridModel& grid, const CellState& state,
                                      const CellAmounts& carried, bool hasGas);

/// Surface amounts of the regions as the cells are now.
std::vector<PhaseAmounts> regionAmounts(const Simulation& simulation);

/// Rows of the present time behind those of the balance, one per region; nothing without FIPNUM.
void reportRegions(Simulation& simulation);

}  // namespace kvr
