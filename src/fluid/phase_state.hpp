#pragma once

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

}  // namespace kvr
