#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// Pore volume, phase volumes and surface volumes over the active cells. Free gas is PV Sg/Bg, dissolved
/// gas PV So/Bo Rs; both stay 0 in a run without gas.
InPlaceSums sumInPlace(const GridModel& grid, const CellState& state, bool hasGas);

/// Material balance error of one phase, as a fraction: 1 - (now - netInflow)/initial; with nothing in
/// place at the start (now - netInflow)/now, and 0 when there is nothing now either.
inline constexpr double LeastInPlace =
    1e-9;  // surface volume; rounding leaves less of a phase that is not there
double balanceError(double initial, double now, double netInflow);

/// Recovered fraction 1 - now/initial, as (initial - now)/initial; an initial amount of 0 or less counts
/// as 1 where it divides.
double recoveredFraction(double initial, double now);

/// Adds the well flows of the step `executedDt` just finished (0 at the start) to the cumulative totals
/// and appends the totals of the step to BalanceRecord. Comes before the reports of the step, which read
/// them. Where cells take the average of analytical lines ("btf") wells do not make up what they
/// hold: net inflow stays 0.
void advanceBalance(Simulation& simulation, double executedDt);

/// What the present cells hold counts as in place at the start from now on, and nothing has flowed through
/// the wells: for a run whose cells another simulator's restart has filled.
void RESET_INITIAL_INPLACE(Simulation& simulation);

/// The row that `advanceBalance` made, into the log and the tables: KVR_Run_SweepVolume.out always holds
/// its head and every row so far, KVR_Excl_mbe.xls gets a line with the Excel switch on.
void ReportMBE(const Simulation& simulation);

/// Changes of the absolute sums of So, Sw and pressure from the previous global iteration, to console
/// and log.
void reportGlobalIterationErrors(Simulation& simulation);

}  // namespace kvr
