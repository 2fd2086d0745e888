#pragma once

#include "base/cell_array.hpp"

#include <array>

namespace kvr {

// Directions beyond the faces are there with NINEPOIN, diagonals, and with dual porosity, one transfer.
inline constexpr int FaceCount = 6;  // low x .. high z
inline constexpr int AxisCount = 3;
inline constexpr int TransferDirection =
    FaceCount + 1;  // dual porosity: between a fracture cell and its matrix

/// Connections of each cell by (CellId, direction), directions 1..6 the faces low x .. high z,
/// 7..26 only with NINEPOIN, 7 alone with dual porosity.
struct ConnectionTable {
    int NDIR = FaceCount;
    DirectionArray<CellId> Neighbour;  // 0 where there is none
    DirectionArray<double> Trans;      // rb cp/(day psi); the two sides of a face may differ
    DirectionArray<double> DepthDiff;  // ft, neighbour's centre minus the cell's

    // Of the conditioning, given back behind it; the areas stay where velocities are needed.
    DirectionArray<double> HalfTrans;     // rb cp/(day psi)
    DirectionArray<double> HarmonicPerm;  // md * DarcyConstant
    DirectionArray<double> ConnArea;      // ft2
    DirectionArray<double> ConnLength;    // ft
};

/// Sign of the outward normal of face 1..6, at [face - 1].
inline constexpr std::array<double, 6> FaceSign = {-1.0, 1.0, -1.0, 1.0, -1.0, 1.0};

/// The face of the neighbour that lies on face d, d in 1..6.
inline int oppositeFace(int d) {
    return d % 2 == 1 ? d + 1 : d - 1;
}

}  // namespace kvr
