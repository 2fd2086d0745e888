#pragma once

#include "fluid/components/component_set.hpp"

namespace kvr {

/// The equation of state of one composition at a pressure.
struct EosMixture {
    double pressure = 0.0;                // psia
    double aMix = 0.0, bMix = 0.0;        // psia ft6/lb-mole2, ft3/lb-mole
    double A = 0.0, B = 0.0;              // a P/(RT)^2, b P/(RT)
    double zLiquid = 1.0, zVapour = 1.0;  // smallest and largest root
    Composition bRatio{};                 // b_i / bMix
    Composition aTerm{};                  // 2 sum_j x_j a_ij / aMix
};

/// Mixes a and b over the mole fractions x and solves the cubic.
void PR_EOS(const ComponentSet& set, const Composition& x, double pressure, EosMixture& mixture);

/// ln of the fugacity coefficients at a root Z:
///   (Z - 1) b_i/b - ln(Z - B) - A/(2 sqrt2 B) ln((Z + (1 + sqrt2) B)/(Z + (1 - sqrt2) B)) (aTerm_i - b_i/b)
/// A, B and the arguments of the logarithms are held at 1e-10 or above.
void fugacityCoefficients(const ComponentSet& set, const EosMixture& mixture, double Z, Composition& lnPhi);

/// n d(lnPhi_i)/dn_j at fixed T and P, n_j the moles of component j and n their sum; symmetric.
void fugacitySlopes(const ComponentSet& set, const EosMixture& mixture, const Composition& x, double Z,
                    ComponentMatrix& slopes);

/// The root with the lower Gibbs energy.
double stableRoot(const EosMixture& mixture);

/// Share of the volume that the co-volumes of the molecules fill, B/Z: above in a liquid, below in a vapour.
inline double packing(const EosMixture& mixture, double Z) {
    return mixture.B / Z;
}

/// lb-mole/ft3 at a root Z.
inline double molarDensity(const ComponentSet& set, double pressure, double Z) {
    return pressure / (Z * GasConstant * set.temperature);
}

/// lb/lb-mole.
double molarMass(const ComponentSet& set, const Composition& x);

}  // namespace kvr
