#pragma once

#include "streamline/diagnostics/pair_table.hpp"

#include <span>
#include <vector>

namespace kvr {

/// An injector and a producer that lines join.
struct WellPair {
    int injector = 0, producer = 0;  // 1-based wells
    double flux = 0.0;               // rb/day of all its lines
    double counted = 0.0;            // rb/day of the lines that count for the efficiency
    double oil = 0.0;                // rb/day of oil that these let out at the producer
    double surfaceOil = 0.0, surfaceWater = 0.0, surfaceGas = 0.0;  // the same, surface volume a day
    double time = 0.0;        // days from end to end, mean over the flux
    double poreVolume = 0.0;  // rb, flux times time
    int lines = 0;
};

struct PairSet {
    std::vector<WellPair> pairs;
    double flux = 0.0;  // rb/day, of all
    double time = 0.0;  // days, mean over the flux
    int longLines = 0;  // left out
};

/// Mean time of the lines from end to end, weighted by their flow; 0 without flow.
double meanTime(std::span<const JoiningLine> lines);

/// The pairs of the lines, in the order in which they are met. Lines of more than `mostTime` days do not
/// count for the efficiency; they belong to the flux.
PairSet weighPairs(std::span<const JoiningLine> lines, double mostTime);

/// The same without lines of more than `mostTime` days, which are counted in `longLines`.
PairSet pairsOfArrival(std::span<const JoiningLine> lines, double mostTime);

/// Share of oil in what the pair lets out, oil rate at the producer over pair flux; 0 where none of its
/// lines counts.
double efficiency(const WellPair& pair);
/// The same of all pairs together.
double meanEfficiency(const PairSet& set);

}  // namespace kvr
