#pragma once

namespace kvr {

/// What a unit of pore volume holds, for numbers and for numbers with slopes.
template <class Number>
struct HeldFluid {
    Number Sw, So, Sg;
    Number Rs;
    Number Bw, Bo, Bg;
};
/// Surface volumes of the three components, free and dissolved gas together.
template <class Number>
struct SurfaceVolumes {
    Number water, oil, gas;
};
template <class Number>
SurfaceVolumes<Number> surfaceVolumes(const HeldFluid<Number>& held) {
    const Number oil = held.So / held.Bo;
    return {held.Sw / held.Bw, oil, held.Sg / held.Bg + held.Rs * oil};
}

}  // namespace kvr
