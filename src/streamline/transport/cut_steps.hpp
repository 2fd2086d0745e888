#pragma once

#include "streamline/transport/implicit_transport.hpp"

#include <algorithm>

namespace kvr {

/// The way back to the length that an implicit step had before it was cut. A line whose front has passed what
/// kept it from converging would otherwise stay at a length of thousandths, whatever Newton finds there.
struct CutSteps {
    double lost = 0.0;  // days before the first cut; 0: nothing to make good
    int waiting = 1;    // steps that have to stand first, twice as many behind each growth that was cut
    int standing = 0;
    bool grown = false;  // the step tried has just grown
};

/// Length in place of one of dt days that did not converge: half.
inline double cutStep(double dt, CutSteps& cuts) {
    constexpr double Cut = 0.5;
    constexpr int MostWaiting = 64;
    if (cuts.grown) cuts.waiting = std::min(2 * cuts.waiting, MostWaiting);
    cuts.lost = std::max(cuts.lost, dt);
    cuts.standing = 0;
    cuts.grown = false;
    return Cut * dt;
}

/// Length behind a step of dt days that stood in `iterations`: twice as long up to what was lost, else as
/// nextImplicitStep has it.
inline double stepBehind(double dt, int iterations, CutSteps& cuts) {
    constexpr double Regrowth = 2.0;
    cuts.grown = false;
    const double next = nextImplicitStep(dt, iterations);
    if (next >= cuts.lost) {
        cuts = {};
        return next;
    }
    if (++cuts.standing < cuts.waiting) return next;
    cuts.standing = 0;
    cuts.grown = true;
    return std::min(cuts.lost, Regrowth * dt);
}

}  // namespace kvr
