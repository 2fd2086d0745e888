#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// Gas of a cell by where it is, surface volume (or the same per pore volume).
struct GasShares {
    double free = 0.0, dissolved = 0.0;
};

/// Shares of `gas` beside `oil`, both with what the cell holds beyond its saturations: where a gas phase
/// stands, oil holds Rs of it and the rest is free; where none does, all of it is dissolved.
GasShares gasShares(const CellState& state, CellId cell, double gas, double oil);

/// Gas that a cell is left with behind `days` of a reaction of first order in what is dissolved,
///   dG/dt = -k min(G, D),
/// D (`saturated`) the most that its oil dissolves, k (`rate`) 1/day. Free gas takes the place of what turns
/// solid at once: G falls on a line down to D, and as exp(-k t) from there on. Exact for any k t.
double gasBehindReaction(double gas, double saturated, double rate, double days);

/// What a call has brought into each store, surface volume of gas; the three sum to 0.
struct Co2Movement {
    double free = 0.0, dissolved = 0.0, solid = 0.0;
};

/// CO2 of every cell at its present pressure, over `days`: free and dissolved CO2 come to equilibrium at
/// SolutionRs (where DRSDT bounds it, at that), and dissolved CO2 turns solid at the rate of CO2SOLID. A cell
/// in equilibrium (to 1e-9 of its pore volume) is left as it is to the last bit where nothing turns solid.
/// Water and oil of a cell, and its CO2 over the three stores, do not change; what its saturations do not
/// show behind it is carried, in runs that carry amounts and in fully implicit ones. Tells the log what has
/// moved when no global iterations are left. Nothing happens without CO2MBM or without a gas phase.
Co2Movement UPDATE_SOLUBILITYRATIO(int iterationsLeft, double days, Simulation& simulation);

}  // namespace kvr
