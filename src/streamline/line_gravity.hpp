#pragma once

#include "model/grid.hpp"
#include "pressure/cell_state.hpp"
#include "streamline/solver_line.hpp"

namespace kvr {

// Gravity along a line, which the orthogonal projection of the splitting stage leaves to the lines. At
// zero total velocity phase a leaves node i for node i+1, per unit area, at
//   q = C k (la lb / (la + lb)) (rho_a - rho_b)/144 dz/ds
// with C the Darcy constant, z the depth and s the length along the line; the heavier phase takes its
// mobility from the upper node, the lighter one from the lower. Pairs: water and oil, gas and oil; oil
// moves by minus the sum. Sources are net outflow per pore volume.

/// Geometry and densities of a loaded line: permeability along the line from PERMX and PERMZ by the
/// direction of the line, lengths and depths of solver nodes by time of flight between traced nodes. Nodes
/// without length exchange nothing.
void loadLineGravity(const GridModel& grid, const CellState& state, SolverLine& line);

/// gravityW, gravityO, gravityG of positions 1..N at the present saturations, surface volume per pore
/// volume and day.
void setGravitySources(bool hasGas, SolverLine& line);

}  // namespace kvr
