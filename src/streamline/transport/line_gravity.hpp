#pragma once

#include "fluid/saturation_functions.hpp"
#include "model/grid.hpp"
#include "pressure/records/cell_state.hpp"
#include "streamline/transport/solver_line.hpp"

namespace kvr {

// Gravity along a line, which the orthogonal projection of the splitting stage leaves to the lines. At
// zero total velocity phase a leaves node i for node i+1, per unit area, at
//   q = C k (la lb / (la + lb)) (rho_a - rho_b)/144 dz/ds
// with C the Darcy constant, z the depth and s the length along the line; the heavier phase takes its
// mobility from the upper node, the lighter one from the lower. Pairs: water and oil, gas and oil; oil
// moves by minus the sum. Like the fluxes of transport the exchange counts per unit of total flow, the
// velocity at the face being (phi_i L_i + phi_i+1 L_i+1) / (DeltaTof_i + DeltaTof_i+1); what one node gives
// the other gets.

/// Geometry and densities of a loaded line: permeability along the line from PERMX and PERMZ by the
/// direction of the line, lengths and depths of solver nodes by time of flight between traced nodes. Nodes
/// without length exchange nothing.
void loadLineGravity(const GridModel& grid, const CellState& state, SolverLine& line);

/// What a node brings to the exchange: mobilities, 1/cp, and dissolved gas.
struct GravityNode {
    double w = 0.0, o = 0.0, g = 0.0;
    double Rs = 0.0;
};

GravityNode gravityNode(bool hasGas, const FlowNode& node, const RelPerms& kr, double rs);

/// Between node i and node i + 1.
GravityExchange exchangeAt(bool hasGas, const SolverLine& line, std::size_t i, const GravityNode& here,
                           const GravityNode& next);

/// The exchange of positions 0..N at the present saturations, and gravityW, gravityO, gravityG of positions
/// 1..N that it makes, surface volume per pore volume and day.
void setGravitySources(bool hasGas, SolverLine& line);

}  // namespace kvr
