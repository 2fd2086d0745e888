#pragma once

#include "base/units.hpp"
#include "implicit/implicit_work.hpp"
#include "model/connections.hpp"

#include <array>

namespace kvr {

/// Rows, connections and the pattern of the coupled system, once per grid. Faces and, where they carry
/// transmissibility, diagonals.
void buildImplicitPattern(const GridModel& grid, const ConnectionTable& connections, bool hasGas,
                          ImplicitWork& work);

/// One transmissibility for each connection. Where a multiplier has acted on one side only, the connection is
/// two halves in series, each with what its own side allows: 2 Ta Tb/(Ta + Tb), so that a side that is shut
/// shuts it and both cells see the same flow.
void setConnectionTrans(const UnitSystem& units, const ConnectionTable& connections, ImplicitWork& work);

/// Residuals and Jacobian of the mass balances of all active cells, from a state whose properties and well
/// rates are fresh. For a cell c, component by component, surface volumes a day:
///   R_c = (amount_c - old amount_c)/dt - sum of inflow from neighbours - sum of well rates
/// Flow of phase f over a connection, upstream cell u by the sign of its potential difference:
///   T * (lambda_f/B_f)_u * Phi_f,   gas with Rs_u times the oil flow
/// The system holds dR/dx and the right-hand side -R, so that its solution is the Newton step; the borders
/// of wells are in implicit/well_borders.
void assembleCells(double dt, const GridModel& grid, const FluidTables& tables, const CellState& state,
                   ImplicitWork& work);

/// Flow of each component over a connection, positive into its first cell, from the values that the last
/// assembly has left: surface volumes a day, dissolved gas with the gas.
std::array<double, 3> connectionFlows(const ImplicitConnection& connection, const ImplicitWork& work);

}  // namespace kvr
