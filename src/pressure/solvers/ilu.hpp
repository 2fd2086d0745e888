#pragma once

#include "pressure/solvers/linear_system.hpp"
#include "pressure/solvers/system_products.hpp"

#include <span>
#include <vector>

namespace kvr {

/// Incomplete factors without fill, A ~ (D + L) D^-1 (D + U) on the pattern of A: strict triangles in
/// compressed rows with columns sorted, pivots stored inverted.
struct IncompleteFactors {
    PatternKey key;
    std::vector<std::int64_t> lowerStart, upperStart;  // [n + 1]
    std::vector<int> lowerColumn, upperColumn;
    std::vector<double> lower;  // unit lower triangle: multipliers
    std::vector<double> upper;
    std::vector<double> inversePivot;                    // [n]
    std::vector<std::int64_t> lowerSource, upperSource;  // place of each entry in the system
    std::vector<double*> place;                          // [n] scratch: where column j of the row stands
};

/// ILU(0) of the system (Meijerink and van der Vorst 1977; row version). The layout is rebuilt only when
/// the pattern changed. A pivot that vanishes is replaced by the diagonal of the matrix, or by 1.
void factorIncomplete(const LinearSystem& system, IncompleteFactors& factors);

/// z = (L U)^-1 r, and the transposed z = (L U)^-T r; z and r may be the same vector.
void applyIncomplete(const IncompleteFactors& factors, std::span<const double> r, std::span<double> z);
void applyIncompleteTransposed(const IncompleteFactors& factors, std::span<const double> r,
                               std::span<double> z);

}  // namespace kvr
