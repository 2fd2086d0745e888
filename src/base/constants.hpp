#pragma once

/// Numbers that several subsystems share. Each stands here once, with its unit and origin.
namespace kvr {

/// Darcy constant for md, ft, cp, psi and reservoir barrels a day.
inline constexpr double DarcyConstant = 0.00112771;

/// Darcy constant in radial form, 2 pi * DarcyConstant, to the last bit.
inline constexpr double WellIndexConstant = 0.007085610902759491;

/// ft3 per barrel. The short form is required: all in-place figures are built on it.
inline constexpr double CubicFeetPerBarrel = 5.614583;

/// Double machine epsilon, used as the guard of divisions and as "no amount".
inline constexpr double MachineEpsilon = 2.220446049250313e-16;

/// Smallest normal double: "nothing at all" for sums that are divided by.
inline constexpr double SmallestNormal = 2.2250738585072014e-308;

/// psia; pressure at which surface volumes are quoted and to which look-ups fall back.
inline constexpr double StandardPressure = 14.6;

/// Deck Mscf/stb = this * (surface barrel of gas per stb); deck rb/Mscf * this = rb per surface barrel.
inline constexpr double GasRatioFactor = 0.005614583;

/// lb/ft3 * ft to psi.
inline constexpr double SquareInchesPerSquareFoot = 144.0;

/// Metres in a foot, exact.
inline constexpr double MetresPerFoot = 0.3048;

/// A fraction as it is shown.
inline constexpr double Percent = 100.0;

/// days; two times closer than this are the same time.
inline constexpr double TimeTolerance = 1e-10;

/// Difference of pressure and bubble point, psi, below which oil counts as saturated.
inline constexpr double SaturationPressureTolerance = 1e-8;

}  // namespace kvr
