#include "fluid/components/mixture_volume.hpp"

namespace kvr {

namespace {

constexpr double PressureStep = 0.05;  // psi
constexpr double MoleStep = 1e-6;      // of a lb-mole of feed

double volumeAt(const ComponentSet& set, const Composition& feed, double pressure, FlashState state) {
    FlashPT(set, feed, pressure, state);
    const PhaseVolumes volumes = phaseVolumes(set, pressure, state);
    return volumes.liquid + volumes.vapour;
}

}  // namespace

double mixtureSlope(const ComponentSet& set, const Composition& feed, double pressure,
                    const FlashState& state) {
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
