#include "pressure/velocity.hpp"

#include "base/constants.hpp"
#include "base/hard_stop.hpp"
#include "pressure/flow_coefficients.hpp"
#include "pressure/properties.hpp"
#include "pressure/well_rates.hpp"

#include <new>

namespace kvr {

namespace {

constexpr int Faces = 6;
constexpr int Axes = 3;

/// Phase fluxes through one face of a cell.
void fluxThroughFace(double flowUnit, const ConnectionTable& connections, const CellState& s, CellId c, int d,
                     VelocityField& velocity) {
    const CellId n = connections.Neighbour(c, d);
    const double trans = connections.Trans(c, d);
    double oil = 0.0, water = 0.0, gas = 0.0;
    if (n > 0 && trans != 0.0) {
        const double g = connections.DepthDiff(c, d) / SquareInchesPerSquareFoot;
        const double T = trans * flowUnit * FaceSign[static_cast<std::size_t>(d) - 1];
        const double phiO = phasePotential(s.Pressure[c], s.Pressure[n], s.RhoO[c], s.RhoO[n], g);
        const double phiW = phasePotential(s.PressureW[c], s.PressureW[n], s.RhoW[c], s.RhoW[n], g);
        const double phiG = phasePotential(s.PressureG[c], s.PressureG[n], s.RhoG[c], s.RhoG[n], g);
        oil = -phiO * T * s.LambdaO[phiO > 0.0 ? n : c];
        water = -phiW * T * s.LambdaW[phiW > 0.0 ? n : c];
        gas = -phiG * T * s.LambdaG[phiG > 0.0 ? n : c];
    }
    velocity.FaceFluxO(c, d) = oil;
    velocity.FaceFluxW(c, d) = water;
    velocity.FaceFluxG(c, d) = gas;
    velocity.CellFaceFlux(c, d) = oil + water + gas;
}

/// Area of a lateral face without net-to-gross. The box tracing multiplies the time in a cell by its
/// net-to-gross, so the area of a box connection, which holds it as well, would count it twice.
double grossBoxArea(const GridModel& grid, CellId c, CellId n, int d) {
    const CellArray<double>& along = d <= 2 ? grid.DX : grid.DY;
    const CellArray<double>& across = d <= 2 ? grid.DY : grid.DX;
    return (across[c] * grid.DZ[c] * along[n] + across[n] * grid.DZ[n] * along[c]) / (along[c] + along[n]);
}

double flowArea(bool boxGrid, const GridModel& grid, const ConnectionTable& connections, CellId c, int d) {
    const double area = connections.ConnArea(c, d);
    const CellId n = connections.Neighbour(c, d);
    const bool lateral = d <= 4;
    return boxGrid && lateral && n > 0 && area > 0.0 ? grossBoxArea(grid, c, n, d) : area;
}

void velocityOfCell(bool boxGrid, double volumeFactor, const GridModel& grid,
                    const ConnectionTable& connections, CellId c, VelocityField& velocity) {
    for (int d = 1; d <= Faces; ++d) {
        const double area = flowArea(boxGrid, grid, connections, c, d);
        velocity.CellFaceVelocity(c, d) =
            area > 0.0 ? velocity.CellFaceFlux(c, d) * volumeFactor / area : 0.0;
    }
    const double size[Axes] = {grid.DX[c], grid.DY[c], grid.DZ[c]};
    for (int axis = 1; axis <= Axes; ++axis) {
        const int low = 2 * axis - 1, high = 2 * axis;
        velocity.CellFluxGradient(c, axis) = velocity.CellFaceFlux(c, high) - velocity.CellFaceFlux(c, low);
        const double change = velocity.CellFaceVelocity(c, high) - velocity.CellFaceVelocity(c, low);
        velocity.CellVelocityGradient(c, axis) = size[axis - 1] > 0.0 ? change / size[axis - 1] : 0.0;
    }
}

}  // namespace

void AllocateVelocity(const Console& console, CellId count, VelocityField& velocity) {
    try {
        for (DirectionArray<double>* array : {&velocity.FaceFluxO, &velocity.FaceFluxW, &velocity.FaceFluxG,
                                              &velocity.CellFaceFlux, &velocity.CellFaceVelocity})
            array->assign(count, Faces, 0.0);
        velocity.CellFluxGradient.assign(count, Axes, 0.0);
        velocity.CellVelocityGradient.assign(count, Axes, 0.0);
    } catch (const std::bad_alloc&) {
        lineToBoth(console, "Error :: Allocation of velocity, flow and its gradient");
        hardStop(console);
    }
}

void BuildVelocityFromPressure(const RunOptions& options, const UnitSystem& units, const GridModel& grid,
                               const ConnectionTable& connections, const CellState& state,
                               VelocityField& velocity) {
    const bool boxGrid = !options.useNewtran;
#pragma omp parallel for schedule(static) if (grid.NCELLS >= ParallelCells)
    for (CellId c = 1; c <= grid.NCELLS; ++c) {
        if (grid.Active[c] == 0) continue;
        for (int d = 1; d <= Faces; ++d) fluxThroughFace(units.FlowUnit, connections, state, c, d, velocity);
        velocityOfCell(boxGrid, units.VolumeFactor, grid, connections, c, velocity);
    }
}

void UpdateWellVelocity(const UnitSystem& units, const CellState& state, WellRecord& wells) {
    for (Well& well : wells.wells) {
        well.reservoirRate = 0.0;
        for (WellConnection& connection : well.connections) {
            const double dp = drawdown(state, well, connection);
            connection.reservoirRate =
                flowsAt(well, dp) ? reservoirCoefficient(units, state, connection) * dp : 0.0;
            well.reservoirRate += connection.reservoirRate;
        }
    }
}

}  // namespace kvr
