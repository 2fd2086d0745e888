#include "fluid/components/viscosity.hpp"

#include "base/constants.hpp"

#include <cmath>

namespace kvr {

namespace {

constexpr double RankinePerKelvin = 1.8;
constexpr double PsiPerAtmosphere = 14.696;
constexpr double BranchTemperature = 1.5;  // reduced
constexpr double BranchDensity = 0.18;     // reduced

/// Inverse viscosity 1/cp of the corresponding states: T in Rankine, P in psia, M in lb/lb-mole.
double inverseViscosity(double T, double P, double M) {
    const double pressure = std::cbrt(P / PsiPerAtmosphere);
    return std::pow(T / RankinePerKelvin, 1.0 / 6.0) / (std::sqrt(M) * pressure * pressure);
}

double densePolynomial(double r) {
    return 0.1023 + r * (0.023364 + r * (0.058533 + r * (-0.040758 + r * 0.0093324)));
}

struct MixtureSums {
    double fractions = 0.0, Tc = 0.0, Pc = 0.0, M = 0.0, Vc = 0.0;
    double dilute = 0.0, weight = 0.0;  // x mu sqrt(M) and x sqrt(M)
};

MixtureSums sumsOf(const ComponentSet& set, const Composition& x) {
    MixtureSums sums;
    for (int i = 0; i < set.count; ++i) {
        const double weight = x[i] * std::sqrt(set.Mw[i]);
        sums.fractions += x[i];
        sums.Tc += x[i] * set.Tc[i];
        sums.Pc += x[i] * set.Pc[i];
        sums.M += x[i] * set.Mw[i];
        sums.Vc += x[i] * set.Vc[i];
        sums.dilute += weight * diluteViscosity(set, i);
        sums.weight += weight;
    }
    return sums;
}

}  // namespace

double diluteViscosity(const ComponentSet& set, int i) {
    const double reduced = set.temperature / set.Tc[i];
    const double xi = inverseViscosity(set.Tc[i], set.Pc[i], set.Mw[i]);
    if (reduced <= BranchTemperature) return 0.00034 * std::pow(reduced, 0.94) / xi;
    return 0.0001778 * std::pow(4.58 * reduced - 1.67, 0.625) / xi;
}

double VIS_COMPS(const ComponentSet& set, double pressure, double Z, const Composition& x) {
    constexpr double Nothing = 1.0;  // cp
    if (set.temperature <= MachineEpsilon) return Nothing;
    const MixtureSums sums = sumsOf(set, x);
    if (sums.fractions < MachineEpsilon) return Nothing;
    const double dilute = sums.dilute / sums.weight;
    const double xi = inverseViscosity(sums.Tc, sums.Pc, sums.M);
    const double reduced = sums.Vc * pressure / (GasConstant * Z * set.temperature);
    if (reduced < BranchDensity) return dilute + 2.05 * reduced / (10000.0 * xi);
    const double Y = densePolynomial(reduced);
    return dilute + (Y * Y * Y * Y - 0.0001) / xi;
}

}  // namespace kvr
