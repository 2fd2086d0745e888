#pragma once

#include "base/cell_array.hpp"
#include "base/deck_place.hpp"

#include <vector>

namespace kvr {

/// Level parts of a cell over which its initial saturations are averaged.
struct CellSlices {
    int count = 0;       // 0: the cell's centre stands for it
    bool always = true;  // false: only where a cell holds a whole contact or transition
};

/// Equilibrium of one region: psia, ft, dimensionless Rs.
struct Equilibrium {
    double datumDepth = 0.0;
    double datumPressure = 0.0;
    double wocDepth = 0.0;
    double gocDepth = 0.0;
    DeckPlace place;           // of its record
    bool isGiven = false;      // by a record of EQUIL
    double rsTableItem = 0.0;  // item 7: above 0 where RSVD is asked for
    CellSlices slices;
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
