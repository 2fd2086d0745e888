#pragma once

#include "implicit/adjoint.hpp"
#include "matching/history_rows.hpp"

namespace kvr {

/// Whether a run forms adjoints, for a match or by OPTIONKVR 4; and whether for every report: HMPRIOR asks
/// for those of its data alone.
bool usesAdjoints(const RunOptions& options);
bool leavesAdjoints(const RunOptions& options);

/// Keeps the end of the step that a run has just taken, `dt` days long, where rows ask for it.
void keepRunLevel(double dt, Simulation& simulation);

/// What a quantity of each well changes by at the end of each report, per unit of ln k of the cells:
/// [report * number of wells + well]. Zeros where a well shows none: cuts and ratios are those of producers.
std::vector<CellArray<double>> reportDerivatives(const Simulation& simulation, WellQuantity quantity);

/// Appends the rows of data by the adjoints of the run whose levels stand in the match. A level counts for
/// the report that it ends.
void addAdjointRows(const Simulation& simulation, WellQuantity quantity, std::span<const HistoryDatum> data,
                    std::size_t before, ErrorData& to);

}  // namespace kvr
