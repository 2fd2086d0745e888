#pragma once

#include "optimization/pair_efficiency.hpp"

#include <vector>

namespace kvr {

inline constexpr double HugeTime = 10.0;  // means of the time of flight, above which a line does not count

/// Takes thin connections out: pairs that arrive later than twice the mean and whose flux is below a
/// hundredth of the total flux over the number of pairs. Their time becomes 0, their flux
/// 2.220446049250313e-16. The places of these pairs, in their order.
std::vector<std::size_t> removeThinPairs(PairSet& set);

/// Mean of the arrival times over the flux of the pairs that are left; 0 where none is.
double meanArrival(const PairSet& set);

/// Variance of the arrival times over the flux, as a share of the squared mean; 0 where none is left.
double arrivalVariance(const PairSet& set);

}  // namespace kvr
