#include "fluid/components/rachford_rice.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr int MostPasses = 200;
constexpr double FractionPrecision = 1e-15;

struct Value {
    double g, slope;  // slope by V, never above 0
};

Value rachfordRice(int count, const Composition& z, const Composition& K, double V) {
    Value sum{0.0, 0.0};
    for (int i = 0; i < count; ++i) {
        const double d = K[i] - 1.0;
        const double term = d / (1.0 + V * d);
        sum.g += z[i] * term;
        sum.slope -= z[i] * term * term;
    }
    return sum;
}

/// The root between two bounds: g falls from one to the other.
double rootBetween(int count, const Composition& z, const Composition& K, double low, double high,
                   double start) {
    double V = start > low && start < high ? start : 0.5 * (low + high);
    for (int pass = 0; pass < MostPasses; ++pass) {
        const Value at = rachfordRice(count, z, K, V);
        if (at.g > 0.0)
            low = V;
        else
            high = V;
        const double change = -at.g / at.slope;
        const double next = V + change;
        if (std::abs(change) <= FractionPrecision * std::max(1.0, std::abs(V))) break;
        V = next > low && next < high ? next : 0.5 * (low + high);
    }
    return V;
}

}  // namespace

double vapourFraction(int count, const Composition& z, const Composition& K, double start) {
    double atNone = 0.0, atAll = 0.0;
    for (int i = 0; i < count; ++i) {
        atNone += z[i] * (K[i] - 1.0);
        atAll += z[i] * (1.0 - 1.0 / K[i]);
    }
    if (!(atNone > 0.0)) return 0.0;
    if (!(atAll < 0.0)) return 1.0;
    return rootBetween(count, z, K, 0.0, 1.0, start);
}

bool negativeFlash(int count, const Composition& z, const Composition& K, double& V) {
    const auto [least, most] = std::minmax_element(K.begin(), K.begin() + count);
    if (!(*least < 1.0 && *most > 1.0)) return false;
    V = rootBetween(count, z, K, 1.0 / (1.0 - *most), 1.0 / (1.0 - *least), V);
    return true;
}

void splitFeed(int count, const Composition& z, const Composition& K, double V, Composition& x,
               Composition& y) {
    for (int i = 0; i < count; ++i) {
        x[i] = z[i] / (1.0 + V * (K[i] - 1.0));
        y[i] = K[i] * x[i];
    }
}

}  // namespace kvr
