#pragma once

#include "fluid/depth_table.hpp"
#include "fluid/initial_conditions.hpp"
#include "fluid/tables.hpp"
#include "model/grid.hpp"

#include <array>

namespace kvr {

/// A saturation as a function of capillary pressure: both columns ordered so that the pressure rises.
struct CapillaryInverse {
    Column pressure;    // psi
    Column saturation;  // at that pressure
};

/// The two curves of a saturation region.
struct RegionInverse {
    CapillaryInverse water;
    CapillaryInverse gas;
};

struct PhasePressures {
    double oil = 0.0, water = 0.0, gas = 0.0;  // psia
};

RegionInverse invert(const SaturationTable& table);

PhasePressures pressuresAt(const InitDepthTable& rows, double depth);

/// What one cell sees: its table, the factor of its capillary pressures (0: none), and the columns.
struct CellView {
    const SaturationTable& table;
    const RegionInverse& inverse;
    double pcowFactor = 0.0;
    double pcogFactor = 0.0;
    double depth = 0.0;  // ft
    PhasePressures columns;
};

/// Sg by its capillary curve, or without one by the contact: the most above, the least below.
double gasSaturation(const CellView& cell, const InitDepthTable& rows);

/// Saturations and oil pressure that stand at one depth, or on the mean over a cell.
struct DepthState {
    double Sw = 0.0, Sg = 0.0;
    double pressure = 0.0;  // psia
};

/// The state of a cell between two depths: that of its centre, or the mean over level slices of equal height,
/// each at its middle.
DepthState meanState(CellView cell, const InitDepthTable& rows, bool hasGas, std::array<double, 2> depths,
                     CellSlices slices);

/// Shallowest and deepest corner of a cell, ft.
std::array<double, 2> depthRange(const GridModel& grid, CellId cell);

}  // namespace kvr
