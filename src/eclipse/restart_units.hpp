#pragma once

#include "base/units.hpp"

#include <cstdint>
#include <optional>

namespace kvr {

/// Factors from the units of a restart file to those inside. Volumes of both kinds, reservoir and surface,
/// have one unit in a file, gas at the surface may have another.
struct FileUnits {
    double pressure = 1.0;          // to psi
    double volume = 1.0;            // to internal volume
    double surfaceGas = 1.0;        // surface gas to the file's volume: 1000 / 5.614583 of Mscf, c2 / c1
    double gasRatio = 1.0;          // RS to surface gas per surface oil, the same volume of both
    double gasFvf = 1.0;            // BG to reservoir volume per the same volume at the surface
    double density = 1.0;           // to lb/ft3
    double length = 1.0;            // to ft
    double connectionFactor = 1.0;  // to rb cp/(day psi)
    double perDay = 1.0;            // the file's rates to rates a day
};

/// Units by the code of a file's INTEHEAD: 1 metric, 2 field, 3 laboratory. Empty for any other.
std::optional<FileUnits> fileUnits(std::int32_t code, const UnitSystem& run);

}  // namespace kvr
