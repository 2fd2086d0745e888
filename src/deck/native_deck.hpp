#pragma once

#include "run/records/simulation.hpp"

#include <array>
#include <string_view>

namespace kvr {

/// The files of a three-file deck, in the order of reading: model and fluids, wells, options.
inline constexpr std::array<std::string_view, 3> NativeDeckFiles = {"Reservoir.DATA", "Well.DATA",
                                                                    "Simulation.DATA"};

/// Reads the three-file deck in the deck's folder. The readers of the sections are called in a fixed order,
/// each from the place where the one before ended: RUNSPEC, GRID, EDIT, PROPS, REGIONS and SOLUTION of the
/// first file, SCHEDULE of the second, the option section of the third, with defaults and fall-backs. A
/// reader that meets another section's word reads nothing; what stands behind the last section is told.
/// Stops where a file cannot be read.
void readNativeDeck(Simulation& simulation);

}  // namespace kvr
