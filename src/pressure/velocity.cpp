#include "pressure/velocity.hpp"

#include "base/constants.hpp"
#include "base/hard_stop.hpp"
#include "base/threads.hpp"
#include "model/connections.hpp"
#include "pressure/flow_coefficients.hpp"
#include "pressure/properties.hpp"
#include "pressure/transfer_head.hpp"
#include "pressure/wells/well_rates.hpp"

#include <algorithm>
#include <array>
#include <new>
#include <utility>

namespace kvr {

namespace {

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
    for (int d = 1; d <= FaceCount; ++d) {
        const double area = flowArea(boxGrid, grid, connections, c, d);
        velocity.CellFaceVelocity(c, d) =
            area > 0.0 ? velocity.CellFaceFlux(c, d) * volumeFactor / area : 0.0;
    }
}

/// Flow of the phases into a cell by one of its directions. `sides`: of the cell, by direction; null: as the
/// potentials are.
PhaseFlux phaseInflow(double flowUnit, const ConnectionTable& connections, const CellState& s, CellId c,
                      int d, const std::uint8_t* sides) {
    const CellId n = connections.Neighbour(c, d);
    const double trans = connections.Trans(c, d);
    if (n <= 0 || trans == 0.0) return {};
    const double g = connections.DepthDiff(c, d) / SquareInchesPerSquareFoot;
    const double T = trans * flowUnit;
    const HeadDifference head = d == TransferDirection ? headDifference(s, c, n) : HeadDifference{};
    const double phiO = phasePotential(s, s.Pressure, s.RhoO, OilSide, c, n, g);
    const double phiW = phasePotential(s.PressureW[c], s.PressureW[n], s.RhoW[c], s.RhoW[n], g) + head.water;
    const double phiG = phasePotential(s, s.PressureG, s.RhoG, GasSide, c, n, g) + head.gas;
    const auto upstream = [&](double phi, PhaseSide phase) {
        const bool fromNeighbour =
            sides != nullptr ? (sides[d - 1] & phase) != 0 : comesFromNeighbour(phi, c, n);
        return fromNeighbour ? n : c;
    };
    return {phiO * T * s.LambdaO[upstream(phiO, OilSide)], phiW * T * s.LambdaW[upstream(phiW, WaterSide)],
            phiG * T * s.LambdaG[upstream(phiG, GasSide)]};
}

/// The same through a face, positive toward increasing index.
PhaseFlux phaseFlux(double flowUnit, const ConnectionTable& connections, const CellState& s, CellId c, int d,
                    const std::uint8_t* sides) {
    const PhaseFlux in = phaseInflow(flowUnit, connections, s, c, d, sides);
    const double sign = isLowSide(connections, c, d) ? -1.0 : 1.0;
    return {sign * in.oil, sign * in.water, sign * in.gas};
}

}  // namespace

bool needsFaceVelocity(const RunOptions& options) {
    return options.orthogonalProjection || !options.cornerPointTracing;
}

void AllocateVelocity(const Console& console, CellId count, int directions, bool faceVelocity,
                      VelocityField& velocity) {
    try {
        velocity.CellFaceFlux.assign(count, directions, 0.0);
        if (faceVelocity) velocity.CellFaceVelocity.assign(count, FaceCount, 0.0);
    } catch (const std::bad_alloc&) {
        lineToBoth(console, "Error :: Allocation of velocity, flow and its gradient");
        hardStop(console);
    }
}

PhaseFlux phaseFluxThroughFace(double flowUnit, const ConnectionTable& connections, const CellState& s,
                               CellId c, int d) {
    return phaseFlux(flowUnit, connections, s, c, d, nullptr);
}

namespace {

/// A phase at a face: what drives it out of the cell in psi, and its mobilities on both sides.
struct DrivenPhase {
    double drive = 0.0;
    double here = 0.0, there = 0.0;
    double PhaseFlux::*flux = nullptr;
};

/// Mobilities of the sides that the phases come from, by rising drive (Brenier and Jaffre 1991): a phase
/// comes from the cell where the flow `total`, and what those of less drive draw back from the neighbour and
/// those of more drive bring of the cell, leave it to go out.
std::array<double, 3> upstreamOfTotal(const std::array<DrivenPhase, 3>& phases, double trans, double total) {
    std::array<double, 3> mobility{};
    for (std::size_t k = 0; k < phases.size(); ++k) {
        double flow = total;
        for (std::size_t j = 0; j < phases.size(); ++j) {
            const double lambda = j < k ? phases[j].there : phases[j].here;
            flow += trans * lambda * (phases[k].drive - phases[j].drive);
        }
        mobility[k] = flow > 0.0 ? phases[k].here : phases[k].there;
    }
    return mobility;
}

/// By rising drive; equal ones stay in their order.
void sortByDrive(std::array<DrivenPhase, 3>& phases) {
    const auto order = [&phases](std::size_t first) {
        if (phases[first + 1].drive < phases[first].drive) std::swap(phases[first], phases[first + 1]);
    };
    order(0);
    order(1);
    order(0);
}

}  // namespace

