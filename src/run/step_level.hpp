#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// Keeps the level from which a step starts.
void keepStepLevel(const Simulation& simulation, StepLevel& level);

/// Puts a kept level back: the same bits in everything that a step starts from.
void returnToStepLevel(const StepLevel& level, Simulation& simulation);

}  // namespace kvr
