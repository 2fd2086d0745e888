#pragma once

#include "run/simulation.hpp"

namespace kvr {

/// Fluids in place, cumulative well flows over the step `executedDt` just finished (0 at the start) and
/// the balance errors, into the log, the tables and BalanceRecord.
void ReportMBE(Simulation& simulation, double executedDt);

/// Changes of the absolute sums of So, Sw and pressure from the previous global iteration, to console
/// and log.
void reportGlobalIterationErrors(Simulation& simulation);

}  // namespace kvr
