#include "model/nine_point.hpp"

#include <cmath>

namespace kvr {

double diagonalTrans(double s1, double s2) {
    if (s1 == 0.0 || s2 == 0.0) return 0.0;
    constexpr double Share = 3.0;
    return s1 * s2 / (s1 + s2) / Share;
}

namespace {

/// True when a half is not a number.
bool rebalance(ConnectionTable& connections, CellId m, CellId n, const Diagonal& diagonal) {
    const auto& half = connections.HalfTrans;
    const double tx = half(m, diagonal.faceX);
    const double ty = half(m, diagonal.faceY);
    const double s1 = tx + half(n, oppositeFace(diagonal.faceX));
    const double s2 = ty + half(n, oppositeFace(diagonal.faceY));
    const double td = diagonalTrans(s1, s2);
    if (td == 0.0) return false;
    connections.Trans(m, diagonal.faceX) = tx * (s1 - td) / s1;
    connections.Trans(m, diagonal.faceY) = ty * (s2 - td) / s2;
    connections.Trans(m, diagonal.direction) = td;
    return std::isnan(s1) || std::isnan(s2);
}

}  // namespace

int rebalanceNinePoint(const GridModel& grid, ConnectionTable& connections) {
    int notANumber = 0;
    for (CellId m = 1; m <= grid.NCELLS; ++m) {
        if (grid.Active[m] == 0) continue;
        for (const Diagonal& diagonal : Diagonals) {
            const CellId n = connections.Neighbour(m, diagonal.direction);
            if (n == 0 || grid.Active[n] == 0) continue;
            if (rebalance(connections, m, n, diagonal)) ++notANumber;
        }
    }
    return notANumber;
}

}  // namespace kvr
