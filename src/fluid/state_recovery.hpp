#pragma once

#include "fluid/tables.hpp"

namespace kvr {

/// Saturations of a cell or node with its solution gas.
struct PhaseState {
    double Sw = 0.0, So = 0.0, Sg = 0.0;
    double Rs = 0.0;
    double Pb = 0.0;  // psia
};

/// Conserved amounts, surface volume per pore volume.
struct ConservedAmounts {
    double water = 0.0, oil = 0.0, gas = 0.0;
};

/// Formation volume factors and pressure at which amounts are turned into saturations.
struct RecoveryFactors {
    double pressure = 0.0;  // psia
    double Bw = 1.0, Bo = 1.0, Bg = 1.0;
};

/// Saturations from conserved amounts after a transport step, at held pressure and factors: gas beyond
/// what the oil can dissolve is free, otherwise all of it is dissolved; then the limits (0..1, or the end
/// points of the region with `keepEndPoints`) and the scaling to sum 1. Works for runs with and without
/// gas (tables.hasGas). A NaN is left for the caller to replace.
PhaseState recoverState(const FluidTables& tables, int region, bool keepEndPoints,
                        const RecoveryFactors& factors, const ConservedAmounts& amounts);

/// The limits and the scaling alone.
void limitSaturations(const SaturationTable& table, bool keepEndPoints, PhaseState& state);

}  // namespace kvr
