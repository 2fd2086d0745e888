#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// The well is held at the limit of its bottom-hole pressure, which the deck has not asked for.
bool isAtLimit(const Well& well);

/// What every well does at the end of the run, a row each, with the date and in the units of the deck: rates
/// (of injectors what they inject), water cut, gas-oil ratio, bottom-hole pressure. At most MostWellRows
/// rows; the summary table has the rest. Nothing for a run without wells.
void tellLastWells(const Simulation& simulation);

inline constexpr std::size_t MostWellRows = 40;

}  // namespace kvr
