#pragma once

#include "fluid/tables.hpp"

namespace kvr {

// Pure property functions over finished tables. p, pb psia; results rb/stb, rb per surface barrel, cp,
// dimensionless Rs. None fails: outside a table the end segment is extended.

/// Oil formation volume factor; see the method notes for the under-saturated walk. 0 above the bubble
/// point of a live table without under-saturated rows.
double OilFvf(const FluidTables& tables, double p, double pb);
double OilViscosity(const FluidTables& tables, double p, double pb);
/// 1.0 without a gas phase.
double GasFvf(const FluidTables& tables, double p);
double GasViscosity(const FluidTables& tables, double p);
/// 0 for dead oil or fewer than two saturated rows.
double SolutionRs(const FluidTables& tables, double pb);
/// Inverse of SolutionRs.
double BubblePoint(const FluidTables& tables, double rs);
double WaterFvf(const FluidTables& tables, double p);
double WaterViscosity(const FluidTables& tables, double p);
/// Porosity at p is PORO * PoreFactor(p).
double PoreFactor(const FluidTables& tables, double p);

/// One-sided differences of the functions above, step 0.0001 psi.
double OilFvfSlope(const FluidTables& tables, double p, double pb);
double OilViscositySlope(const FluidTables& tables, double p, double pb);
double WaterFvfSlope(const FluidTables& tables, double p);
double WaterViscositySlope(const FluidTables& tables, double p);
double GasViscositySlope(const FluidTables& tables, double p);

}  // namespace kvr
