#include "model/given_by_cell.hpp"

#include "model/further_connections.hpp"
#include "model/neighbours.hpp"

namespace kvr {

namespace {

constexpr double NotGiven = -1.0;

CellArray<double>& sized(const GridModel& grid, CellArray<double>& array) {
    if (array.empty()) array.assign(grid.NCELLS, NotGiven);
    return array;
}

int upperFace(int axis) {
    return 2 * axis + 2;
}

/// A factor that stands in front of a given value is part of it.
void forget(CellId cell, CellArray<double>& factors) {
    if (cell > 0 && !factors.empty()) factors[cell] = 1.0;
}

}  // namespace

void givePoreVolume(CellId cell, double poreVolume, GridModel& grid) {
    sized(grid, grid.given.poreVolume)[cell] = poreVolume;
    forget(cell, grid.MULTPV);
}

void giveTrans(CellId cell, int axis, double trans, GridModel& grid) {
    sized(grid, grid.given.trans[static_cast<std::size_t>(axis)])[cell] = trans;
    const int face = upperFace(axis);
    forget(cell, grid.faceMultiplier[static_cast<std::size_t>(face) - 1]);
    forget(neighbourOf(grid, cell, face),
           grid.faceMultiplier[static_cast<std::size_t>(oppositeFace(face)) - 1]);
}

void takeGivenPoreVolumes(GridModel& grid) {
    const CellArray<double>& given = grid.given.poreVolume;
    for (CellId cell = 1; cell <= given.count(); ++cell) {
        const double bulk = grid.BulkVolume[cell] * grid.NTG[cell];
        if (given[cell] < 0.0 || grid.Active[cell] == 0 || !(bulk > 0.0)) continue;
        const double factor = grid.MULTPV.empty() ? 1.0 : grid.MULTPV[cell];
        grid.PORO[cell] = given[cell] * factor / bulk;
    }
}

CellId closeSmallCells(GridModel& grid, ConnectionTable& connections) {
    CellId count = 0;
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        const double poreVolume = grid.PORO[cell] * grid.NTG[cell] * grid.BulkVolume[cell];
        if (grid.Active[cell] == 0 || (poreVolume > 0.0 && poreVolume >= grid.leastPoreVolume)) continue;
        grid.Active[cell] = 0;
        ++count;
    }
    if (count > 0) closeInactiveCells(grid, connections);
    if (count > 0) closeFurther(grid, connections);
    return count;
}

void takeGivenTrans(const GridModel& grid, ConnectionTable& connections) {
    for (int axis = 0; axis < 3; ++axis) {
        const CellArray<double>& given = grid.given.trans[static_cast<std::size_t>(axis)];
        const int face = upperFace(axis);
        for (CellId cell = 1; cell <= given.count(); ++cell) {
            const CellId neighbour = connections.Neighbour(cell, face);
            if (given[cell] < 0.0 || neighbour <= 0) continue;
            if (grid.Active[cell] == 0 || grid.Active[neighbour] == 0) continue;
            connections.Trans(cell, face) = connections.Trans(neighbour, oppositeFace(face)) = given[cell];
        }
    }
}

}  // namespace kvr
