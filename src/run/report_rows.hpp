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

/// Largest balance error of a phase in the last row of the balance, per cent.
double largestBalanceError(const BalanceRecord& balance);

}  // namespace kvr
