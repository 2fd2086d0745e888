#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// The fields that do not change in a run, once the geometry is final: with the Tecplot switch one file each
/// of permeability, its logarithm to base ten (1e-20 md where there is none), porosity and the
/// transmissibility of the high faces; with the view switch permeability and the initial water saturation as
/// point files.
void writeStaticPlots(const Simulation& simulation);

}  // namespace kvr
