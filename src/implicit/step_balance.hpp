#pragma once

#include "implicit/implicit_work.hpp"

namespace kvr {

/// Largest error of the step's balance over the components: what the cells gained since the start of the step
/// against what the wells brought in, over what is in place. Flow between cells cancels, so that this is all
/// that a converged state may add to the balance error of the run.
double stepBalanceError(double dt, const GridModel& grid, const CellState& state, const WellRecord& wells,
                        const CellAmounts& oldAmounts, CellAmounts& nowAmounts);

/// Largest difference of a rate well from its target, relative.
double largestTargetError(const WellRecord& wells);

}  // namespace kvr
