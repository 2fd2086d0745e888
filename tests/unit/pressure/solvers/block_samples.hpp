#pragma once

#include "pressure/solvers/block_system.hpp"

#include <array>
#include <cstdint>
#include <utility>
#include <vector>

namespace kvr::test {

/// The coupled equations of a flood in a box, as a Newton step has them: mass of each phase stored and
/// carried upstream, pressure stiff and saturations nearly hyperbolic.
struct BlockSample {
    int nx = 6, ny = 5, nz = 4;
    int blockSize = 2;
    double dt = 10.0;                             // days
    double deviation = 1.5;                       // of the logarithm of permeability
    std::array<double, 3> unit{1.0, 30.0, 0.02};  // of each equation, so that phases weigh unalike
    std::uint64_t seed = 7;
};

std::vector<std::pair<int, int>> boxConnections(const BlockSample& sample);

/// Matrix and random right side, no wells; the accumulation part is given too.
BlockSystem makeBlockSystem(const BlockSample& sample);

/// Adds a vertical well through column (i, j) that holds its rate, or its pressure.
void addColumnWell(const BlockSample& sample, int i, int j, bool rate, BlockSystem& system);

/// The whole system as a full matrix solved by elimination: cells' unknowns, then wells' pressures.
std::vector<double> eliminatedBlocks(const BlockSystem& system);

}  // namespace kvr::test
