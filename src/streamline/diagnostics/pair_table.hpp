#pragma once

#include "model/grid.hpp"
#include "pressure/wells/wells.hpp"
#include "streamline/tracing/streamline_record.hpp"

#include <array>
#include <vector>

namespace kvr {

/// The fastest line of a pair, in single precision: many pairs are kept, few are looked at.
struct EndNodeRecord {
    double endTime = 0.0;  // days from end to end; 0: none yet
    std::vector<CellId> cell;
    std::vector<float> time;                     // days from the injector at the end of each node
    std::vector<std::array<float, 3>> position;  // ft
};

/// A line that joins an injector and a producer, and what it lets out there.
struct JoiningLine {
    int injector = 0, producer = 0;            // 1-based wells
    double flow = 0.0;                         // rb/day
    double time = 0.0;                         // days from end to end
    double oilFraction = 0.0;                  // reservoir volume of oil per reservoir volume
    double oil = 0.0, water = 0.0, gas = 0.0;  // surface volume per reservoir volume
};

/// Who feeds whom in one step: sums over the lines that join an injector and a producer.
struct PairTable {
    int injectors = 0, producers = 0;
    std::vector<int> indexOfWell;         // [well - 1] 1-based place among the wells of its kind
    std::vector<double> allocation;       // [pair] rb/day
    std::vector<double> waterAllocation;  // [pair] rb/day of water at the producer
    std::vector<int> lineCount;           // [producer - 1]
    std::vector<EndNodeRecord> fastest;   // [pair]; empty unless asked for
    std::vector<JoiningLine> joining;     // every line that joins a pair; kept where rates are optimised
};

/// Place of a well among the injectors, or among the producers; 0 for no well and for one of the other kind.
int injectorIndex(const WellRecord& wells, const PairTable& table, int well);
int producerIndex(const WellRecord& wells, const PairTable& table, int well);

/// Number of the pair, injectors running fastest: (i - Ninj) + Ninj p; 0 unless both are known.
int connectionNumber(const PairTable& table, int injector, int producer);

/// All sums 0, for the wells as they stand.
void clearPairs(const WellRecord& wells, bool keepFastest, PairTable& table);

/// What one line adds to its pair. A line with an end that is no well of its kind adds nothing. `flow` is
/// what it carries, rb/day, `waterFraction` the share of water in what it lets out.
struct PairShare {
    int injector = 0, producer = 0;  // 1-based wells
    double flow = 0.0;
    double waterFraction = 0.0;
};
void addToPair(const WellRecord& wells, const PairShare& share, PairTable& table);

/// Keeps a line as the fastest of its pair where it is.
void keepFastest(const WellRecord& wells, const GridModel& grid, const StreamlineRecord& record,
                 bool againstFlow, PairTable& table);

}  // namespace kvr
