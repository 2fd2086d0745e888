#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// What the conditioning made of the rock. With SMTHPRM a map of every property in its list; with UPSCALE
/// maps of the averages and of the logarithms of the permeabilities, and two deck fragments ready for
/// INCLUDE: each keyword, all its values in one record, a line with a slash.
void writeConditionedRock(const Simulation& simulation);

}  // namespace kvr
