#pragma once

#include "base/console.hpp"
#include "fluid/initial_conditions.hpp"
#include "fluid/tables.hpp"
#include "model/grid.hpp"

#include <functional>

namespace kvr {

/// Phase pressures in hydrostatic balance by depth, 20 rows a layer and one more, equally spaced from the
/// shallowest to the deepest corner of the grid.
struct InitDepthTable {
    Column Depth;                            // ft, rising
    Column PressureO, PressureW, PressureG;  // psia; of a phase that the run does not have: the oil's
    Column RsDepth, RsValue;                 // ft, dimensionless: Rs that the oil would like to hold
    double WocDepth = 0.0;                   // ft; contacts as used: an absent phase has none in the grid
    double GocDepth = 0.0;
};

/// Integrates the columns from the datum, midpoint density, each row by a fixed point to 1e-5 psi. Oil runs
/// from the datum to both contacts; water starts at the water-oil contact and gas at the gas-oil contact
/// with the oil pressure there. A datum above the gas-oil or below the water-oil contact belongs to that
/// phase, which is walked to its contact first. Without an Rs table the oil is saturated at the gas-oil
/// contact. A column that does not settle in 1000 passes stops the run.
InitDepthTable buildDepthTable(const Console& console, const GridModel& grid, const FluidTables& tables,
                               const Equilibrium& initial, bool hasWater);

/// lb/ft3 of a phase at a depth (ft) and pressure (psia).
enum class ColumnPhase { Oil, Water, Gas };
using ColumnDensity = std::function<double(ColumnPhase, double depth, double pressure)>;

/// The same columns with densities from anywhere; Rs stays empty. A row that does not settle keeps the
/// pressure it has reached, and `isSettled` is false; one that has no pressure stops the run.
InitDepthTable buildColumns(const Console& console, const GridModel& grid, const ColumnDensity& density,
                            const Equilibrium& initial, bool hasWater, bool& isSettled);

/// Rs that the oil would like to hold at a depth.
double rsAtDepth(const InitDepthTable& rows, double depth);

/// Bubble point that the oil has at a depth and pressure: by its Rs, capped by the pressure.
double bubblePointAtDepth(const FluidTables& tables, const InitDepthTable& rows, double depth,
                          double pressure);

}  // namespace kvr
