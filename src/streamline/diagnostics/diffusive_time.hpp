#pragma once

#include "fluid/tables.hpp"
#include "pressure/records/cell_state.hpp"

#include <string_view>

namespace kvr {

/// Directions a pressure front may take: 3, 2, or 1 on a row of cells.
int diffusiveDimensions(std::string_view gridDimensionality);

/// What a step of length L (ft) through a cell adds to the diffusive time of flight:
///   t^2 0.5 / D,  t = L / sqrt((k/144) / (phi0 ct (So muo + Sw muw) r))
/// `resistance` phi0 ct (So muo + Sw muw) r in cp/psi, k in md, D 1 to 3. 0 where nothing is compressible.
double diffusiveStep(double length, double permeability, double resistance, int dimensions);

/// The resistance of a cell. `porosity` is the initial one; ct sums the rock term and the
/// saturation-weighted compressibilities, each a difference over 0.0001 psi, oil at its own bubble point.
double diffusiveResistance(const FluidTables& fluids, const CellState& state, CellId cell, double porosity);

}  // namespace kvr
