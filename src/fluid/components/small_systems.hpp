#pragma once

#include "fluid/components/component_set.hpp"

namespace kvr {

/// Solves the positive definite system of `count` unknowns by Cholesky; matrix and right side are
/// overwritten, the solution stands in the right side. False, with both spoiled, where a pivot falls to
/// `leastPivot`.
bool solvePositiveDefinite(int count, ComponentMatrix& matrix, Composition& right, double leastPivot);

/// Solves any regular system of `count` unknowns with partial pivoting, in the same places. False where it
/// is singular.
bool solveGeneral(int count, ComponentMatrix& matrix, Composition& right);

}  // namespace kvr
