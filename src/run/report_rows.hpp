#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// A row of the console's table for the report just reached: date, days, steps and cuts since the report
/// before, rates, water cut, gas-oil ratio, average pressure, largest balance error; head and units before
/// the first one. Units of the deck. Only for a run whose deck was named on the command line.
void addReportRow(Simulation& simulation);

/// Steps taken anew or cut so far.
long cutsSoFar(const Simulation& simulation);

/// "2003-05-12": the clock's calendar date.
std::string dateText(const RunClock& clock);

/// Errors of the last row of the balance as they are judged, fractions. Of a phase of which a thousandth of
/// the pore volume or more was in place they are those of the row; any other is held against the most of what
/// was and is in place, what wells have produced and injected, and that thousandth, so that the rounding of
/// next to nothing is no error.
PhaseAmounts judgedErrors(const BalanceRecord& balance);

/// The largest of them, per cent.
double largestBalanceError(const BalanceRecord& balance);

}  // namespace kvr
