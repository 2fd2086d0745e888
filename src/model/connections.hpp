#pragma once

#include "base/cell_array.hpp"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace kvr {

// Directions beyond the faces are there with NINEPOIN, diagonals, and with dual porosity, one transfer.
inline constexpr int FaceCount = 6;  // low x .. high z
inline constexpr int AxisCount = 3;
inline constexpr int TransferDirection =
    FaceCount + 1;  // dual porosity: between a fracture cell and its matrix

/// A connection of two cells that are not next to each other in I, J, K: across a fault, or given by the
/// deck. Each cell has a direction of its own for it, above FaceCount.
struct FurtherConnection {
    CellId first = 0, second = 0;  // first < second
    int fromFirst = 0, fromSecond = 0;
    int face = 0;  // of the first cell, 1..4, across a fault; 0: the deck has given it
};

/// Connections of each cell by (CellId, direction), directions 1..6 the faces low x .. high z,
/// 7..26 only with NINEPOIN, 7 alone with dual porosity, 7.. those of `further` without these.
struct ConnectionTable {
    int NDIR = FaceCount;
    int flowDirections = FaceCount;          // through which the transport of cells goes
    std::vector<FurtherConnection> further;  // by rising numbers of their cells
    DirectionArray<CellId> Neighbour;        // 0 where there is none
    DirectionArray<double> Trans;            // rb cp/(day psi); the two sides of a face may differ
    DirectionArray<double> DepthDiff;        // ft, neighbour's centre minus the cell's

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

/// The direction of `cell` as seen from its neighbour `other` in a direction, 0 if there is none.
inline int directionBack(const ConnectionTable& connections, CellId cell, CellId other, int direction) {
    if (direction <= FaceCount) return oppositeFace(direction);
    for (int d = FaceCount + 1; d <= connections.NDIR; ++d)
        if (connections.Neighbour(other, d) == cell) return d;
    return 0;
}

/// The entry of `further` for two cells that have one.
inline const FurtherConnection& furtherBetween(const ConnectionTable& connections, CellId a, CellId b) {
    const auto before = [](const FurtherConnection& x, const std::pair<CellId, CellId>& cells) {
        return std::pair(x.first, x.second) < cells;
    };
    return *std::lower_bound(connections.further.begin(), connections.further.end(),
                             std::pair(std::min(a, b), std::max(a, b)), before);
}

/// What flows through a connection stands once, at its low cell: by axis 1..3 through the high faces, beyond
/// them through further directions, where the cell of lower number is the low one.
inline int axisOf(int direction) {
    return direction <= FaceCount ? (direction + 1) / 2 : direction - FaceCount + AxisCount;
}
inline int directionOfAxis(int axis) {
    return axis <= AxisCount ? 2 * axis : axis + FaceCount - AxisCount;
}
inline int flowAxes(const ConnectionTable& connections) {
    return axisOf(connections.flowDirections);
}

/// Whether a cell is the low one of its connection in a direction.
inline bool isLowSide(const ConnectionTable& connections, CellId cell, int direction) {
    return direction <= FaceCount ? direction % 2 == 0 : connections.Neighbour(cell, direction) > cell;
}

}  // namespace kvr
