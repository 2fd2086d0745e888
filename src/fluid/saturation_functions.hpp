#pragma once

#include "fluid/tables.hpp"

namespace kvr {

// Look-ups in the saturation tables of a region (1-based SATNUM). Relative permeabilities are clipped at
// 0 from below; outside a table the end segment is extended. Capillary pressures are psi before JFactor.

double KrwFn(const FluidTables& tables, double sw, int region);
double KrowFn(const FluidTables& tables, double sw, int region);
double KrgFn(const FluidTables& tables, double sg, int region);
double KrogFn(const FluidTables& tables, double sg, int region);
/// 0 when the capillary switch (span of region 1) is off.
double PcowFn(const FluidTables& tables, double sw, int region);
double PcogFn(const FluidTables& tables, double sg, int region);
/// Three-phase oil relative permeability, Stone's second model, clipped to 0..1.
double Kro3Fn(const FluidTables& tables, double sw, double sg, int region);

/// Differences with step 1e-6, backward at the top of the range.
double KrwSlope(const FluidTables& tables, double sw, int region);
double KrowSlope(const FluidTables& tables, double sw, int region);
double KrgSlope(const FluidTables& tables, double sg, int region);
double KrogSlope(const FluidTables& tables, double sg, int region);
double PcowSlope(const FluidTables& tables, double sw, int region);
double PcogSlope(const FluidTables& tables, double sg, int region);

}  // namespace kvr
