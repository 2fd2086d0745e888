#pragma once

#include "base/console.hpp"
#include "fluid/tables.hpp"

namespace kvr {

/// Fills everything that follows from the given columns: row counts, reciprocals, the under-saturated
/// block, MaxRs, the inverse steps and end points of every region, the capillary switches and the
/// region-free set. Given: the pressure, FVF and viscosity columns (OilRs for live oil, else empty),
/// UnderRows (how many of the last oil rows stand behind the last Rs), the SWOF and SGOF columns of each
/// region with at least two rows. May be called again after a column has changed.
void finishTables(FluidTables& tables);

/// What follows from the columns of one saturation region: its searches and its end points.
void finishRegion(bool hasGas, SaturationTable& table);

/// The capillary switches, which `finishTables` sets by region 1, are on where any region has capillary
/// pressure.
void switchCapillarityByAllRegions(FluidTables& tables);

/// Completes what PROPS left open, with its lines: default tables for absent phases, densities,
/// reference pressures, water data; then finishTables and the dead-oil warning. `regionCount` saturation
/// regions are held afterwards at least.
void completeTables(const Console& console, int regionCount, FluidTables& tables);

}  // namespace kvr
