#include "optimization/rate_plan.hpp"

#include "base/index.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double SmallFieldChange = 0.01;  // of a field sum

double relativeChange(double before, double after) {
    const double change = std::abs(after - before);
    return before > 0.0 ? change / before : change > 0.0 ? 1.0 : 0.0;
}

}  // namespace

std::vector<WellDemand> wellDemands(std::size_t wells, std::span<const WellPair> pairs,
                                    std::span<const double> changes) {
    std::vector<WellDemand> demands(wells);
    std::vector<std::vector<double>> factors(wells), multipliers(wells);
    for (std::size_t n = 0; n < pairs.size(); ++n) {
        for (const int well : {pairs[n].injector, pairs[n].producer}) {
            if (well < 1 || at(well) > wells) continue;
            factors[at(well) - 1].push_back(pairs[n].flux);
            multipliers[at(well) - 1].push_back(1.0 + changes[n]);
        }
    }
    for (std::size_t w = 0; w < wells; ++w) {
        const std::vector<double> flows = pairFlows(1.0, factors[w]);
        double sum = 0.0, changed = 0.0;
        for (std::size_t n = 0; n < flows.size(); ++n) {
            sum += flows[n];
            changed += flows[n] * multipliers[w][n];
        }
        if (sum > 0.0) demands[w] = {changed / sum, true};
    }
    return demands;
}

ExpectedOutput expectedOutput(std::span<const WellPair> pairs, std::span<const double> changes,
                              std::span<const double> factors) {
    std::vector<double> flux(factors.size(), 0.0), changed(factors.size(), 0.0), oil(factors.size(), 0.0);
    for (std::size_t n = 0; n < pairs.size(); ++n) {
        const std::size_t p = at(pairs[n].producer) - 1;
        if (pairs[n].producer < 1 || p >= factors.size()) continue;
        flux[p] += pairs[n].flux;
        changed[p] += pairs[n].flux * (1.0 + changes[n]);
        oil[p] += pairs[n].flux * (1.0 + changes[n]) * efficiency(pairs[n]);
    }
    ExpectedOutput sum;
    for (std::size_t p = 0; p < factors.size(); ++p) {
        if (!(changed[p] > 0.0)) continue;
        const double share = oil[p] / changed[p];
        sum.oil += factors[p] * flux[p] * share;
        sum.water += factors[p] * flux[p] * (1.0 - share);
    }
    return sum;
}

double changeNorm(std::span<const double> factors) {
    if (factors.empty()) return 0.0;
    double sum = 0.0;
    for (const double factor : factors) sum += (factor - 1.0) * (factor - 1.0);
    return std::sqrt(sum / static_cast<double>(factors.size()));
}

bool staysAsItIs(double norm, double tolerance, const ExpectedOutput& before, const ExpectedOutput& after) {
    if (norm < tolerance) return true;
    return relativeChange(before.oil, after.oil) < SmallFieldChange &&
           relativeChange(before.water, after.water) < SmallFieldChange;
}

double valueEfficiency(const WellPair& pair, double oil, double water, double gas) {
    if (!(oil > water) || !(pair.counted > 0.0)) return 0.0;
    const double value =
        (pair.surfaceOil * oil + pair.surfaceWater * water + pair.surfaceGas * gas) / pair.counted;
    return std::clamp((value - water) / (oil - water), 0.0, 1.0);
}

}  // namespace kvr
