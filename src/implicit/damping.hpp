#pragma once

#include "implicit/cell_terms.hpp"

#include <cstddef>
#include <span>
#include <vector>

namespace kvr {

/// Where kinks of the equations (a table row, an upstream cell that changes, a connection that opens) lie
/// between two iterates, full Newton steps can lead from one to the other and back for ever. Memory of the
/// attempt against that.
struct NewtonDamping {
    std::vector<double> last;                   // the step before, undamped
    double largest = 0.0, largestBefore = 0.0;  // of the last two steps, scaled
    double share = 1.0;                         // of the step that is taken
};

/// Forgets the attempt before.
void resetDamping(NewtonDamping& damping);

/// Share of the Newton step `step` to take, blockSize values a cell. Looked at is the largest of its values,
/// pressures over 100 psi and Rs over 100. Where that unknown goes back by half to three times of what it was
/// to do in the step before, and the largest value has not fallen to 0.7 within two steps, the share falls by
/// 0.7 down to 0.3; else it grows by 1.3 up to the whole.
double dampedShare(std::span<const double> step, std::size_t blockSize, std::span<const ThirdUnknown> unknown,
                   NewtonDamping& damping);

}  // namespace kvr
