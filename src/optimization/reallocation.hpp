#pragma once

#include <span>
#include <vector>

namespace kvr {

/// Numbers of WFOOPT that bound a change.
struct ChangeLimits {
    double emin = 0.0, emax = 1.0;     // efficiencies at which the change is full
    double alpha = 2.0;                // power
    double wmin = -0.25, wmax = 25.0;  // largest decrease and increase of a rate, as signed fractions
};

/// Relative change w of the flow of a pair of efficiency e, the mean of the field being `mean`:
///   e <= mean: w = max(wmin, d wmin), d = ((mean - e)/(mean - emin))^alpha
///   e >  mean: w = min(wmax, d wmax), d = ((e - mean)/(emax - mean))^alpha
/// 0 where |1 - e/mean| < 0.001 or mean < 0.001; d is 1 where its divisor is not above 0. A pair far above
/// the mean is meant to go up several times: the balance of totals takes that back.
double efficiencyChange(double e, double mean, const ChangeLimits& limits);

/// Relative change of the flow of a pair by its arrival time, which goes as one over the flow:
///   w = time/mean - 1, between wmin and wmax; 0 where there is no time
double arrivalChange(double time, double mean, const ChangeLimits& limits);

/// A rate shared out by allocation factors: rate * factor / sum of factors; all 0 where these are.
std::vector<double> pairFlows(double rate, std::span<const double> factors);

/// The changes cannot change anything: neither a decrease nor an increase is left by the limits.
bool allowsNothing(const ChangeLimits& limits);

}  // namespace kvr
