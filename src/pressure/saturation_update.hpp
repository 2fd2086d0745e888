#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// The saturation update behind the splitting stage. IMPES: explicit upstream transport of the total
/// face flux over clock.workDt, sub-stepped by the CFL number, wells as sources and sinks. Every method:
/// refresh of the cell properties.
void SaturationUpdate(Simulation& simulation);

}  // namespace kvr
