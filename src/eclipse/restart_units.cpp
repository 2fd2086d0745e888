#include "eclipse/restart_units.hpp"

#include "base/constants.hpp"

namespace kvr {

namespace {

constexpr double CubicFeetPerCubicMetre = 35.314667;
constexpr double FieldGas = 1.0 / GasRatioFactor;  // surface barrels of gas per Mscf

FileUnits field(const UnitSystem& run) {
    FileUnits units;
    units.volume = CubicFeetPerBarrel / run.VolumeFactor;
    units.surfaceGas = FieldGas;
    units.gasRatio = FieldGas;
    units.gasFvf = GasRatioFactor;
    return units;
}

FileUnits metric(const UnitSystem& run) {
    const UnitSystem deck = metricUnits();
    FileUnits units;
    units.pressure = deck.pressure;
    units.volume = CubicFeetPerCubicMetre / run.VolumeFactor;
    units.density = deck.density;
    units.length = deck.length;
    units.connectionFactor = deck.connectionFactor;
    return units;
}

FileUnits laboratory(const UnitSystem& run) {
    constexpr double PsiPerAtmosphere = 14.69595, MetresPerCentimetre = 0.01, HoursPerDay = 24.0;
    constexpr double CubicMetresPerCubicCentimetre = 1e-6, KgPerM3PerGramPerCm3 = 1000.0;
    const double barPerAtmosphere = PsiPerAtmosphere / metricUnits().pressure;
    FileUnits units = metric(run);
    units.pressure = PsiPerAtmosphere;
    units.volume *= CubicMetresPerCubicCentimetre;
    units.density *= KgPerM3PerGramPerCm3;
    units.length *= MetresPerCentimetre;
    units.connectionFactor *= CubicMetresPerCubicCentimetre * HoursPerDay / barPerAtmosphere;
    units.perDay = HoursPerDay;
    return units;
}

}  // namespace

std::optional<FileUnits> fileUnits(std::int32_t code, const UnitSystem& run) {
    switch (code) {
        case 1:
            return metric(run);
        case 2:
            return field(run);
        case 3:
            return laboratory(run);
        default:
            return {};
    }
}

}  // namespace kvr
