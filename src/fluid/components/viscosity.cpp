#include "fluid/components/viscosity.hpp"

#include "base/constants.hpp"

#include <cmath>

namespace kvr {

namespace {

constexpr double BranchDensity = 0.18;  // reduced

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
        const double weight = x[i] * set.rootMw[i];
        sums.fractions += x[i];
        sums.Tc += x[i] * set.Tc[i];
        sums.Pc += x[i] * set.Pc[i];
        sums.M += x[i] * set.Mw[i];
        sums.Vc += x[i] * set.Vc[i];
        sums.dilute += weight * set.dilute[i];
        sums.weight += weight;
    }
    return sums;
}

}  // namespace

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
