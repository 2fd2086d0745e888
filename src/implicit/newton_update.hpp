#pragma once

#include "implicit/implicit_work.hpp"

namespace kvr {

/// Largest changes that an iteration made, over all cells.
struct NewtonChange {
    double Dp = 0.0;   // psi; by the solution, before any limit
    double DSw = 0.0;  // of the saturations, as applied
    double DSg = 0.0;
    double DRs = 0.0;  // of Rs, over its value at the cell's pressure and weighed by the oil saturation
    bool finite = true;
};

/// Third unknown of every cell from the state at the start of an attempt. Cells are made to agree with it: Rs
/// and Pb of saturated oil follow the pressure. No gas phase: nothing is done.
void chooseUnknowns(const FluidTables& tables, CellState& state, ImplicitWork& work);

/// Applies the solution of the system to pressures, saturations, Rs, Pb and bottom-hole pressures; other
/// properties are left as they are. A solution with a value that is no number changes nothing.
///
/// Limits, cell by cell: a pressure is at most doubled or halved; a move that would change a saturation by
/// more than 0.2 is shortened as a whole (the chop of Appleyard), and so is one that would jump over the ramp
/// of the oil at its residual saturation; saturations stay in 0..1.
///
/// Change of the third unknown: free gas that would turn negative leaves the cell, Rs gives up what was
/// overdrawn; Rs above its value at the new pressure frees what is too much. Amounts are kept in both, so
/// that the cell lands near where the equations want it. A cell that has changed sides more than a few times
/// in one attempt must overshoot by more each further time, so that it comes to rest on one side.
/// Iterates that go back and forth are damped as a whole; the changes returned are those of the whole step.
NewtonChange applyNewtonStep(const GridModel& grid, const FluidTables& tables, CellState& state,
                             WellRecord& wells, ImplicitWork& work);

}  // namespace kvr
