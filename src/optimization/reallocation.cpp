#include "optimization/reallocation.hpp"

#include "base/constants.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace kvr {

namespace {

constexpr double EvenEnough = 1e-3;       // of the mean, by which an efficiency is the mean
constexpr double LeastEfficiency = 1e-3;  // of the field; below it nothing is left to be shifted

double power(double above, double span, double alpha) {
    return span > 0.0 ? std::pow(above / span, alpha) : 1.0;
}

}  // namespace

double efficiencyChange(double e, double mean, const ChangeLimits& limits) {
    if (mean < LeastEfficiency || std::abs(1.0 - e / (mean + MachineEpsilon)) < EvenEnough) return 0.0;
    if (e <= mean) {
        const double d = power(mean - e, mean - limits.emin, limits.alpha);
        return std::max(limits.wmin, d * limits.wmin);
    }
    const double d = power(e - mean, limits.emax - mean, limits.alpha);
    return std::min(limits.wmax, d * limits.wmax);
}

double arrivalChange(double time, double mean, const ChangeLimits& limits) {
    if (!(time > 0.0) || !(mean > 0.0)) return 0.0;
    return std::clamp(time / mean - 1.0, std::min(limits.wmin, 0.0), std::max(limits.wmax, 0.0));
}

std::vector<double> pairFlows(double rate, std::span<const double> factors) {
    std::vector<double> flows(factors.size(), 0.0);
    const double sum = std::accumulate(factors.begin(), factors.end(), 0.0);
    if (!(sum > 0.0)) return flows;
    for (std::size_t n = 0; n < factors.size(); ++n) flows[n] = rate * factors[n] / sum;
    return flows;
}

bool allowsNothing(const ChangeLimits& limits) {
    return !(limits.wmin < -MachineEpsilon) && !(limits.wmax > MachineEpsilon);
}

}  // namespace kvr
