#include "fluid/components/peng_robinson.hpp"

#include "fluid/components/cubic.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double TwiceRootTwo = 2.8284271247461903;
constexpr double LargeFactor = 2.414213562373095;     // 1 + sqrt 2
constexpr double SmallFactor = -0.41421356237309515;  // 1 - sqrt 2
constexpr double LeastArgument = 1e-10;

double held(double value) {
    return std::max(value, LeastArgument);
}

/// ln((Z + (1 + sqrt2) B)/(Z + (1 - sqrt2) B)).
double attractionLogarithm(double Z, double B) {
    return std::log((Z + LargeFactor * B) / held(Z + SmallFactor * B));
}

}  // namespace

void PR_EOS(const ComponentSet& set, const Composition& x, double pressure, EosMixture& mixture) {
    const int n = set.count;
    double a = 0.0, b = 0.0;
    for (int i = 0; i < n; ++i) {
        double sum = 0.0;
        for (int j = 0; j < n; ++j) sum += x[j] * set.cross[i][j];
        mixture.aTerm[i] = sum;
        a += x[i] * sum;
        b += x[i] * set.b[i];
    }
    const double twiceOverA = 2.0 / a, overB = 1.0 / b;
    for (int i = 0; i < n; ++i) {
        mixture.aTerm[i] *= twiceOverA;
        mixture.bRatio[i] = set.b[i] * overB;
    }
    const double energy = GasConstant * set.temperature;
    mixture.pressure = pressure;
    mixture.aMix = a;
    mixture.bMix = b;
    mixture.A = a * pressure / (energy * energy);
    mixture.B = b * pressure / energy;
    const CubicRoots roots = fluidRoots(mixture.A, mixture.B);
    mixture.zLiquid = roots.liquid;
    mixture.zVapour = roots.vapour;
}

void fugacityCoefficients(const ComponentSet& set, const EosMixture& mixture, double Z, Composition& lnPhi) {
    const double A = held(mixture.A), B = held(mixture.B);
    const double volumeTerm = std::log(held(Z - B));
    const double attraction = A / (TwiceRootTwo * B) * attractionLogarithm(Z, B);
    for (int i = 0; i < set.count; ++i)
        lnPhi[i] =
            (Z - 1.0) * mixture.bRatio[i] - volumeTerm - attraction * (mixture.aTerm[i] - mixture.bRatio[i]);
}

void fugacitySlopes(const ComponentSet& set, const EosMixture& mixture, const Composition& x, double Z,
                    ComponentMatrix& slopes) {
    const int n = set.count;
    const double energy = GasConstant * set.temperature;
    const double A = held(mixture.A), B = held(mixture.B);
    const double scale = 2.0 * mixture.pressure / (energy * energy * TwiceRootTwo * B);
    const double byZ = 3.0 * Z * Z + 2.0 * (B - 1.0) * Z + A - 2.0 * B - 3.0 * B * B;
    const double byA = Z - B;
    const double byB = Z * Z - (2.0 + 6.0 * B) * Z - A + 2.0 * B + 3.0 * B * B;
    const double logarithm = attractionLogarithm(Z, B);
    const double E = A / (TwiceRootTwo * B);
    const double overVolume = 1.0 / held(Z - B);
    const double overLarge = 1.0 / (Z + LargeFactor * B), overSmall = 1.0 / held(Z + SmallFactor * B);
    for (int j = 0; j < n; ++j) {
        // Slopes by mole fraction j taken as free: A goes with aTerm, B with bRatio.
        const double Aj = A * mixture.aTerm[j], beta = mixture.bRatio[j], Bj = B * beta;
        const double Zj = -(byA * Aj + byB * Bj) / byZ;
        const double logarithmSlope =
            (Zj + LargeFactor * Bj) * overLarge - (Zj + SmallFactor * Bj) * overSmall;
        const double volumeSlope = (Zj - Bj) * overVolume;
        for (int i = 0; i < n; ++i) {
            const double alpha = mixture.aTerm[i], own = mixture.bRatio[i];
            // E alpha_i = A_i/(c B), E beta_i = A B_i/(c B^2).
            const double attractionSlope =
                scale * set.cross[i][j] - E * alpha * beta - E * own * (mixture.aTerm[j] - 2.0 * beta);
            slopes[i][j] = Zj * own - (Z - 1.0) * own * beta - volumeSlope - attractionSlope * logarithm -
                           E * (alpha - own) * logarithmSlope;
        }
    }
    for (int i = 0; i < n; ++i) {
        double mean = 0.0;
        for (int k = 0; k < n; ++k) mean += x[k] * slopes[i][k];
        for (int j = 0; j < n; ++j) slopes[i][j] -= mean;
    }
}

double stableRoot(const EosMixture& mixture) {
    const double low = mixture.zLiquid, high = mixture.zVapour;
    if (low == high) return high;
    const double A = held(mixture.A), B = held(mixture.B);
    const double difference =
        (high - low) - std::log(held(high - B) / held(low - B)) -
        A / (TwiceRootTwo * B) * (attractionLogarithm(high, B) - attractionLogarithm(low, B));
    return difference > 0.0 ? low : high;
}

double molarMass(const ComponentSet& set, const Composition& x) {
    double mass = 0.0;
    for (int i = 0; i < set.count; ++i) mass += x[i] * set.Mw[i];
    return mass;
}

}  // namespace kvr
