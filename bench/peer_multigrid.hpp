#pragma once

#include "pressure/solvers/linear_system.hpp"

namespace kvr::bench {

struct PeerTiming {
    bool available = false;  // false where the peer library is not installed
    double seconds = 0.0;    // set-up and solve, median
    int iterations = 0;
    double residual = 0.0;   // true residual, |b - A x| / |b|
    double megabytes = 0.0;  // growth of the resident size by set-up and solve
};

/// BoomerAMG (HMIS coarsening, extended+i interpolation with 4 weights, threshold 0.25) with BiCGSTAB.
PeerTiming timePeer(const LinearSystem& system, int repeats);

}  // namespace kvr::bench
