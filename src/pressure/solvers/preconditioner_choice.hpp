#pragma once

namespace kvr {

/// Which preconditioner the coupled solves of a run take. Costs are counted, not clocked, so that a run
/// repeats to the last bit; the unit is one iteration with block ILU(0), the weights below are ratios of
/// measured times (13200 cells, two and three unknowns).
struct PreconditionerChoice {
    double iluCost = 0.0;       // running mean per solve; 0 before the first
    double twoStageCost = 0.0;  // running mean per solve; 0 before the first
    int sinceTrial = 0;         // solves since both were last compared
    bool twoStages = false;     // taken by the next solve
    int freshIterations = 0;    // of the first solve behind a new hierarchy
    bool hierarchyWorn = true;  // the next two-stage solve builds a new one
};

inline constexpr double TwoStageIteration = 2.7;  // one iteration with two stages
inline constexpr double PressureRefresh = 0.6;    // new values on the finest level
inline constexpr int TrialIterations = 8;         // of block ILU(0), above which two stages are tried
inline constexpr int TrialPeriod = 40;            // solves after which the dearer one is tried again
inline constexpr int WornIterations = 3;          // beyond those of a fresh hierarchy

/// Takes note of a solve and chooses for the next one. A hierarchy serves many solves; its set-up is
/// left out of the running cost.
void noteSolve(bool twoStages, int iterations, PreconditionerChoice& choice);

/// Takes note of a solve with two stages: whether its hierarchy was new, and its iterations.
void noteHierarchy(bool renewed, int iterations, PreconditionerChoice& choice);

}  // namespace kvr
