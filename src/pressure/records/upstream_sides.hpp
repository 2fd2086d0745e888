#pragma once

#include "base/cell_array.hpp"

#include <cstdint>

namespace kvr {

/// From which side the phases cross every connection of the pressure equation, as a sum of PhaseSide, by
/// cell and direction of ConnectionTable: a bit is set where the phase comes from the neighbour.
using UpstreamSides = DirectionArray<std::uint8_t>;

enum PhaseSide : std::uint8_t { OilSide = 1, WaterSide = 2, GasSide = 4 };

}  // namespace kvr
