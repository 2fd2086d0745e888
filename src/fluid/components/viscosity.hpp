#pragma once

#include "fluid/components/component_set.hpp"

namespace kvr {

/// Viscosity in cp of a phase of compressibility factor Z (Lohrenz, Bray and Clark 1964): dilute gas of the
/// components by Stiel and Thodos (1961), mixed by x sqrt(MW), and the excess of a dense fluid
///   mu_low + (Y^4 - 1e-4)/xi,  Y a polynomial of the reduced density rho_r = V_mix P/(R Z T),
/// below rho_r = 0.18 the straight line 2.05e-4 rho_r/xi. 1.0 where the temperature or the sum of the
/// fractions is nothing.
double VIS_COMPS(const ComponentSet& set, double pressure, double Z, const Composition& x);

}  // namespace kvr
