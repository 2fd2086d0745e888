#pragma once

#include "model/connections.hpp"
#include "model/grid.hpp"

namespace kvr {

/// One diagonal of the nine-point scheme, 15..18, between a cell m and its neighbour n: the two faces of m
/// that the diagonal lies between.
struct Diagonal {
    int direction;
    int faceX;  // 1 or 2
    int faceY;  // 3 or 4
};
inline constexpr Diagonal Diagonals[] = {{15, 1, 3}, {16, 2, 3}, {17, 1, 4}, {18, 2, 4}};

/// Transmissibility of a diagonal, from the sums of the two opposite halves along x and along y:
///   Td = (S1*S2/(S1 + S2))/3
/// 0 when either sum is 0.
double diagonalTrans(double s1, double s2);

/// Moves part of the lateral transmissibility of each active cell to its diagonals, from the HalfTrans of
/// both cells:  Trans(m, face) = T(m, face) (S - Td)/S,  Trans(m, diagonal) = Td.
/// A face rewritten by two diagonals keeps the later. Diagonals with an inactive end or without flow are left
/// out. Needs NDIR of at least 18. Returns how many diagonals met a half that is not a number.
int rebalanceNinePoint(const GridModel& grid, ConnectionTable& connections);

}  // namespace kvr
