#pragma once

#include "fluid/tables.hpp"
#include "model/grid.hpp"
#include "pressure/records/cell_state.hpp"

namespace kvr {

/// Reservoir volume that the field takes up for one psi: sum over cells of the pore volume times the
/// compressibility of pores and fluids, gas that goes into the oil included.
double fieldStorage(const GridModel& grid, const FluidTables& tables, const CellState& state);

/// What the target of the average pressure is weighed with.
struct PressureState {
    double target = 0.0, average = 0.0;  // psia
    double produced = 0.0;               // reservoir volume a day, positive
    double injected = 0.0;               // reservoir volume a day
    double storage = 0.0;                // reservoir volume per psi
    double step = 0.0;                   // days of the next step
};

/// Factor of the injection that moves the average pressure toward its target: the voidage is replaced
/// target/average times, but not by more than the field takes up to the target within the step:
///   injection = produced + sign * min(produced |target/average - 1|, storage |target - average| / step)
/// over the present one, between 1 + wmin and 1 + wmax. 1 without a target (0) or without flow.
double injectionFactor(const PressureState& now, double wmin, double wmax);

}  // namespace kvr
