#pragma once

#include "fluid/components/flash.hpp"

namespace kvr {

/// Where surface amounts of components are quoted, unless the deck says otherwise.
inline constexpr double SurfacePressure = 14.7;       // psia
inline constexpr double SurfaceTemperature = 519.67;  // Rankine

/// Components at the conditions of the surface.
struct SurfaceFluid {
    ComponentSet set;
    double pressure = SurfacePressure;  // psia
};

/// By STCOND where the deck gives it.
inline SurfaceFluid surfaceFluid(const FluidTables& tables) {
    const bool isGiven = tables.surfaceTemperature > 0.0 && tables.surfacePressure > 0.0;
    return {componentSet(tables, isGiven ? tables.surfaceTemperature : SurfaceTemperature),
            isGiven ? tables.surfacePressure : SurfacePressure};
}

/// ft3 of stock-tank oil and of gas from a lb-mole of feed, by one flash at the surface; `state` is that of
/// the last flash of the same stream.
inline PhaseVolumes surfaceVolumes(const SurfaceFluid& fluid, const Composition& feed, FlashState& state) {
    FlashPT(fluid.set, feed, fluid.pressure, state);
    return phaseVolumes(fluid.set, fluid.pressure, state);
}

}  // namespace kvr
