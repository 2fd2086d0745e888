#pragma once

#include <vector>

namespace kvr {

/// A rate that is to share in a total, all in one unit, 0 or above.
struct SharedRate {
    double wanted = 0.0;             // before the balance
    double least = 0.0, most = 0.0;  // bounds; most wins where they cross
    double weight = 1.0;             // what one unit of it counts in the total
    double rate = 0.0;               // result
};

/// One scale for all wanted rates, each kept between its bounds, so that they sum up to `total`:
///   sum of weight * clamp(scale * wanted, least, most) = total
/// What the total lacks where the bounds leave no such scale (below 0: what it has too much); the rates then
/// all stand at the nearer bound. Rates without a wanted one stand at their least.
double balanceRates(double total, std::vector<SharedRate>& rates);

}  // namespace kvr
