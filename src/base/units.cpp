#include "base/units.hpp"

#include "base/constants.hpp"

namespace kvr {

namespace {

constexpr double FeetPerMetre = 3.28084;
constexpr double PsiPerBar = 14.50377;
constexpr double LbPerFt3PerKgPerM3 = 0.06242797;
constexpr double CubicFeetPerCubicMetre = 35.314667;
constexpr double BarrelsPerCubicMetre = 6.289811;
constexpr double BarPerPsi = 0.06894757;
constexpr double KgPerM3PerLbPerFt3 = 16.01846;

}  // namespace

UnitSystem metricUnits() {
    UnitSystem units;
    units.deck = DeckUnits::Metric;
    units.VolumeFactor = 1.0;
    units.GasVolumeUnit = 1.0;
    units.FlowUnit = CubicFeetPerBarrel;
    units.length = FeetPerMetre;
    units.pressure = PsiPerBar;
    units.density = LbPerFt3PerKgPerM3;
    units.liquidRate = CubicFeetPerCubicMetre;
    units.gasRate = units.liquidRate * units.GasVolumeUnit / units.VolumeFactor;
    units.gasRatio = 1.0;
    units.gasFvf = 1.0;
    units.connectionFactor = BarrelsPerCubicMetre / PsiPerBar;
    units.copyPressure = PsiPerBar;
    units.copyDensity = LbPerFt3PerKgPerM3;
    units.copyLength = FeetPerMetre;
    return units;
}

UnitSystem fieldUnits() {
    UnitSystem units;
    units.deck = DeckUnits::Field;
    units.copyPressure = BarPerPsi;
    units.copyDensity = KgPerM3PerLbPerFt3;
    units.copyLength = MetresPerFoot;
    return units;
}

}  // namespace kvr
