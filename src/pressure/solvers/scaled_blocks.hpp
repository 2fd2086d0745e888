#pragma once

#include "pressure/solvers/block_system.hpp"
#include "pressure/solvers/system_products.hpp"

#include <span>
#include <vector>

namespace kvr {

/// A coupled system in the scale in which it is solved, its wells eliminated:
///   (R A C - sum over wells of (R B / D) (C' C)) x = R (b - B rhs_w / D),   unknowns = C x
/// R makes the largest entry of each row of a diagonal block 1, so that all equations weigh alike; C is 1
/// but for the pressures, which are measured in the unit that makes their entries as large as the others.
struct ScaledBlocks {
    std::vector<double> value;     // [blocks * N * N] R A C, on the pattern of the system
    std::vector<double> rhs;       // [rows * N]
    std::vector<double> rowScale;  // [rows * N] R
    double pressureScale = 1.0;    // C of the pressures
    // Wells that hold a rate, one behind the other; those held at a pressure only act on the right side.
    std::vector<int> wellIndex;      // [rate wells] which well of the system
    std::vector<int> wellStart;      // [rate wells + 1]
    std::vector<int> wellCell;       // row of each completion
    std::vector<double> wellColumn;  // [completions * N] R B / D
    std::vector<double> wellRow;     // [completions * N] C' C
};

/// Scales the system and eliminates its wells. False when an entry is not finite.
bool scaleBlocks(const BlockSystem& system, ScaledBlocks& scaled);

/// Back to the units of the system: the cells' unknowns in place, and the wells' pressures from their rows.
void restoreUnits(const BlockSystem& system, const ScaledBlocks& scaled, std::span<double> solution,
                  std::span<double> bhp);

/// D of a well row, 1 where it vanishes.
double wellDiagonal(const WellBorder& well);

/// What the Krylov method sees of a scaled system.
template <int N>
struct BlockOperator {
    const BlockSystem* pattern = nullptr;
    const ScaledBlocks* scaled = nullptr;
    std::span<const double> rhs;
};

/// y = A x, wells included.
template <int N>
void multiply(const BlockOperator<N>& system, std::span<const double> x, std::span<double> y);

/// What residuals are measured against: ||b||, 1 if it is 0.
template <int N>
double rightSideSize(const BlockOperator<N>& system) {
    const double size = euclideanNorm(system.rhs);
    return size > 0.0 ? size : 1.0;
}

/// r = b - A x; returns ||r||, the Euclidean norm.
template <int N>
double formResidual(const BlockOperator<N>& system, std::span<const double> x, std::span<double> r);

/// r -= A x for an x whose entries other than the pressures are 0; `pressure` holds those, one per row.
template <int N>
void subtractPressureProduct(const BlockOperator<N>& system, std::span<const double> pressure,
                             std::span<double> r);

}  // namespace kvr
