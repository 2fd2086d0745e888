#pragma once

#include "base/cell_array.hpp"
#include "pressure/wells/wells.hpp"

#include <cstddef>
#include <string>
#include <vector>

namespace kvr {

/// Water that went from one cell into another over a step, surface volume, not negative.
struct WaterPassage {
    CellId from = 0, to = 0;
    double volume = 0.0;
};

/// Water that a connection brought into its cell over a step, surface volume, negative where it produced.
struct WellWater {
    std::size_t well = 0;  // 0-based
    CellId cell = 0;
    double volume = 0.0;
};

/// Where the water of a step went.
struct WaterMovement {
    std::vector<WaterPassage> passages;
    std::vector<WellWater> wells;
};

/// Concentration of tracer t in what a well injects: by the row that names it; a row whose name stands for no
/// tracer of the run stands for all of them.
double injectedConcentration(const Well& well, const std::vector<std::string>& names, std::size_t t);

/// Moves tracers with the water of a step, cell after cell down its flow. A cell is a stirred tank that even
/// flows I fill and O empty:
///   c(end) = cin + (c - cin) exp(-I ln(W(end)/W)/(I - O)),  W(end) = W + I - O
/// and passes on the mean that leaves W c + I cin = W(end) c(end) + O m, so that no tracer is lost. Cells
/// that pass water in a ring are repeated until they stand still. `before`: water of the cells at the start
/// of the step, surface volume.
void moveTracers(const WaterMovement& movement, const WellRecord& wells,
                 const std::vector<std::string>& names, const CellArray<double>& before,
                 DirectionArray<double>& tracer);

}  // namespace kvr
