#pragma once

#include "pressure/records/cell_state.hpp"
#include "pressure/wells/wells.hpp"
#include "run/records/clock.hpp"

namespace kvr {

/// Everything that an attempt at a step may change and that outlives it.
struct StepLevel {
    CellState state;  // what keepLevel keeps
    CellAmounts carried;
    WellRecord wells;
    RunClock clock;
    bool fieldStands = false;
    double averagePressure = 0.0;
    // By these the step before foretells how the field flows.
    DirectionArray<double> faceFlux;
    CellArray<double> transferFlux;  // of two continua
    CellAmounts exchanged;
    CellArray<double> pressureRise;
    bool riseGoesOn = false;
};

/// What one attempt at a step was like. Shares unless said otherwise; 0 is a perfect step.
struct AttemptFigures {
    bool pressureSolved = true;
    bool freeGas = false;             // somewhere in the field
    double volumeError = 0.0;         // sum over cells of |fluid volume - pore volume|, over the pore volume
    double largestVolumeError = 0.0;  // the same of the worst cell, over its pore volume
    double deficit = 0.0;        // volume that cells were asked for and did not hold, over the pore volume
    double targetExcess = 0.0;   // largest rate of a well over its target
    double targetMiss = 0.0;     // largest shortfall of a rate-controlled well below its target
    double mobilityError = 0.0;  // mean relative distance, weighted by the flow, of the total mobility that
                                 // the pressure was solved with from the mean of the step's begin and end
    double mobilityLag = 0.0;    // the same for the mobility of the step's begin
    bool forecast = true;        // the pressure was solved with mobilities that had been forecast
};

/// How the error of mobilities goes with the length of a step, learned from attempts of different lengths.
struct MobilityGrowth {
    double order = 0.7;   // of the error in the length
    double length = 0.0;  // days, of the attempt before; 0: there was none
    double error = 0.0;   // that it had
    bool forecast = false;
};

/// How long steps may be, and how often they were taken anew; kept for the run.
struct StepControl {
    double longest = 0.0;    // days the next step may last; 0: no bound
    double asked = 0.0;      // days that the tables ask the present step for
    int rejected = 0;        // attempts put back, of the run
    int implicitSteps = 0;   // steps taken fully implicitly, of the run
    int implicitAhead = 0;   // steps that go to the fully implicit method without an attempt
    int implicitInARow = 0;  // attempts that ended there, without two good ones in a row between
    int acceptedInARow = 0;  // attempts that stood, since the last that did not
    int hopelessSteps = 0;   // steps in a row that advanced next to nothing
    MobilityGrowth growth;
};

}  // namespace kvr
