#pragma once

#include "fluid/tables.hpp"

namespace kvr {

// Pure property functions over finished tables (fluid/table_checks). p, pb psia; results rb/stb, rb per
// surface barrel, cp, dimensionless Rs. None fails: outside a table the end segment is extended.

/// Oil formation volume factor. Dead oil: by pressure alone. Live oil: 1/b from the saturated rows at pb,
/// then up the under-saturated block by its steps, which starts at any pb; inside the last step 1/B is
/// linear in p. Below pb the first step is extended downward. A live table without under-saturated rows
/// gives 0 off the bubble point, one with fewer than two saturated rows 1.
double OilFvf(const FluidTables& tables, double p, double pb);
/// Oil viscosity by the same walk; the saturated value comes from the columns of 1/B and 1/(B mu).
double OilViscosity(const FluidTables& tables, double p, double pb);
/// 1.0 without a gas phase.
double GasFvf(const FluidTables& tables, double p);
double GasViscosity(const FluidTables& tables, double p);
/// 0 for dead oil or fewer than two saturated rows.
double SolutionRs(const FluidTables& tables, double pb);
/// Inverse of SolutionRs.
double BubblePoint(const FluidTables& tables, double rs);
/// FVF of water at the reference pressure over 1 + c (d + c d^2 / 2), d the pressure above the reference.
double WaterFvf(const FluidTables& tables, double p);
/// mu / (1 + Y + Y^2 / 2), Y = -viscosibility * d; constant for a viscosibility below 1e-10.
double WaterViscosity(const FluidTables& tables, double p);
/// Porosity at p is PORO * PoreFactor(p); 1 + c (d + c d^2 / 2).
double PoreFactor(const FluidTables& tables, double p);

/// Both oil properties with one search of the table; the same bits as the single functions.
struct OilProperties {
    double Bo = 1.0;
    double MuO = 1.0;
};
OilProperties oilProperties(const FluidTables& tables, double p, double pb);
/// The same for flow and storage, which cannot go on with nothing: where the table has no way off the
/// bubble point the values at pb stand.
OilProperties usableOilProperties(const FluidTables& tables, double p, double pb);
/// Both gas properties with one search; the same bits as the single functions.
struct GasProperties {
    double Bg = 1.0;
    double MuG = 1.0;
};
GasProperties gasProperties(const FluidTables& tables, double p);

/// Mass densities lb/ft3 at given properties; for numbers and for numbers with slopes.
template <class Number>
Number oilDensityAt(const FluidTables& tables, const Number& rs, const Number& bo) {
    return (rs * tables.gasDensity + tables.oilDensity) / bo;
}
template <class Number>
Number waterDensityAt(const FluidTables& tables, const Number& bw) {
    return tables.waterDensity / bw;
}
template <class Number>
Number gasDensityAt(const FluidTables& tables, const Number& bg) {
    return tables.gasDensity / bg;
}

/// One-sided differences of the functions above, step 0.0001 psi. The slope of oil moves p alone, or p and pb
/// together for live oil at its bubble point (the slope along the saturated curve).
double OilFvfSlope(const FluidTables& tables, double p, double pb);
double SolutionRsSlope(const FluidTables& tables, double pb);
double WaterFvfSlope(const FluidTables& tables, double p);
double WaterViscositySlope(const FluidTables& tables, double p);
double PoreFactorSlope(const FluidTables& tables, double p);

/// Slopes of usableOilProperties by the same differences, both properties with one walk each.
struct OilSlopes {
    double BoByP = 0.0, BoByPb = 0.0;    // 1/psi
    double MuOByP = 0.0, MuOByPb = 0.0;  // cp/psi
};
/// p and pb apart: the slopes of oil whose bubble point does not follow its pressure. `here` are the
/// properties at (p, pb).
OilSlopes oilSlopes(const FluidTables& tables, double p, double pb, const OilProperties& here);
/// Along the saturated curve, p and pb together: all of it stands in the slopes by p.
OilSlopes saturatedOilSlopes(const FluidTables& tables, double p, const OilProperties& here);
/// Slopes of gasProperties by p.
GasProperties gasSlopes(const FluidTables& tables, double p, const GasProperties& here);

/// Reservoir volume of surface rates at a pressure: Bw qw + Bo qo + Bg (qg - Rs qo), oil holding what gas it
/// came with, at most what it can, the rest free. A factor without a table is 1.
double reservoirVoidage(const FluidTables& tables, double p, double qo, double qw, double qg);
/// The same of oil that held `Rs` where it came from.
double reservoirVoidage(const FluidTables& tables, double p, double Rs, double qo, double qw, double qg);

}  // namespace kvr
