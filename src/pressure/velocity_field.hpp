#pragma once

#include "base/cell_array.hpp"

namespace kvr {

/// Fluxes through the six faces of every cell, positive toward increasing index on every face.
struct VelocityField {
    DirectionArray<double> FaceFluxO, FaceFluxW, FaceFluxG;  // rb/day (internal volume a day)
    DirectionArray<double> CellFaceFlux;                     // sum of the three
    DirectionArray<double> CellFaceVelocity;                 // ft/day
    DirectionArray<double> CellFluxGradient;      // (cell, axis 1..3) high-face minus low-face flux
    DirectionArray<double> CellVelocityGradient;  // (cell, axis 1..3) velocity difference over size, 1/day
};

}  // namespace kvr
