#include "streamline/sensitivities/classic_form.hpp"

#include "base/constants.hpp"

#include <algorithm>

namespace kvr {

namespace {

/// Of the half lengths and permeabilities of a segment (a, k) and its neighbour (n, kn).
double harmonicTerm(double a, double n, double k, double kn, double D) {
    k *= DarcyConstant;
    kn *= DarcyConstant;
    const double sum = n * k + a * kn;
    const double numerator = 2.0 * a * kn * (a * kn + 2.0 * k * n) + 2.0 * n * k * k * n;
    return (a + n) / D * numerator * a / ((2.0 * a + 2.0 * n) * k * sum * sum);
}

}  // namespace

double rateRatio(double wellRate, double lineFlux, double lines) {
    const double ratio = lineFlux > 0.0 ? wellRate / lineFlux : 1.0;
    return std::max(1.0, std::min(ratio, lines));
}

double travelTimeTerm(double deltaTof, double saturation, double rateRatio) {
    return deltaTof / saturation / rateRatio;
}

double forwardTerm(const SegmentNeighbourhood& s) {
    return s.hasNext ? harmonicTerm(s.a, s.c, s.k, s.kf, s.D) : 0.0;
}

double backwardTerm(const SegmentNeighbourhood& s) {
    return s.hasBefore ? harmonicTerm(s.a, s.b, s.k, s.kb, s.D) : 0.0;
}

double classicShare(bool pressureControlled, double part, double whole) {
    if (pressureControlled) return 1.0;
    return whole > 0.0 ? part / whole : 0.0;
}

}  // namespace kvr
