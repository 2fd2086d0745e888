#include "pressure/wells/well_index.hpp"

#include "base/constants.hpp"
#include "pressure/wells/well_controls.hpp"

#include <cmath>

namespace kvr {

namespace {

constexpr double LeastPermeability = 1e-10;  // md; at or below it a cell takes no part in well flow
constexpr double RadiusFactor = 0.28;        // of the equivalent radius of an anisotropic block
constexpr double RadiusWithoutFlow = 1.0;    // ft

}  // namespace

CompletionGeometry completionGeometry(const GridModel& grid, CellId cell, char direction) {
    const double net = grid.DZ[cell] * (grid.NTG.empty() ? 1.0 : grid.NTG[cell]);
    switch (direction) {
        case 'X':
            return {grid.PERMY[cell], grid.PERMZ[cell], grid.DY[cell], net, grid.DX[cell]};
        case 'Y':
            return {grid.PERMX[cell], grid.PERMZ[cell], grid.DX[cell], net, grid.DY[cell]};
        default:
            return {grid.PERMX[cell], grid.PERMY[cell], grid.DX[cell], grid.DY[cell], net};
    }
}

double equivalentRadius(const CompletionGeometry& cell) {
    if (cell.kx <= LeastPermeability || cell.ky <= LeastPermeability) return RadiusWithoutFlow;
    const double a = std::sqrt(cell.ky / cell.kx);
    const double b = std::sqrt(cell.kx / cell.ky);
    return RadiusFactor * std::sqrt(cell.Dx * cell.Dx * a + cell.Dy * cell.Dy * b) /
           (std::sqrt(a) + std::sqrt(b));
}

double equivalentPermeability(const CompletionGeometry& cell) {
    if (cell.kx <= LeastPermeability || cell.ky <= 0.0) return 0.0;
    return std::sqrt(cell.kx * cell.ky);
}

double wellIndex(const CompletionGeometry& cell, double radius, double skin, double givenKh) {
    const double Kh = givenKh > 0.0 ? givenKh : equivalentPermeability(cell) * cell.h;
    if (Kh <= 0.0 || radius <= 0.0) return 0.0;
    const double resistance = std::log(equivalentRadius(cell) / radius) + skin;
    if (resistance <= 0.0) return 0.0;
    return WellIndexConstant * Kh / resistance;
}

void ConnectionIndex(const GridModel& grid, WellConnection& connection) {
    const CompletionGeometry cell = completionGeometry(grid, connection.ConnCell, connection.ConnDirection);
    connection.effectiveRadius = equivalentRadius(cell);
    connection.effectivePermeability = equivalentPermeability(cell);
    connection.ConnWI = connection.ConnFactor >= 0.0
                            ? connection.ConnFactor
                            : wellIndex(cell, connection.WellRadius, connection.Skin, connection.givenKh);
    connection.ConnWI *= connection.multiplier;
    if (grid.Active[connection.ConnCell] == 0) connection.ConnWI = 0.0;
}

void computeWellIndices(const GridModel& grid, WellRecord& wells) {
    for (Well& well : wells.wells)
        for (WellConnection& connection : well.connections) {
            ConnectionIndex(grid, connection);
            connection.ConnWI *= well.efficiency;
        }
}

}  // namespace kvr
