#pragma once

#include "base/cell_array.hpp"
#include "base/deck_place.hpp"

#include <vector>

namespace kvr {

/// Equilibrium of one region: psia, ft, dimensionless Rs.
struct Equilibrium {
    double datumDepth = 0.0;
    double datumPressure = 0.0;
    double wocDepth = 0.0;
    double gocDepth = 0.0;
    DeckPlace place;           // of its record
    bool isGiven = false;      // by a record of EQUIL
    double rsTableItem = 0.0;  // item 7: above 0 where RSVD is asked for
    int slices = 0;            // horizontal parts of a cell whose saturations are averaged; 0: its centre
    std::vector<double> rsTableDepth;  // RSVD rows; empty when not given
    std::vector<double> rsTableRs;
};

/// What the SOLUTION section says of the initial state. psia, ft, dimensionless Rs.
struct InitialConditions {
    bool equilibrationMode = false;       // EQUIL decides; otherwise the arrays
    std::vector<Equilibrium> regions{1};  // EQLNUM region r at [r - 1]
    CellArray<double> initialPressure, initialSwat, initialSgas, initialSoil, initialRs;
    bool pressureGiven = false, swatGiven = false, sgasGiven = false, soilGiven = false, rsGiven = false;
    DirectionArray<double> initialZ;  // (cell, component)
};

}  // namespace kvr
