#pragma once

#include "implicit/implicit_work.hpp"

namespace kvr {

/// Largest error of the step's balance over the components: what the cells gained since the start of the step
/// against what the wells brought in, over what is in place or, where that is more, over a thousandth of what
/// the pores would hold of the component alone, sum of V/B: a component that is hardly there is judged by the
/// pore volume. Flow between cells cancels, so that this is all that a converged state may add to the balance
/// error of the run.
double stepBalanceError(double dt, const GridModel& grid, const CellState& state, const WellRecord& wells,
                        const CellAmounts& oldAmounts, CellAmounts& nowAmounts);

}  // namespace kvr