PhaseFlux phaseSharesThroughFace(double flowUnit, const ConnectionTable& connections, const CellState& s,
                                 CellId c, int d, double total) {
    const CellId n = connections.Neighbour(c, d);
    if (n <= 0) return {};
    const double sign = FaceSign[static_cast<std::size_t>(d) - 1];
    const double trans = connections.Trans(c, d) * flowUnit;
    const double g = connections.DepthDiff(c, d) / SquareInchesPerSquareFoot;
    std::array<DrivenPhase, 3> phases = {
        DrivenPhase{-phasePotential(s, s.Pressure, s.RhoO, OilSide, c, n, g), s.LambdaO[c], s.LambdaO[n],
                    &PhaseFlux::oil},
        DrivenPhase{-phasePotential(s.PressureW[c], s.PressureW[n], s.RhoW[c], s.RhoW[n], g), s.LambdaW[c],
                    s.LambdaW[n], &PhaseFlux::water},
        DrivenPhase{-phasePotential(s, s.PressureG, s.RhoG, GasSide, c, n, g), s.LambdaG[c], s.LambdaG[n],
                    &PhaseFlux::gas}};
    sortByDrive(phases);
    const double outward = sign * total;
    const std::array<double, 3> mobility = upstreamOfTotal(phases, trans, outward);
    const double sum = mobility[0] + mobility[1] + mobility[2];
    PhaseFlux flux;
    if (!(sum > 0.0)) return flux;
    for (std::size_t k = 0; k < phases.size(); ++k) {
        double along = outward;
        for (std::size_t j = 0; j < phases.size(); ++j)
            along += trans * mobility[j] * (phases[k].drive - phases[j].drive);
        flux.*phases[k].flux = sign * along * mobility[k] / sum;
    }
    return flux;
}

void velocitiesOfFluxes(const RunOptions& options, const UnitSystem& units, const GridModel& grid,
                        const ConnectionTable& connections, VelocityField& velocity) {
    if (velocity.CellFaceVelocity.slots.empty()) return;
    const bool boxGrid = !options.useNewtran;
    for (CellId c = 1; c <= grid.NCELLS; ++c)
        if (grid.Active[c] != 0) velocityOfCell(boxGrid, units.VolumeFactor, grid, connections, c, velocity);
}

void BuildVelocityFromPressure(const RunOptions& options, const UnitSystem& units, const GridModel& grid,
                               const ConnectionTable& connections, const CellState& state,
                               const UpstreamSides& sides, VelocityField& velocity) {
    const bool boxGrid = !options.useNewtran;
    const bool faceVelocity = !velocity.CellFaceVelocity.slots.empty();
    if (grid.dual.isSet) velocity.TransferFlux.assign(grid.NCELLS, 0.0);
#pragma omp parallel for schedule(static) if (grid.NCELLS >= ParallelCells)
    for (CellId c = 1; c <= grid.NCELLS; ++c) {
        if (grid.Active[c] == 0) continue;
        const std::uint8_t* sidesOfCell = sides.width > 0 ? sides.row(c) : nullptr;
        for (int d = 1; d <= connections.flowDirections; ++d) {
            const PhaseFlux flux = phaseFlux(units.FlowUnit, connections, state, c, d, sidesOfCell);
            velocity.CellFaceFlux(c, d) = flux.oil + flux.water + flux.gas;
        }
        if (faceVelocity) velocityOfCell(boxGrid, units.VolumeFactor, grid, connections, c, velocity);
        if (!grid.dual.isSet || isMatrixCell(grid, c)) continue;
        const PhaseFlux in =
            phaseInflow(units.FlowUnit, connections, state, c, TransferDirection, sidesOfCell);
        velocity.TransferFlux[c] = in.oil + in.water + in.gas;
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
