#include "model/corner_transmissibility.hpp"

#include "base/constants.hpp"

#include <cmath>

namespace kvr {

namespace {

double squared(const Vector3& v) {
    return v[0] * v[0] + v[1] * v[1] + v[2] * v[2];
}

double lengthOf(const Vector3& v) {
    return std::sqrt(v[0] * v[0] + MachineEpsilon + v[1] * v[1] + v[2] * v[2]);
}

const CellArray<double>& permeabilityAlong(const GridModel& grid, int axis) {
    if (axis == 0) return grid.PERMX;
    return axis == 1 ? grid.PERMY : grid.PERMZ;
}

/// Everything of one connection but Trans, which needs the neighbour's half.
void storeHalf(const GridModel& grid, ConnectionTable& connections, CellId cell, int d) {
    const CellId n = connections.Neighbour(cell, d);
    if (n == 0) return;
    const int axis = (d - 1) / 2;
    const double area = projectedArea(cornerOf(grid, cell, 1), d);
    const Vector3 toFace = centreToFace(grid, cell, d);
    const double li = lengthOf(toFace);
    const double lj = lengthOf(centreToFace(grid, n, oppositeFace(d)));
    const auto& permeability = permeabilityAlong(grid, axis);
    const double ntg = axis == 2 ? 1.0 : grid.NTG[cell];
    const double ki = permeability[cell] * ntg + MachineEpsilon;
    const double kj = permeability[n] * ntg + MachineEpsilon;

    connections.DepthDiff(cell, d) = grid.CellCentre(n, 3) - grid.CellCentre(cell, 3);
    connections.ConnArea(cell, d) = area;
    connections.ConnLength(cell, d) = li + lj;
    connections.HarmonicPerm(cell, d) = (li + lj) / (lj / kj + li / ki) * DarcyConstant;

    const bool open = grid.Active[n] != 0 && !isDisplaced(grid, cell, n, d);
    connections.HalfTrans(cell, d) = open ? halfTransmissibility(grid, cell, d, area) : 0.0;
}

void joinHalves(ConnectionTable& connections, CellId cell, int d) {
    const CellId n = connections.Neighbour(cell, d);
    if (n == 0) return;
    const double own = connections.HalfTrans(cell, d);
    const double other = connections.HalfTrans(n, oppositeFace(d));
    connections.Trans(cell, d) = own == 0.0 || other == 0.0 ? 0.0 : 1.0 / (1.0 / own + 1.0 / other);
}

}  // namespace

Vector3 centreToFace(const GridModel& grid, CellId cell, int face) {
    const Vector3 centre = faceCentre(cornerOf(grid, cell, 1), face);
    return {std::abs(centre[0] - grid.CellCentre(cell, 1)), std::abs(centre[1] - grid.CellCentre(cell, 2)),
            std::abs(centre[2] - grid.CellCentre(cell, 3))};
}

double halfTransmissibility(const GridModel& grid, CellId cell, int face, double area) {
    const int axis = (face - 1) / 2;
    const Vector3 toFace = centreToFace(grid, cell, face);
    const double distance2 = squared(toFace);
    const double ntg = axis == 2 ? 1.0 : grid.NTG[cell];
    const double k = permeabilityAlong(grid, axis)[cell] * ntg + MachineEpsilon;
    return distance2 > 0.0 ? toFace[axis] * area * k / distance2 * DarcyConstant : 0.0;
}

bool isDisplaced(const GridModel& grid, CellId cell, CellId neighbour, int face) {
    constexpr int LastLateralFace = 4;
    if (face > LastLateralFace) return false;
    const double throwOfCentres = std::abs(grid.CellCentre(cell, 3) - grid.CellCentre(neighbour, 3));
    return meanLateralExtent(cornerOf(grid, cell, 1), face) < throwOfCentres;
}

void connectFaceByCornerFormula(const GridModel& grid, ConnectionTable& connections, CellId cell, int face) {
    const CellId other = connections.Neighbour(cell, face);
    storeHalf(grid, connections, cell, face);
    storeHalf(grid, connections, other, oppositeFace(face));
    joinHalves(connections, cell, face);
    joinHalves(connections, other, oppositeFace(face));
}

void connectByCornerFormula(GridModel& grid, ConnectionTable& connections, double volumeFactor) {
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        if (grid.Active[cell] == 0) continue;
        grid.BulkVolume[cell] = integratedVolume(cornerOf(grid, cell, 1)) / volumeFactor;
        for (int d = 1; d <= FaceCount; ++d) storeHalf(grid, connections, cell, d);
    }
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell)
        for (int d = 1; grid.Active[cell] != 0 && d <= FaceCount; ++d) joinHalves(connections, cell, d);
}

}  // namespace kvr
