#include "pressure/flow_coefficients.hpp"

#include "base/constants.hpp"
#include "base/threads.hpp"
#include "pressure/properties.hpp"
#include "pressure/transfer_head.hpp"

#include <cmath>

namespace kvr {

namespace {

/// Coefficient of one connection and the inflow that it carries at the present potentials.
struct Flow {
    double coefficient = 0.0;
    double inflow = 0.0;
    double through = 0.0, astray = 0.0;
};

/// The upstream cell of a phase. Sides that are found are noted.
template <bool Hold>
CellId upstreamOf(double phi, CellId c, CellId n, PhaseSide phase, std::uint8_t& sides) {
    if (!Hold && comesFromNeighbour(phi, c, n)) sides = static_cast<std::uint8_t>(sides | phase);
    return (sides & phase) != 0 ? n : c;
}

template <bool Hold>
void addPhase(double coefficient, double phi, bool fromNeighbour, Flow& flow) {
    flow.coefficient += coefficient;
    flow.inflow += coefficient * phi;
    if (!Hold) return;
    flow.through += std::abs(coefficient * phi);
    if (phi != 0.0 && (phi > 0.0) != fromNeighbour) flow.astray += std::abs(coefficient * phi);
}

template <bool WithGas, bool Hold>
Flow connectionFlow(const CellState& s, CellId c, CellId n, double trans, double g,
                    const HeadDifference& head, std::uint8_t& sides) {
    Flow flow;
    const double phiO = phasePotential(s.Pressure[c], s.Pressure[n], s.RhoO[c], s.RhoO[n], g);
    const CellId upO = upstreamOf<Hold>(phiO, c, n, OilSide, sides);
    const double TransO = trans * s.LambdaO[upO] / s.Bo[upO];
    double weightO = s.Bo[c];
    if constexpr (WithGas) weightO += s.Bg[c] * (s.Rs[upO] - s.Rs[c]);
    addPhase<Hold>(weightO * TransO, phiO, upO == n, flow);

    const double phiW = phasePotential(s.PressureW[c], s.PressureW[n], s.RhoW[c], s.RhoW[n], g) + head.water;
    const CellId upW = upstreamOf<Hold>(phiW, c, n, WaterSide, sides);
    addPhase<Hold>(s.Bw[c] * trans * s.LambdaW[upW] / s.Bw[upW], phiW, upW == n, flow);

    if constexpr (WithGas) {
        const double phiG =
            phasePotential(s.PressureG[c], s.PressureG[n], s.RhoG[c], s.RhoG[n], g) + head.gas;
        const CellId upG = upstreamOf<Hold>(phiG, c, n, GasSide, sides);
        addPhase<Hold>(s.Bg[c] * trans * s.LambdaG[upG] / s.Bg[upG], phiG, upG == n, flow);
    }
    return flow;
}

template <bool WithGas, bool Hold>
void flowIntoCell(double flowUnit, const ConnectionTable& connections, const CellState& state, CellId c,
                  PressureMatrix& matrix) {
    const CellId* neighbour = connections.Neighbour.row(c);
    const double* trans = connections.Trans.row(c);
    const double* depth = connections.DepthDiff.row(c);
    double* off = matrix.MatOff.row(c);
    std::uint8_t* sides = matrix.upstream.row(c);
    double inflow = 0.0, through = 0.0, astray = 0.0;
    for (int d = 0; d < connections.NDIR; ++d) {
        off[d] = 0.0;
        if (!Hold) sides[d] = 0;
        if (neighbour[d] <= 0 || trans[d] == 0.0) continue;
        const HeadDifference head =
            d + 1 == TransferDirection ? headDifference(state, c, neighbour[d]) : HeadDifference{};
        const Flow flow = connectionFlow<WithGas, Hold>(state, c, neighbour[d], trans[d] * flowUnit,
                                                        depth[d] / SquareInchesPerSquareFoot, head, sides[d]);
        off[d] = flow.coefficient;
        inflow += flow.inflow;
        through += flow.through;
        astray += flow.astray;
    }
    matrix.MatRhs[c] += inflow;
    if (!Hold) return;
    matrix.through[c] = through;
    matrix.astray[c] = astray;
}

template <bool WithGas, bool Hold>
void flowBetweenCells(const UnitSystem& units, const GridModel& grid, const ConnectionTable& connections,
                      const CellState& state, PressureMatrix& matrix) {
#pragma omp parallel for schedule(static) if (grid.NCELLS >= ParallelCells)
    for (CellId c = 1; c <= grid.NCELLS; ++c)
        if (grid.Active[c] != 0) flowIntoCell<WithGas, Hold>(units.FlowUnit, connections, state, c, matrix);
}

template <bool WithGas>
void flowBySides(Upstream sides, const UnitSystem& units, const GridModel& grid,
                 const ConnectionTable& connections, const CellState& state, PressureMatrix& matrix) {
    if (sides == Upstream::Held && matrix.upstream.width == connections.NDIR) {
        matrix.through.assign(grid.NCELLS, 0.0);
        matrix.astray.assign(grid.NCELLS, 0.0);
        flowBetweenCells<WithGas, true>(units, grid, connections, state, matrix);
        return;
    }
    matrix.upstream.assign(grid.NCELLS, connections.NDIR, 0);
    flowBetweenCells<WithGas, false>(units, grid, connections, state, matrix);
}

}  // namespace

void flowTwoPhase(Upstream sides, const UnitSystem& units, const GridModel& grid,
                  const ConnectionTable& connections, const CellState& state, PressureMatrix& matrix) {
    flowBySides<false>(sides, units, grid, connections, state, matrix);
}

void flowThreePhase(Upstream sides, const UnitSystem& units, const GridModel& grid,
                    const ConnectionTable& connections, const CellState& state, PressureMatrix& matrix) {
    flowBySides<true>(sides, units, grid, connections, state, matrix);
}

double astrayShare(const PressureMatrix& matrix) {
    double through = 0.0, astray = 0.0;
    for (CellId c = 1; c <= matrix.through.count(); ++c) {
        through += matrix.through[c];
        astray += matrix.astray[c];
    }
    return through > 0.0 ? astray / through : 0.0;
}

}  // namespace kvr
