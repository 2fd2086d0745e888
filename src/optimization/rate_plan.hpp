#pragma once

#include "deck/options.hpp"
#include "optimization/pair_efficiency.hpp"
#include "optimization/reallocation.hpp"

#include <span>
#include <string>
#include <vector>

namespace kvr {

/// What the pairs of one well ask for together.
struct WellDemand {
    double factor = 1.0;  // of the well's rate
    bool joined = false;  // a pair has the well
};

/// For each well the sum of its pair flows behind the changes, over its rate: the rate is shared out by the
/// fluxes of its pairs and each share taken (1 + change) times. A well without a pair keeps its rate.
std::vector<WellDemand> wellDemands(std::size_t wells, std::span<const WellPair> pairs,
                                    std::span<const double> changes);

/// Oil and water that producers are expected to give, rb/day: each its new flux, made up of what its pairs
/// let out, in the proportion of their changed flows. `factors`: of the wells' rates, by well number less 1.
struct ExpectedOutput {
    double oil = 0.0, water = 0.0;
};
ExpectedOutput expectedOutput(std::span<const WellPair> pairs, std::span<const double> changes,
                              std::span<const double> factors);

/// Root of the mean squared relative change of the rates; 0 of none.
double changeNorm(std::span<const double> factors);

/// Rates stay where next to nothing would change: the norm is below the tolerance, or neither field sum
/// changes by a hundredth.
bool staysAsItIs(double norm, double tolerance, const ExpectedOutput& before, const ExpectedOutput& after);

/// Efficiency of a pair by value: 0 where it lets out water alone, 1 where it lets out a barrel of stock-tank
/// oil for each reservoir barrel, between the two by the $ of what it lets out; within 0..1. 0 where oil is
/// worth no more than water.
double valueEfficiency(const WellPair& pair, double oil, double water, double gas);

}  // namespace kvr
