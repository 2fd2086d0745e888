#include "model/corner_point.hpp"

#include "base/constants.hpp"
#include "model/cell_geometry.hpp"

namespace kvr {

namespace {

const float* pillarOf(const GridModel& grid, int i, int j) {
    const std::size_t record = static_cast<std::size_t>(j - 1) * static_cast<std::size_t>(grid.NX + 1) +
                               static_cast<std::size_t>(i - 1);
    return grid.COORD.data() + record * 6;
}

void placeCorner(GridModel& grid, CellId cell, int corner) {
    const auto& offset = CornerOffset[corner - 1];
    const int i = grid.CellI[cell];
    const int j = grid.CellJ[cell];
    const int k = grid.CellK[cell];
    const double z = static_cast<double>(grid.ZCORN[zcornIndex(grid, i, j, k, corner)]);
    double x = 0.0;
    double y = 0.0;
    pointOnPillar(pillarOf(grid, i + offset[0], j + offset[1]), z, x, y);
    float* point = cornerOf(grid, cell, corner);
    point[0] = static_cast<float>(x);
    point[1] = static_cast<float>(y);
    point[2] = static_cast<float>(z);
    placeNode(grid, cell, corner);
}

void deriveCentreAndSizes(GridModel& grid, CellId cell) {
    const float* corners = cornerOf(grid, cell, 1);
    const Vector3 centre = meanOfCorners(corners);
    const Vector3 sizes = nominalSizes(corners);
    for (int r = 1; r <= 3; ++r) grid.CellCentre(cell, r) = centre[r - 1];
    grid.DX[cell] = sizes[0];
    grid.DY[cell] = sizes[1];
    grid.DZ[cell] = sizes[2];
    constexpr int LowZ = 5;
    grid.TOPS[cell] = faceCentre(corners, LowZ)[2];
}

}  // namespace

std::size_t zcornIndex(const GridModel& grid, int i, int j, int k, int corner) {
    const auto& offset = CornerOffset[corner - 1];
    const auto nx = static_cast<std::size_t>(grid.NX);
    const auto ny = static_cast<std::size_t>(grid.NY);
    return static_cast<std::size_t>(2 * i - 2 + offset[0]) +
           static_cast<std::size_t>(2 * j - 2 + offset[1]) * 2 * nx +
           static_cast<std::size_t>(2 * k - 2 + offset[2]) * 4 * nx * ny;
}

void pointOnPillar(const float* pillar, double z, double& x, double& y) {
    const double x1 = static_cast<double>(pillar[0]);
    const double y1 = static_cast<double>(pillar[1]);
    const double z1 = static_cast<double>(pillar[2]);
    const double x2 = static_cast<double>(pillar[3]);
    const double y2 = static_cast<double>(pillar[4]);
    const double z2 = static_cast<double>(pillar[5]);
    const double d = z2 - z1;
    const bool flat = d < MachineEpsilon;
    x = flat ? x1 : (x1 * (z2 - z) + x2 * (z - z1)) / d;
    y = flat ? y1 : (y1 * (z2 - z) + y2 * (z - z1)) / d;
}

void CALC_RESERVOIR_COORDINATE_FRMCOORD(GridModel& grid, double volumeFactor) {
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        for (int corner = 1; corner <= 8; ++corner) placeCorner(grid, cell, corner);
        deriveCentreAndSizes(grid, cell);
    }
    estimateVolumes(grid, volumeFactor);
}

void nodesFromCorners(GridModel& grid) {
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell)
        for (int corner = 1; corner <= 8; ++corner) placeNode(grid, cell, corner);
}

void sizesFromCorners(GridModel& grid) {
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) deriveCentreAndSizes(grid, cell);
}

void estimateVolumes(GridModel& grid, double volumeFactor) {
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell)
        grid.BulkVolume[cell] = grid.DX[cell] * grid.DY[cell] * grid.DZ[cell] / volumeFactor;
}

}  // namespace kvr
