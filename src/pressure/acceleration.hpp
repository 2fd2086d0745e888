#pragma once

#include "pressure/records/iteration_history.hpp"

#include <span>

namespace kvr {

/// Steps that the acceleration looks back on.
inline constexpr int AccelerationDepth = 4;

/// Forgets the past: the equations have changed, or a step was not made in full.
void resetHistory(IterationHistory& history);

/// The same, and gives its vectors back.
void releaseHistory(IterationHistory& history);

/// Step of a fixed-point iteration from its solution f: Anderson acceleration (Anderson 1965; Walker and
/// Ni 2011) over at most AccelerationDepth earlier steps s_j with changes of solution d_j,
///   s = f - sum g_j (s_j + d_j),   g minimising |f - sum g_j d_j|.
/// The fixed points stay those of the plain iteration. The plain step s = f is taken, and the past
/// forgotten, when f is not smaller than its predecessor or when s would exceed `largestMove` (psi) or
/// LargestStretch times f. Returns the step, valid until the next call; NaN in f gives f itself.
std::span<const double> acceleratedStep(std::span<const double> solution, double largestMove,
                                        IterationHistory& history);

}  // namespace kvr
