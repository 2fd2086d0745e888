#include "fluid/components/cubic.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kvr {

namespace {

constexpr double LeastRoot = 1e-6;
constexpr double DoubleRootLimit = 1e-10;  // |discriminant| of a double root
constexpr int MostNewtonSteps = 80;        // a triple root is approached by 2/3 a step
constexpr double RootPrecision = 4e-16;    // relative

struct Cubic {
    double c2, c1, c0;
};

Cubic pengRobinson(double A, double B) {
    return {B - 1.0, A - 2.0 * B - 3.0 * B * B, (B * B - (A - B)) * B};
}

double valueAt(const Cubic& f, double z) {
    return ((z + f.c2) * z + f.c1) * z + f.c0;
}

double slopeAt(const Cubic& f, double z) {
    return (3.0 * z + 2.0 * f.c2) * z + f.c1;
}

double curvatureAt(const Cubic& f, double z) {
    return 6.0 * z + 2.0 * f.c2;
}

struct Depressed {
    double p, q, discriminant;
};

Depressed depressed(const Cubic& f) {
    const double p = f.c1 / 3.0 - f.c2 * f.c2 / 9.0;
    const double q = 2.0 * f.c2 * f.c2 * f.c2 / 27.0 - f.c1 * f.c2 / 3.0 + f.c0;
    return {p, q, 4.0 * p * p * p + q * q};
}

CubicRoots threeRoots(const Cubic& f, const Depressed& d) {
    const double angle = d.q == 0.0 ? std::numbers::pi / 2.0 : std::atan2(std::sqrt(-d.discriminant), -d.q);
    const double s = 2.0 * std::sqrt(-d.p);
    return {-s * std::cos((angle - std::numbers::pi) / 3.0) - f.c2 / 3.0,
            s * std::cos(angle / 3.0) - f.c2 / 3.0};
}

CubicRoots doubleRoot(const Cubic& f, const Depressed& d) {
    const double u = std::cbrt(-0.5 * d.q);
    const double low = std::min(2.0 * u, -u), high = std::max(2.0 * u, -u);
    return {low - f.c2 / 3.0, high - f.c2 / 3.0};
}

/// u^3 takes the sign that does not cancel.
double oneRoot(const Cubic& f, const Depressed& d) {
    const double root = std::sqrt(d.discriminant);
    const double u = std::cbrt(d.q > 0.0 ? -0.5 * (root + d.q) : 0.5 * (root - d.q));
    return u - d.p / u - f.c2 / 3.0;
}

CubicRoots rootsOf(const Cubic& f, const Depressed& d) {
    if (std::abs(d.discriminant) <= DoubleRootLimit) return doubleRoot(f, d);
    if (d.discriminant < 0.0) return threeRoots(f, d);
    const double z = oneRoot(f, d);
    return {z, z};
}

/// Newton from a start on the outer side of the root, where it cannot pass it.
double refined(const Cubic& f, double z) {
    for (int step = 0; step < MostNewtonSteps; ++step) {
        const double slope = slopeAt(f, z);
        if (slope == 0.0) break;
        const double change = valueAt(f, z) / slope;
        z -= change;
        if (std::abs(change) <= RootPrecision * std::abs(z)) break;
    }
    return z;
}

/// Start for an outer root behind a turning point: the point itself with the step to the root of the parabola
/// there, twice over so that it lies outside.
double outsideOf(const Cubic& f, double turning, double side) {
    const double height = std::abs(valueAt(f, turning));
    const double curvature = std::max(std::abs(curvatureAt(f, turning)), 1e-300);
    const double parabola = std::sqrt(2.0 * height / curvature);
    return turning + side * std::min(2.0 * parabola, 2.0 * std::cbrt(height) + 1e-12);
}

/// Roots of a cubic whose discriminant is too near 0 for the closed form.
CubicRoots rootsByTurningPoints(const Cubic& f, const Depressed& d) {
    const double inflection = -f.c2 / 3.0;
    if (d.p >= 0.0) {
        const double side = valueAt(f, inflection) > 0.0 ? -1.0 : 1.0;
        const double z =
            refined(f, inflection + side * (std::cbrt(std::abs(valueAt(f, inflection))) + 1e-12));
        return {z, z};
    }
    const double halfWidth = std::sqrt(-d.p);
    const double low = inflection - halfWidth, high = inflection + halfWidth;
    const bool isLowCrossed = valueAt(f, low) > 0.0, isHighCrossed = valueAt(f, high) < 0.0;
    const double largest = refined(f, outsideOf(f, high, 1.0));
    const double smallest = refined(f, outsideOf(f, low, -1.0));
    if (!isLowCrossed) return {largest, largest};
    if (!isHighCrossed) return {smallest, smallest};
    return {smallest, largest};
}

}  // namespace

CubicRoots closedFormRoots(double A, double B) {
    const Cubic f = pengRobinson(A, B);
    CubicRoots roots = rootsOf(f, depressed(f));
    roots.liquid = std::max(roots.liquid, LeastRoot);
    roots.vapour = std::max(roots.vapour, LeastRoot);
    return roots;
}

CubicRoots fluidRoots(double A, double B) {
    const Cubic f = pengRobinson(A, B);
    const Depressed d = depressed(f);
    CubicRoots roots;
    if (std::abs(d.discriminant) <= DoubleRootLimit) {
        roots = rootsByTurningPoints(f, d);
    } else {
        const CubicRoots start = rootsOf(f, d);
        roots.vapour = refined(f, start.vapour);
        roots.liquid = start.liquid == start.vapour ? roots.vapour : refined(f, start.liquid);
    }
    if (roots.liquid <= B) roots.liquid = roots.vapour;
    return roots;
}

RootSlopes rootSlopes(double A, double B, double pressure, double Z) {
    const double byA = Z - B;
    const double byB = Z * Z - (2.0 + 6.0 * B) * Z - A + 2.0 * B + 3.0 * B * B;
    const double byZ = 3.0 * Z * Z + 2.0 * (B - 1.0) * Z + A - 2.0 * B - 3.0 * B * B;
    const double dA = A / pressure, dB = B / pressure;
    const double first = -(byA * dA + byB * dB) / byZ;
    // d2F/dP2 = 0 along the root; F is linear in A, so that FAA is none.
    const double fZZ = 6.0 * Z + 2.0 * (B - 1.0);
    const double fBB = -6.0 * Z + 2.0 + 6.0 * B;
    const double fZA = 1.0, fZB = 2.0 * Z - 2.0 - 6.0 * B, fAB = -1.0;
    const double mixed =
        fZZ * first * first + fBB * dB * dB + 2.0 * fAB * dA * dB + 2.0 * first * (fZA * dA + fZB * dB);
    return {first, -mixed / byZ};
}

}  // namespace kvr
