#pragma once

#include "base/cell_array.hpp"
#include "pressure/wells/wells.hpp"

namespace kvr {

/// What the end of a step is made of again: unknowns and wells.
struct RunLevel {
    double time = 0.0, dt = 0.0;  // days, of the end and of the step
    CellArray<double> Pressure, Sw, Sg, Rs, Pb;
    double averagePressure = 0.0;  // psia
    double RsRise = 0.0;           // of CellState
    WellRecord wells;
};

}  // namespace kvr
