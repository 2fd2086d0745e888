#include "optimization/rate_balance.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

double clamped(double scale, const SharedRate& rate) {
    return std::min(rate.most, std::max(rate.least, scale * rate.wanted));
}

double sumAt(double scale, const std::vector<SharedRate>& rates) {
    double sum = 0.0;
    for (const SharedRate& rate : rates) sum += rate.weight * clamped(scale, rate);
    return sum;
}

/// Scales at which a rate leaves or reaches a bound, rising.
std::vector<double> corners(const std::vector<SharedRate>& rates) {
    std::vector<double> scales{0.0};
    for (const SharedRate& rate : rates) {
        if (!(rate.wanted > 0.0)) continue;
        scales.push_back(rate.least / rate.wanted);
        scales.push_back(rate.most / rate.wanted);
    }
    std::sort(scales.begin(), scales.end());
    return scales;
}

}  // namespace

double balanceRates(double total, std::vector<SharedRate>& rates) {
    const std::vector<double> scales = corners(rates);
    // The sum rises in straight pieces from corner to corner; the root lies in one of them.
    std::size_t n = 0;
    while (n + 1 < scales.size() && sumAt(scales[n + 1], rates) < total) ++n;
    double scale = scales[n];
    if (n + 1 < scales.size()) {
        const double low = sumAt(scales[n], rates), high = sumAt(scales[n + 1], rates);
        if (high > low)
            scale += (scales[n + 1] - scales[n]) * std::clamp((total - low) / (high - low), 0.0, 1.0);
    } else {
        scale = scales.back();
    }
    for (SharedRate& rate : rates) rate.rate = clamped(scale, rate);
    double sum = 0.0;
    for (const SharedRate& rate : rates) sum += rate.weight * rate.rate;
    const double missing = total - sum;
    return std::abs(missing) > 1e-12 * std::abs(total) ? missing : 0.0;
}

}  // namespace kvr
