#pragma once

#include "base/cell_array.hpp"

#include <cstdint>

namespace kvr {

/// Sums of the mapping, cleared at the end of each streamline step. Weight is residence time, days.
struct MappingSums {
    CellArray<double> weight, water, oil, gas, bubblePoint;
    DirectionArray<double> tracer;
    DirectionArray<double> mixture;      // (cell): components and water of what lines hold; no width without
    CellArray<double> bubblePointLimit;  // psia, initial bubble points
    CellArray<std::uint8_t> CellVisited;
    CellArray<std::uint8_t> visitedSnapshot;  // CellVisited when the missed-block stage starts
};

}  // namespace kvr
