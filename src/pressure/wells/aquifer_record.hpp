#pragma once

#include "deck/aquifers.hpp"
#include "fluid/tables.hpp"
#include "model/grid.hpp"
#include "pressure/wells/wells.hpp"

#include <vector>

namespace kvr {

/// A cell that an aquifer gives water to, and its part of it.
struct AquiferCell {
    CellId cell = 0;
    double share = 0.0;
};

/// An analytic aquifer in a run, internal units.
struct Aquifer {
    GivenAquifer given;
    double initialPressure = 0.0;  // psia at its datum
    double density = 0.0;          // lb/ft3, of its water
    double timeUnit = 0.0;         // Carter and Tracy: days of a dimensionless time of 1
    double influx = 0.0;           // ... and surface volume per psi
    InfluenceTable influence;      // ... and dimensionless pressures
    std::vector<AquiferCell> cells;
    double time = 0.0;  // days since the start
    double gave = 0.0;  // surface volume so far
};

/// The analytic aquifers of a run. To the stages of a step they are wells behind those of the deck, one that
/// gives and one that takes each: at a pressure of their own, with `flow` for what connections let through.
/// Between steps these wells stand here, and nobody else knows of them.
struct AquiferRecord {
    std::vector<Aquifer> aquifers;
    std::vector<Well> wells;
};

}  // namespace kvr
