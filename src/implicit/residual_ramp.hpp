#pragma once

#include "fluid/saturation_functions.hpp"
#include "model/grid.hpp"
#include "pressure/records/cell_state.hpp"

namespace kvr {

// Stone's model lets the oil relative permeability jump to 0 at So = ResidualSo wherever the gas table
// leaves less oil behind than the water table. A cell that drains into the jump has no state that satisfies
// its balances: oil above it flows off, oil below it stays while more comes in, and the iterates go back and
// forth however short the step. In the fully implicit method the jump is a ramp, on which such a cell stands:
//   kro = f Kro3Fn,  f = min(1, max(0, So - ResidualSo)/RampWidth)

inline constexpr double RampWidth = 1e-3;  // saturation

/// f, from sw + sg as Kro3Fn has them.
inline double rampShare(const SaturationTable& table, double sw, double sg) {
    if (table.oilRule != OilRule::Stone2) return 1.0;  // no jump
    const double above = 1.0 - table.ResidualSo - sw - sg;
    if (above >= RampWidth) return 1.0;
    return above > 0.0 ? above / RampWidth : 0.0;
}

/// Slopes of kro on the ramp from those of Kro3Fn; `kro` is the ramped value.
RelPermSlopes rampedSlopes(const RelPermSlopes& slopes, double share, double kro);

/// Relative permeability and mobility of oil in the cells that stand on the ramp, from fresh properties of a
/// run with gas.
void rampOil(const GridModel& grid, const FluidTables& tables, CellState& state);

/// Share of a move from saturations (sw, sg) to (swTo, sgTo) that does not jump over the ramp: 1, or what
/// ends just inside it, where its slope begins to count.
double shareOntoRamp(const GridModel& grid, const FluidTables& tables, CellId cell, double sw, double sg,
                     double swTo, double sgTo);

}  // namespace kvr
