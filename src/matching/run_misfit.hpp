#pragma once

#include "matching/match_record.hpp"

#include <span>

namespace kvr {

/// What a well's histories differ by, quantity by quantity, where the observed one has points; pressures that
/// were not measured (0 or less) do not count.
void sumMisfits(const WellMatch& well, int component, WellMisfit& misfit);

/// Weights of the two kinds of data in what updates are judged by.
struct ObjectiveWeights {
    double cut = 1.0, pressure = 1.0;
    double leastShift = 0.0;  // days, of a well that does not count as matched
};

/// Sums over the wells, and what updates are judged by,
///   J = (w1 (A/A0 + T/T0)/2 + w2 P/P0) / (w1 + w2),
/// A the sum over wells of |observed - calculated| of the matched curve, T that of |shifts|, P that of
/// |pressure misfits|; A0, T0 and P0 those of the first run. An early update moves curves before it gives
/// them their shape, so neither A nor T alone tells of progress. A part that the first run matches is left
/// out, shifts where those of all wells are within what counts as matched: few points, or flat curves, have
/// shifts that mean nothing.
void totalMisfits(const ObjectiveWeights& weights, std::span<const RunMisfit> before, RunMisfit& run);

}  // namespace kvr
