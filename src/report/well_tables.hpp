#pragma once

#include "run/simulation.hpp"

namespace kvr {

/// Well, production, water-cut and recovery tables of one finished step.
void reportWells(Simulation& simulation);

/// Heads of the well tables, written when the wells of the run are known.
void startWellTables(Simulation& simulation);

}  // namespace kvr
