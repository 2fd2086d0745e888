#pragma once

#include "base/cell_array.hpp"

namespace kvr {

/// Fluxes through the six faces of every cell, positive toward increasing index on every face.
struct VelocityField {
    DirectionArray<double> CellFaceFlux;      // rb/day (internal volume a day), all phases
    DirectionArray<double> CellFaceVelocity;  // ft/day; empty in a run that does not ask for it
    CellArray<double>
        TransferFlux;  // dual porosity, in fracture cells: the same out of the matrix; else empty
};

/// High-face minus low-face flux of a cell along an axis, 1..3.
inline double fluxGradient(const VelocityField& velocity, CellId cell, int axis) {
    return velocity.CellFaceFlux(cell, 2 * axis) - velocity.CellFaceFlux(cell, 2 * axis - 1);
}

/// Velocity difference over the size of the cell along an axis, 1/day; 0 where it has no size.
inline double velocityGradient(const VelocityField& velocity, CellId cell, int axis, double size) {
    const double change =
        velocity.CellFaceVelocity(cell, 2 * axis) - velocity.CellFaceVelocity(cell, 2 * axis - 1);
    return size > 0.0 ? change / size : 0.0;
}

}  // namespace kvr
