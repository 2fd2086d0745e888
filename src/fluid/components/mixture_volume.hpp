#pragma once

#include "fluid/components/flash.hpp"

namespace kvr {

/// Volume of a mixture in as many phases as it has, ft3 a lb-mole, and how it changes.
struct MixtureVolume {
    double volume = 0.0;
    double slope = 0.0;     // dv/dP at fixed composition, ft3/(lb-mole psi), below 0
    Composition partial{};  // dV/dN_i at fixed pressure, ft3/lb-mole; the mean over the feed is `volume`
};

/// Of one phase by the cubic; of two by differences of flash volumes: of pressures on both sides, and of
/// feeds with a little more of a component. `state` is that of the last flash of the place and holds the one
/// at the pressure afterwards.
MixtureVolume mixtureVolume(const ComponentSet& set, const Composition& feed, double pressure,
                            FlashState& state);

/// The slope alone; `state` is that of the flash at the pressure.
double mixtureSlope(const ComponentSet& set, const Composition& feed, double pressure,
                    const FlashState& state);

}  // namespace kvr
