#include "model/dual_porosity.hpp"

#include "base/constants.hpp"

#include <algorithm>
#include <cstddef>
#include <span>

namespace kvr {

namespace {

constexpr std::ptrdiff_t CornerValues = 24;  // of a cell

/// The lower half becomes the upper one.
template <class Value>
void copyDown(std::span<Value> cells) {
    const std::size_t half = cells.size() / 2;
    std::copy_n(cells.begin(), half, cells.begin() + static_cast<std::ptrdiff_t>(half));
}

void fillWhereLeftOut(CellArray<double>& array, double initial) {
    const std::span<double> fractures = array.cells().subspan(array.cells().size() / 2);
    const bool leftOut =
        std::all_of(fractures.begin(), fractures.end(), [initial](double value) { return value == initial; });
    if (leftOut) copyDown(array.cells());
}

template <class Array>
void keepUpperHalf(CellId cells, const Array& from, Array& to) {
    to = from;
    to.slots.resize(static_cast<std::size_t>(cells) + 1);
}

void keepUpperNodes(const GridModel& grid, const std::vector<double>& from, std::vector<double>& to) {
    const auto count = static_cast<std::ptrdiff_t>(nodeIndex(grid, 1, 1, grid.NZ / 2 + 2));
    to.assign(from.begin(), from.begin() + count);
}

}  // namespace

void fillFracturesFromMatrix(GridModel& grid) {
    for (CellArray<double>* array :
         {&grid.DX, &grid.DY, &grid.DZ, &grid.PORO, &grid.PERMX, &grid.PERMY, &grid.PERMZ})
        fillWhereLeftOut(*array, 0.0);
    fillWhereLeftOut(grid.NTG, 1.0);
}

void shareSizes(GridModel& grid) {
    for (CellArray<double>* array : {&grid.DX, &grid.DY, &grid.DZ}) copyDown(array->cells());
}

void shareGeometry(GridModel& grid) {
    shareSizes(grid);
    copyDown(grid.TOPS.cells());
    copyDown(grid.BulkVolume.cells());
    const CellId half = matrixCells(grid);
    const auto upper = grid.xyz_3d.begin() + CornerValues;
    std::copy_n(upper, half * CornerValues, upper + half * CornerValues);
    for (CellId cell = 1; cell <= half; ++cell)
        std::copy_n(grid.CellCentre.row(cell), AxisCount, grid.CellCentre.row(partnerOf(grid, cell)));
    // The layer of nodes between the halves belongs to the bottom of the matrix, so that the nodes of the
    // upper half are a whole grid.
    constexpr int Corners = 8;
    for (CellId cell = grid.NCELLS; cell >= 1; --cell)
        for (int corner = 1; corner <= Corners; ++corner) placeNode(grid, cell, corner);
}

void makeFracturePermeabilityEffective(GridModel& grid) {
    for (CellId cell = matrixCells(grid) + 1; cell <= grid.NCELLS; ++cell)
        for (CellArray<double>* array : {&grid.PERMX, &grid.PERMY, &grid.PERMZ})
            (*array)[cell] *= std::max(0.0, grid.PORO[cell]);
}

void connectContinua(double volumeFactor, const GridModel& grid, ConnectionTable& connections) {
    if (grid.dual.SIGMA.empty()) return;
    for (CellId matrix = 1; matrix <= matrixCells(grid); ++matrix) {
        const CellId fracture = partnerOf(grid, matrix);
        if (grid.Active[matrix] == 0 || grid.Active[fracture] == 0) continue;
        const double volume = grid.BulkVolume[matrix] * volumeFactor;
        const double Vk = grid.dual.SIGMA[matrix] * DarcyConstant * grid.PERMX[matrix] * volume;
        connections.Trans(matrix, TransferDirection) = Vk;
        connections.Trans(fracture, TransferDirection) = Vk;
    }
}

GridModel geometryOf(const GridModel& grid) {
    GridModel part;
    part.NX = grid.NX;
    part.NY = grid.NY;
    part.NZ = grid.NZ / 2;
    part.NCELLS = matrixCells(grid);
    keepUpperHalf(part.NCELLS, grid.CellI, part.CellI);
    keepUpperHalf(part.NCELLS, grid.CellJ, part.CellJ);
    keepUpperHalf(part.NCELLS, grid.CellK, part.CellK);
    part.CellCentre = grid.CellCentre;
    part.xyz_3d.assign(grid.xyz_3d.begin(), grid.xyz_3d.begin() + CornerValues * (part.NCELLS + 1));
    keepUpperNodes(grid, grid.NodeX, part.NodeX);
    keepUpperNodes(grid, grid.NodeY, part.NodeY);
    keepUpperNodes(grid, grid.NodeZ, part.NodeZ);
    return part;
}

}  // namespace kvr
