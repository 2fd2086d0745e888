#pragma once

#include <vector>

namespace kvr {

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

}  // namespace kvr
