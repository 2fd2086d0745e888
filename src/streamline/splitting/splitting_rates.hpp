#pragma once

#include "run/records/simulation.hpp"
#include "streamline/splitting/splitting_flux.hpp"

#include <cstdint>

namespace kvr {

/// Of one cell, beside what its neighbours see.
struct CellWork {
    ConservedAmounts rate;                          // of change, per day
    ConservedAmounts leaving;                       // over the faces that it gives through, per day
    double largestRate = 0.0;                       // that a substep has to resolve, 1/day
    bool working = false;                           // active, with pore volume
    bool lacking = false;                           // asked for more than it holds
    ConservedAmounts amount;                        // surface volume per pore volume, kept through the stage
    double immobileWater = 0.0, immobileOil = 0.0;  // of these, what does not leave
    PhaseState phases;
    double Bo = 1.0;
    double inverseMuW = 1.0, inverseMuO = 1.0, inverseMuG = 1.0;
    double saturatedRs = 0.0;           // at the pressure of the cell
    bool limitsRs = false;              // of RecoveryFactors
    double slopeW = 0.0, slopeG = 0.0;  // psi, capillary pressures per saturation; 0 without
};

/// Shares of what a cell is asked for in a substep that it can give.
struct GivenShare {
    double water = 1.0, oil = 1.0, gas = 1.0;
};

/// Arrays and switches of one call of the stage.
struct SplittingStage {
    bool capillary = false;
    bool projection = false;
    bool carries = false;      // amounts that saturations do not show are handed on
    bool buoyant = false;      // the transport takes gravity along
    bool throughFlow = false;  // phases against the total flow that transport has moved
    double daysMoved = 0.0;    // ... in days of transport to one of this stage, 0 ahead of it
    bool continues = false;    // the stage ahead of the transport has told its part of the step's exchange
    int firstFace = 1;
    CellArray<SplittingCell> shared;
    CellArray<CellWork> own;
    bool bounded = false;           // some cell is asked for more than it holds, and `given` tells its shares
    CellArray<GivenShare> given;    // 1 wherever a cell holds what it is asked for
    CellArray<std::uint8_t> moved;  // what neighbours see has changed in the last substep
    CellArray<ConservedAmounts> start;    // the amounts when the stage began, where they are carried
    DirectionArray<double> waterRate;     // surface volume a day by low cell and axis, where tracers move
    DirectionArray<double> waterPassed;   // ... and its sum over the stage, surface volume
    DirectionArray<double> meanVelocity;  // (cell, axis 1..3) ft/day, with projection only
};

/// Rates of change of a cell from its own faces alone; lines have taken their part of a face between two
/// cells that they have entered, and only of such a one: both sides of a face have to see the same.
/// Every connection is worked from both sides, so that each cell writes only itself. Returns the rate that a
/// substep has to resolve, 1/day: the largest relative rate of its phases, and where they move at all the
/// rate at which capillarity pulls the cell to rest. A longer explicit substep would overshoot rest further
/// each time; near rest the rates do not tell. `left`: days of the stage that are left.
double formRates(const Simulation& simulation, CellId cell, double left, SplittingStage& stage);

/// No cell gives more than it holds of what is mobile: what flows out of one that is asked for more in `dt`
/// days flows less, seen alike from both sides of its faces.
void boundByContents(const Simulation& simulation, double dt, double left, SplittingStage& stage);

}  // namespace kvr
