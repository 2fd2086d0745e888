#pragma once

#include "base/constants.hpp"

namespace kvr {

/// Which unit words the deck gave.
enum class DeckUnits { None, Field, Metric };

/// Conversion of deck numbers on reading and of flows inside. All factors multiply a deck value.
/// Internal units: ft, md, cp, psia, day, lb/ft3; volumes in rb and stb (field) or ft3 (metric).
struct UnitSystem {
    DeckUnits deck = DeckUnits::None;
    double VolumeFactor = CubicFeetPerBarrel;  // ft3 per internal volume unit; 1 under METRIC
    double GasVolumeUnit = 1000.0;             // scf per deck gas unit over VolumeFactor; 1 under METRIC
    double FlowUnit = 1.0;    // internal volume per rb: every flow formed from Trans or WI takes it
    double length = 1.0;      // deck length to ft
    double pressure = 1.0;    // deck pressure to psi
    double density = 1.0;     // deck density to lb/ft3
    double liquidRate = 1.0;  // deck liquid surface rate to internal volume a day
    double gasRate = GasVolumeUnit / VolumeFactor;  // deck gas surface rate to internal volume a day
    double gasRatio = 1.0 / GasRatioFactor;         // deck Rs to the dimensionless ratio
    double gasFvf = GasRatioFactor;                 // deck Bg to the dimensionless ratio
    double connectionFactor = 1.0;                  // deck COMPDAT factor to rb cp/(day psi)
    double copyPressure = 1.0;  // factors of the rewritten unit copy of the deck (other system)
    double copyDensity = 1.0;
    double copyLength = 1.0;
};

/// The factors of a deck under METRIC; the default-constructed record is FIELD (and "no unit word").
UnitSystem metricUnits();
/// FIELD: internal factors as by default, copy factors to metric.
UnitSystem fieldUnits();

/// Internal volume to reported stb or rb, and to Mscf; the same in both deck systems.
inline double toBarrels(const UnitSystem& units, double volume) {
    return volume * units.VolumeFactor / CubicFeetPerBarrel;
}
inline double toMscf(const UnitSystem& units, double volume) {
    return volume * units.VolumeFactor / 1000.0;
}

}  // namespace kvr
