#pragma once

#include "base/console.hpp"
#include "deck/options.hpp"
#include "matching/matching_system.hpp"

namespace kvr {

enum class MinimisationMethod { Lsqr, GaussNewton };

struct MinimisationSettings {
    MinimisationMethod method = MinimisationMethod::Lsqr;
    int iterationLimit = 400;  // of LSQR
    ConstraintWeights weights{};
};

/// What LSQOPT and the choice of the method ask for.
MinimisationSettings minimisationSettings(const RunOptions& options);

/// The change of ln k that brings the data to their right sides, held small and smooth by the constraints:
/// new_lnk = lnk + x for active cells, new_lnk = lnk for the others. Without data new_lnk is lnk.
/// A Gauss-Newton system that is too large for a dense matrix is solved by LSQR, which a warning tells.
void minimise(const Console& console, const MinimisationSettings& settings, const GridModel& grid,
              const WellData& wells, const CellArray<double>& lnk, CellArray<double>& new_lnk);

}  // namespace kvr
