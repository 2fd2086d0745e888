#pragma once

#include <span>
#include <vector>

namespace kvr {

/// Steps that the acceleration looks back on.
inline constexpr int AccelerationDepth = 4;

/// What the iterations since the last reset have done. Every vector holds cells, then rate wells.
struct IterationHistory {
    std::vector<double> solution;              // psi, last result of the solver
    std::vector<double> applied;               // psi, step that was made with it
    std::vector<std::vector<double>> moves;    // step of an iteration; slots, used in turn
    std::vector<std::vector<double>> changes;  // change of the solution behind that step
    int used = 0;                              // slots that are filled
    int next = 0;                              // slot that comes next
    bool open = false;                         // `solution` and `applied` belong to the running equations
};

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
