#pragma once

namespace kvr {

/// Smallest and largest compressibility factor of the Peng-Robinson cubic; equal where it has one root.
struct CubicRoots {
    double liquid = 1.0;
    double vapour = 1.0;
};

/// Closed form of  Z^3 + (B - 1) Z^2 + (A - 2B - 3B^2) Z - (A - B - B^2) B = 0:  three roots by angles, one
/// by Cardano, a double root where the discriminant is within 1e-10 of 0. Held at 1e-6 or above.
CubicRoots closedFormRoots(double A, double B);

/// The roots to the last digits, by Newton from the closed form, and from the turning points of the cubic
/// where the closed form took a double root: near a triple one that is off by up to 1e-2. A smallest root
/// that is no larger than B is no volume of a fluid: it gives way to the largest.
CubicRoots fluidRoots(double A, double B);

/// dZ/dP and d2Z/dP2 at fixed composition and temperature, from the cubic; A and B go with P.
struct RootSlopes {
    double first = 0.0;   // 1/psi
    double second = 0.0;  // 1/psi2
};
RootSlopes rootSlopes(double A, double B, double pressure, double Z);

}  // namespace kvr
