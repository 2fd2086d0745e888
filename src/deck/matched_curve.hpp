#pragma once

#include "deck/options.hpp"

namespace kvr {

/// Whether wells are matched by their gas-oil ratio and not by their water cut: as HMDATA says, by itself in
/// runs without water.
inline bool matchesGasOilRatio(const RunOptions& options) {
    return options.matchedCurve == MatchedCurve::GasOilRatio ||
           (options.matchedCurve == MatchedCurve::Auto && !options.hasWater);
}

}  // namespace kvr
