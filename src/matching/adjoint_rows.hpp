#pragma once

#include "implicit/adjoint.hpp"
#include "matching/history_rows.hpp"

namespace kvr {

/// Whether the rows of a match come from adjoints, of either kind.
bool usesAdjoints(const RunOptions& options);

/// Keeps the end of the step that a run has just taken, `dt` days long, where rows ask for it.
void keepRunLevel(double dt, Simulation& simulation);

/// Appends the rows of data by the adjoints of the run whose levels stand in the match. A level counts for
/// the report that it ends.
void addAdjointRows(const Simulation& simulation, WellQuantity quantity, std::span<const HistoryDatum> data,
                    std::size_t before, ErrorData& to);

}  // namespace kvr
