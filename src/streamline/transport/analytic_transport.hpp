#pragma once

#include "fluid/tables.hpp"
#include "streamline/transport/solver_line.hpp"

#include <vector>

namespace kvr {

/// Analytical water flood (Buckley and Leverett 1942, front by Welge's tangent) of region 1, without gas.
/// Row k of 0..Np: saturation, fractional flow, slope from the row before, tangency measure.
struct AnalyticTable {
    std::vector<double> saturation, flow, slope, tangency;
    int front = 0;                // highest row whose slope is not below its chord from connate water
    double waterViscosity = 1.0;  // cp, at the reference pressure
    double oilViscosity = 1.0;    // cp
};

/// Fractional flow of water: 0 up to connate water, 1 from 1 - ResidualSo - CriticalSg on, between them
/// (krw/muw) over the total mobility.
double analyticFlow(const FluidTables& fluids, const AnalyticTable& table, double sw);

/// `points` intervals between connate water and residual oil; viscosities held for the step.
void buildAnalyticTable(const FluidTables& fluids, int points, double oilViscosity, AnalyticTable& table);

/// The profile at unit time: saturations falling from the inlet are listed from the front backward, each
/// with its time of flight per day since the start (positions fall) and the water beyond connate that stands
/// between it and the front, per unit of flow: beyond = integral of S - Swc over the times of flight.
struct AnalyticProfile {
    std::vector<double> saturation, position, beyond;
    double content = 0.0;  // the same of all of the profile, from the inlet on
};

/// Front saturation and every row of the water table above it. Positions are slopes by difference between
/// listed rows, as required, so they sharpen with the table.
void buildProfile(const FluidTables& fluids, const AnalyticTable& table, AnalyticProfile& profile);

/// Saturations of positions 1..N at `time` days since the start of the flood: connate water ahead of the
/// front, linear in time of flight between listed rows behind it, within connate water and residual oil.
///
/// What has passed a position in the step is what stands beyond it at its end less what stood there at its
/// begin, which no front can jump over. A profile listed by differences holds a little more or less water
/// than has come in, and everything that passes is scaled by this share, so that the inlet lets in what it
/// is given. Outlet fluxes are means over the step.
void advanceAnalytic(const FluidTables& fluids, const AnalyticProfile& profile, double step, double time,
                     SolverLine& line);

}  // namespace kvr
