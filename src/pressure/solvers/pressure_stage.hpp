#pragma once

#include "pressure/solvers/linear_system.hpp"
#include "pressure/solvers/multigrid.hpp"
#include "pressure/solvers/scaled_blocks.hpp"

#include <cstdint>
#include <span>
#include <vector>

namespace kvr {

/// First stage of the two-stage preconditioner (Wallis 1983; Lacroix, Vassilevski and Wheeler 2001): a
/// pressure equation, the cell's equations with weights w that free it from the other unknowns,
///   w' K e_u = 0 for every unknown u but the pressure,
/// K the accumulation part of the diagonal block where the system has it (true-IMPES), the diagonal block
/// itself otherwise (quasi-IMPES). Weights add up to 1 in absolute value, which keeps the matrix near
/// symmetric. Wells that hold a rate are rows behind the cells.
struct CoupledPressure {
    LinearSystem system;           // pressure matrix
    std::vector<double> weights;   // [rows * N] w over the row scale: for scaled residuals
    std::vector<double> rhs;       // [size] restricted residual
    std::vector<double> pressure;  // [size] correction, in psi as the multigrid gives it, then scaled
    MultigridMemory multigrid;
    std::uint64_t blockStamp = 0;  // pattern of the block system behind the present rows
    std::vector<int> wellIndex;    // rate wells behind the present rows, and their completions
    std::vector<int> wellCell;
};

/// Forms the pressure matrix; the multigrid hierarchy is kept, with the new values on its finest level,
/// unless the pattern changed or `renew` asks for a new one. Returns whether it is new.
template <int N>
bool formPressureStage(const BlockSystem& system, const ScaledBlocks& scaled, bool renew,
                       CoupledPressure& stage);

/// Scaled pressure correction of each row by one multigrid cycle on the restricted residual; afterwards in
/// stage.pressure[0..rows).
template <int N>
void applyPressureStage(const ScaledBlocks& scaled, std::span<const double> r, CoupledPressure& stage);

}  // namespace kvr
