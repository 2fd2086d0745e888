#include "optimization/equal_arrival.hpp"

#include "base/constants.hpp"

namespace kvr {

namespace {

constexpr double LateArrival = 2.0;  // means
constexpr double ThinShare = 0.01;   // of the mean flux of a pair

}  // namespace

std::vector<std::size_t> removeThinPairs(PairSet& set) {
    std::vector<std::size_t> thin;
    if (set.pairs.empty()) return thin;
    const double latest = LateArrival * set.time;
    const double least = ThinShare * set.flux / static_cast<double>(set.pairs.size());
    for (std::size_t n = 0; n < set.pairs.size(); ++n) {
        WellPair& pair = set.pairs[n];
        if (!(pair.time > latest && pair.flux < least)) continue;
        pair.time = 0.0;
        pair.flux = MachineEpsilon;
        thin.push_back(n);
    }
    return thin;
}

double meanArrival(const PairSet& set) {
    double flux = 0.0, sum = 0.0;
    for (const WellPair& pair : set.pairs) {
        if (!(pair.time > 0.0)) continue;
        flux += pair.flux;
        sum += pair.flux * pair.time;
    }
    return flux > 0.0 ? sum / flux : 0.0;
}

double arrivalVariance(const PairSet& set) {
    const double mean = meanArrival(set);
    if (!(mean > 0.0)) return 0.0;
    double flux = 0.0, sum = 0.0;
    for (const WellPair& pair : set.pairs) {
        if (!(pair.time > 0.0)) continue;
        const double off = pair.time / mean - 1.0;
        flux += pair.flux;
        sum += pair.flux * off * off;
    }
    return sum / flux;
}

}  // namespace kvr
