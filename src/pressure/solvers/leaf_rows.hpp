#pragma once

#include "pressure/solvers/block_system.hpp"

#include <cstdint>
#include <span>
#include <vector>

namespace kvr {

// Rows of a coupled system that are connected to one other row alone, as matrix cells are to their fractures,
// taken out before the solve. With the blocks D of such a row m, B of its host f to it and C of it to its
// host
//   A_ff - B D^-1 C takes the place of A_ff,   b_f - B D^-1 b_m that of b_f,   x_m = D^-1 (b_m - C x_f)
// which is exact, and leaves the pattern of the others as it is.

struct LeafRow {
    int row = 0, host = 0;                         // in the whole system
    int diagonal = 0, fromHost = 0, fromLeaf = 0;  // places there of D, C and B
    int hostInRest = 0, hostDiagonalInRest = 0;    // row and place in the rest
};

struct LeafRows {
    std::vector<LeafRow> leaves;
    std::vector<int> rowInRest;   // by row of the whole, -1 of leaves
    std::vector<int> wholeRow;    // by row of the rest
    std::vector<int> wholePlace;  // by place of the rest
    std::vector<double> inverse;  // D^-1 by leaf
    BlockSystem rest;
    std::vector<double> solution;  // of the rest
};

/// Those of `candidates` (rows, rising) that are leaves, each of a host that is none, with the pattern of the
/// rest.
LeafRows findLeafRows(const BlockSystem& whole, std::span<const int> candidates);

/// Fills the rest from the values of the whole system. False where a diagonal block of a leaf has no inverse
/// or a well stands in one: the whole has to be solved then.
bool takeOutLeaves(const BlockSystem& whole, LeafRows& leaves);

/// The solution of the whole from that of the rest, `leaves.solution`.
void putBackLeaves(const BlockSystem& whole, const LeafRows& leaves, std::span<double> solution);

}  // namespace kvr
