#include "fluid/components/mixture_volume.hpp"

#include "fluid/components/cubic.hpp"

namespace kvr {

namespace {

constexpr double PressureStep = 0.05;  // psi
constexpr double MoleStep = 1e-6;      // of a lb-mole of feed

double volumeAt(const ComponentSet& set, const Composition& feed, double pressure, FlashState state) {
    FlashPT(set, feed, pressure, state);
    const PhaseVolumes volumes = phaseVolumes(set, pressure, state);
    return volumes.liquid + volumes.vapour;
}

/// The equation of state of an undivided mixture at the root of its flash.
EosMixture undivided(const ComponentSet& set, const Composition& feed, double pressure) {
    EosMixture mixture;
    PR_EOS(set, feed, pressure, mixture);
    return mixture;
}

double slopeOfOne(const ComponentSet& set, const EosMixture& mixture, double Z) {
    const double p = mixture.pressure, RT = GasConstant * set.temperature;
    return RT / p * (rootSlopes(mixture.A, mixture.B, p, Z).first - Z / p);
}

/// RT/P (Z + n dZ/dN_i), by the cubic F(Z, A, B) = 0 with n dA/dN_i = A (aTerm_i - 2) and
/// n dB/dN_i = B (b_i/b - 1).
void partialsOfOne(const ComponentSet& set, const EosMixture& mixture, double Z, Composition& partial) {
    const double A = mixture.A, B = mixture.B;
    const double byZ = (3.0 * Z + 2.0 * (B - 1.0)) * Z + A - 2.0 * B - 3.0 * B * B;
    const double byA = Z - B;
    const double byB = Z * Z - (2.0 + 6.0 * B) * Z - A + 2.0 * B + 3.0 * B * B;
    const double RT = GasConstant * set.temperature;
    for (std::size_t i = 0; i < static_cast<std::size_t>(set.count); ++i) {
        const double change = byA * A * (mixture.aTerm[i] - 2.0) + byB * B * (mixture.bRatio[i] - 1.0);
        partial[i] = RT / mixture.pressure * (Z - change / byZ);
    }
}

}  // namespace

double mixtureSlope(const ComponentSet& set, const Composition& feed, double pressure,
                    const FlashState& state) {
    if (state.phases != FluidPhases::Both)
        return slopeOfOne(set, undivided(set, feed, pressure), state.zLiquid);
    const double above = volumeAt(set, feed, pressure + PressureStep, state);
    const double below = volumeAt(set, feed, pressure - PressureStep, state);
    return (above - below) / (2.0 * PressureStep);
}

MixtureVolume mixtureVolume(const ComponentSet& set, const Composition& feed, double pressure,
                            FlashState& state) {
    FlashPT(set, feed, pressure, state);
    const PhaseVolumes phases = phaseVolumes(set, pressure, state);
    MixtureVolume result;
    result.volume = phases.liquid + phases.vapour;
    if (state.phases != FluidPhases::Both) {
        const EosMixture mixture = undivided(set, feed, pressure);
        result.slope = slopeOfOne(set, mixture, state.zLiquid);
        partialsOfOne(set, mixture, state.zLiquid, result.partial);
        return result;
    }
    result.slope = mixtureSlope(set, feed, pressure, state);
    double mean = 0.0;
    for (int i = 0; i < set.count; ++i) {
        Composition more = feed;
        more[i] += MoleStep;
        for (int j = 0; j < set.count; ++j) more[j] /= 1.0 + MoleStep;
        result.partial[i] =
            ((1.0 + MoleStep) * volumeAt(set, more, pressure, state) - result.volume) / MoleStep;
        mean += feed[i] * result.partial[i];
    }
    // Volume is homogeneous in the moles: what the differences miss of that is shared by all.
    for (int i = 0; i < set.count; ++i) result.partial[i] += result.volume - mean;
    return result;
}

}  // namespace kvr
