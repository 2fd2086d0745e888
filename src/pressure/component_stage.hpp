#pragma once

#include "base/cell_array.hpp"
#include "fluid/components/component_state.hpp"

#include <vector>

namespace kvr {

/// What the cells hold, conserved by all that moves it.
struct ComponentAmounts {
    DirectionArray<double> moles;  // (cell, component), lb-mole
    CellArray<double> water;       // surface volume, internal volume units
};

/// What the pressure equation and the transport of components read of the cells; internal volume units.
struct ComponentStage {
    ComponentSet set;  // at the temperature of the reservoir
    ComponentAmounts amounts;
    ComponentState cells;
    CellArray<double> FluidVolume;   // of all that a cell holds, at its pressure
    CellArray<double> FluidSlope;    // its change a psi, at fixed amounts
    DirectionArray<double> Partial;  // (cell, component): its change a lb-mole
};

/// A completed cell: it takes what its productivity times mobility and drawdown gives at a pressure, or is
/// given a rate.
struct ComponentSource {
    CellId cell = 0;
    double productivity = 0.0;  // internal volume cp/(day psi); 0: no flow by pressure
    double pressure = 0.0;      // psia, of the well at the cell
    double molarRate = 0.0;     // lb-mole/day of `stream`, into the reservoir
    Composition stream{};
};

/// Through all sources of a step, lb-mole and surface volume of water; into the reservoir positive.
struct SourceTotals {
    Composition moles{};
    double water = 0.0;
};

/// lb-mole of a phase in an internal volume, `volumeFactor` ft3 in it.
inline double phaseMoles(const ComponentSet& set, double volumeFactor, double pressure, double Z) {
    return volumeFactor * molarDensity(set, pressure, Z);
}

}  // namespace kvr
