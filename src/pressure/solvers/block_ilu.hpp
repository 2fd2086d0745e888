#pragma once

#include "pressure/solvers/scaled_blocks.hpp"

#include <span>
#include <vector>

namespace kvr {

/// Incomplete block factors without fill, A ~ (D + L) D^-1 (D + U) on the pattern of A.
struct BlockFactors {
    std::vector<double> value;         // [blocks * N * N] multipliers below the diagonal, U from it on
    std::vector<double> inversePivot;  // [rows * N * N] inverses of the pivot blocks
    std::vector<int> place;            // [rows] scratch: where column j of the row stands, -1 elsewhere
    std::vector<int> completion;       // [rows] scratch: completion of the well in the row, -1 elsewhere
};

/// Block ILU(0) of the scaled system. What the eliminated wells couple enters where the pattern has room.
/// A pivot block that is singular is replaced by the diagonal block of the cell, or by the unit block.
template <int N>
void factorBlocks(const BlockSystem& system, const ScaledBlocks& scaled, BlockFactors& factors);

/// z = (L U)^-1 r; z and r may be the same vector.
template <int N>
void applyBlockFactors(const BlockSystem& system, const BlockFactors& factors, std::span<const double> r,
                       std::span<double> z);

}  // namespace kvr
