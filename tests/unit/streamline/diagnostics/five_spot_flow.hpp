#pragma once

#include <complex>
#include <numbers>

namespace kvr::samples {

/// Exact flow in a quarter of a repeated five-spot on the unit square, injector in the origin, producer in
/// (1, 1), unit pore volume and rate: the sum over all image wells of +-2/pi / (z - z_well), rows of images
/// along x summed to cotangents, rows along y added from the middle outward with producers paired both ways.
inline std::complex<double> fiveSpotVelocity(std::complex<double> z) {
    constexpr int Rows = 3;  // the next row adds less than 1e-8
    constexpr double Pi = std::numbers::pi;
    constexpr std::complex<double> I{0.0, 1.0};
    const auto row = [&](std::complex<double> from) { return 0.5 * Pi / std::tan(0.5 * Pi * from); };
    std::complex<double> w = 0.0;
    for (int n = -Rows; n <= Rows; ++n)
        w += row(z - 2.0 * n * I) -
             0.5 * (row(z - 1.0 - (2.0 * n + 1.0) * I) + row(z - 1.0 - (2.0 * n - 1.0) * I));
    return std::conj(2.0 / Pi * w);
}

/// Time from z to the well that lies in direction `sign` (1 with the flow, -1 against it): fourth-order
/// Runge-Kutta along the line, and radial flow at the rate of a whole well for the last stretch.
inline double timeToWell(std::complex<double> z, double sign) {
    constexpr double Step = 0.01;
    constexpr double Near = 0.02;
    constexpr double WholeWell = 4.0;
    const std::complex<double> well = sign > 0.0 ? std::complex<double>{1.0, 1.0} : 0.0;
    const auto direction = [&](std::complex<double> at) {
        const std::complex<double> v = fiveSpotVelocity(at);
        return sign * v / std::abs(v);
    };
    double time = 0.0;
    while (std::abs(z - well) > Near) {
        const std::complex<double> a = direction(z);
        const std::complex<double> b = direction(z + 0.5 * Step * a);
        const std::complex<double> c = direction(z + 0.5 * Step * b);
        const std::complex<double> d = direction(z + Step * c);
        const std::complex<double> next = z + Step / 6.0 * (a + 2.0 * b + 2.0 * c + d);
        const double slow[] = {1.0 / std::abs(fiveSpotVelocity(z)),
                               1.0 / std::abs(fiveSpotVelocity(z + 0.5 * Step * b)),
                               1.0 / std::abs(fiveSpotVelocity(next))};
        time += Step / 6.0 * (slow[0] + 4.0 * slow[1] + slow[2]);
        z = next;
    }
    const double rest = std::abs(z - well);
    return time + std::numbers::pi * rest * rest / WholeWell;
}

}  // namespace kvr::samples
