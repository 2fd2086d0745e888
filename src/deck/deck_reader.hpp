#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// Reads the deck in ECLIPSE form with its option section: both passes, option defaults and fall-backs,
/// the first well table. Stops with the fixed texts on the failures that stop.
void readDeck(Simulation& simulation);

}  // namespace kvr
