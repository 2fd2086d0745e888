#include "model/box_transmissibility.hpp"

#include "base/constants.hpp"

namespace kvr {

namespace {

struct AxisArrays {
    const CellArray<double>& along;
    const CellArray<double>& across;
    const CellArray<double>& permeability;
};

AxisArrays arraysOf(const GridModel& grid, int axis) {
    if (axis == 0) return {grid.DX, grid.DY, grid.PERMX};
    if (axis == 1) return {grid.DY, grid.DX, grid.PERMY};
    return {grid.DZ, grid.DX, grid.PERMZ};
}

double lateralArea(const GridModel& grid, const AxisArrays& axis, CellId i, CellId j) {
    const double ai = axis.along[i];
    const double aj = axis.along[j];
    const double ofI = axis.across[i] * grid.DZ[i] * grid.NTG[i] * aj;
    const double ofJ = axis.across[j] * ai * grid.DZ[j] * grid.NTG[j];
    return (ofI + MachineEpsilon + ofJ) / (ai + aj);
}

double verticalArea(const GridModel& grid, CellId i, CellId j) {
    return (grid.DX[i] * grid.DY[i] * grid.DZ[j] + MachineEpsilon + grid.DX[j] * grid.DZ[i] * grid.DY[j]) /
           (grid.DZ[i] + grid.DZ[j]);
}

void storeConnection(const GridModel& grid, ConnectionTable& connections, CellId cell, int d) {
    const CellId n = connections.Neighbour(cell, d);
    if (n == 0) return;
    const double depthDiff = grid.CellCentre(n, 3) - grid.CellCentre(cell, 3);
    const BoxConnection connection = boxConnection(grid, cell, n, (d - 1) / 2, depthDiff);
    connections.DepthDiff(cell, d) = depthDiff;
    connections.ConnArea(cell, d) = connection.area;
    connections.ConnLength(cell, d) = connection.length;
    connections.HarmonicPerm(cell, d) = connection.harmonicPerm;
    if (grid.Active[n] != 0) connections.Trans(cell, d) = connection.trans;
}

void storeHalfTrans(const GridModel& grid, ConnectionTable& connections, CellId cell) {
    const double sizes[3] = {grid.DX[cell], grid.DY[cell], grid.DZ[cell]};
    const double permeability[3] = {grid.PERMX[cell], grid.PERMY[cell], grid.PERMZ[cell]};
    for (int d = 1; d <= FaceCount; ++d) {
        const CellId n = connections.Neighbour(cell, d);
        const int axis = (d - 1) / 2;
        if ((n != 0 && grid.Active[n] == 0) || sizes[axis] <= 0.0) continue;
        const double crossSection = sizes[(axis + 1) % 3] * sizes[(axis + 2) % 3];
        connections.HalfTrans(cell, d) =
            permeability[axis] * crossSection / (0.5 * sizes[axis]) * DarcyConstant;
    }
}

}  // namespace

BoxConnection boxConnection(const GridModel& grid, CellId i, CellId j, int axis, double depthDiff) {
    const AxisArrays arrays = arraysOf(grid, axis);
    const double ai = arrays.along[i];
    const double aj = arrays.along[j];
    if (!(ai + aj > 0.0)) return {};
    const bool vertical = axis == 2;
    BoxConnection c;
    c.area = vertical ? verticalArea(grid, i, j) : lateralArea(grid, arrays, i, j);
    c.length = 0.5 * (ai + aj) + MachineEpsilon;
    const double ki = arrays.permeability[i] + MachineEpsilon;
    const double kj = arrays.permeability[j] + MachineEpsilon;
    c.harmonicPerm = (ai + aj) / (ai / ki + aj / kj) * DarcyConstant;
    const double length2 = c.length * c.length;
    c.cos2 = vertical ? 1.0 : length2 / (depthDiff * depthDiff + length2);
    c.trans = c.area * c.harmonicPerm * c.cos2 / c.length;
    return c;
}

void connectFaceByBoxFormula(const GridModel& grid, ConnectionTable& connections, CellId cell, int face) {
    storeConnection(grid, connections, cell, face);
    storeHalfTrans(grid, connections, cell);
}

void connectByBoxFormula(GridModel& grid, ConnectionTable& connections, double volumeFactor) {
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        if (grid.Active[cell] == 0) continue;
        for (int d = 1; d <= FaceCount; ++d) storeConnection(grid, connections, cell, d);
        storeHalfTrans(grid, connections, cell);
        grid.BulkVolume[cell] = grid.DX[cell] * grid.DY[cell] * grid.DZ[cell] / volumeFactor;
    }
}

}  // namespace kvr
