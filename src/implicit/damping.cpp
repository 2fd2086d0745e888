#include "implicit/damping.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double PressureScale = 100.0;  // psi that weigh as much as the whole range of a saturation
constexpr double RsScale = 100.0;        // surface barrels per stb, the same
constexpr double LeastWayBack = 0.5, MostWayBack = 3.0;  // of the step before
constexpr double Progress = 0.7;                         // of the largest value, within two steps
constexpr double Fall = 0.7, Growth = 1.3, LeastShare = 0.3;

struct LargestValue {
    std::size_t place = 0;
    double size = 0.0;  // scaled
};

double scaleAt(std::size_t place, std::size_t blockSize, std::span<const ThirdUnknown> unknown) {
    if (place % blockSize == PressurePlace) return PressureScale;
    const bool isRs =
        place % blockSize == GasPlace && unknown[place / blockSize] == ThirdUnknown::SolutionGas;
    return isRs ? RsScale : 1.0;
}

LargestValue largestOf(std::span<const double> step, std::size_t blockSize,
                       std::span<const ThirdUnknown> unknown) {
    LargestValue largest;
    for (std::size_t n = 0; n < step.size(); ++n) {
        const double size = std::abs(step[n]) / scaleAt(n, blockSize, unknown);
        if (size > largest.size) largest = {n, size};
    }
    return largest;
}

bool goesBack(double now, double before) {
    return now * before < 0.0 && std::abs(now) > LeastWayBack * std::abs(before) &&
           std::abs(now) < MostWayBack * std::abs(before);
}

}  // namespace

void resetDamping(NewtonDamping& damping) {
    damping.last.clear();
    damping.largest = damping.largestBefore = 0.0;
    damping.share = 1.0;
}

double dampedShare(std::span<const double> step, std::size_t blockSize, std::span<const ThirdUnknown> unknown,
                   NewtonDamping& damping) {
    const LargestValue largest = largestOf(step, blockSize, unknown);
    const bool stuck = damping.last.size() == step.size() &&
                       goesBack(step[largest.place], damping.last[largest.place]) &&
                       damping.largestBefore > 0.0 && largest.size > Progress * damping.largestBefore;
    damping.share =
        stuck ? std::max(LeastShare, Fall * damping.share) : std::min(1.0, Growth * damping.share);
    damping.last.assign(step.begin(), step.end());
    damping.largestBefore = damping.largest;
    damping.largest = largest.size;
    return damping.share;
}

}  // namespace kvr
