#pragma once

#include "base/cell_array.hpp"

namespace kvr {

inline constexpr double UnreachedTime = 1e10;  // days; what a map shows of a cell without a line

/// What the lines through all cells say of each cell; empty until the end of the run.
struct DiagnosticMaps {
    CellArray<double> timeFromInjector, timeToProducer, timeSum;  // days
    CellArray<int> injector, producer, connection;                // 1-based by kind, 0 for none
};

}  // namespace kvr
