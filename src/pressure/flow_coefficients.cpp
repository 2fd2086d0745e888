#include "pressure/flow_coefficients.hpp"

#include "base/constants.hpp"
#include "base/threads.hpp"
#include "pressure/properties.hpp"

namespace kvr {

namespace {

/// Coefficient of one connection and the inflow that it carries at the present potentials.
struct Flow {
    double coefficient = 0.0;
    double inflow = 0.0;
};

void addPhase(double coefficient, double phi, Flow& flow) {
    flow.coefficient += coefficient;
    flow.inflow += coefficient * phi;
}

template <bool WithGas>
Flow connectionFlow(const CellState& s, CellId c, CellId n, double trans, double g) {
    Flow flow;
    const double phiO = phasePotential(s.Pressure[c], s.Pressure[n], s.RhoO[c], s.RhoO[n], g);
    const CellId upO = phiO > 0.0 ? n : c;
    const double TransO = trans * s.LambdaO[upO] / s.Bo[upO];
    double weightO = s.Bo[c];
    if constexpr (WithGas) weightO += s.Bg[c] * (s.Rs[upO] - s.Rs[c]);
    addPhase(weightO * TransO, phiO, flow);

    const double phiW = phasePotential(s.PressureW[c], s.PressureW[n], s.RhoW[c], s.RhoW[n], g);
    const CellId upW = phiW > 0.0 ? n : c;
    addPhase(s.Bw[c] * trans * s.LambdaW[upW] / s.Bw[upW], phiW, flow);

    if constexpr (WithGas) {
        const double phiG = phasePotential(s.PressureG[c], s.PressureG[n], s.RhoG[c], s.RhoG[n], g);
        const CellId upG = phiG > 0.0 ? n : c;
        addPhase(s.Bg[c] * trans * s.LambdaG[upG] / s.Bg[upG], phiG, flow);
    }
    return flow;
}

template <bool WithGas>
void flowIntoCell(double flowUnit, const ConnectionTable& connections, const CellState& state, CellId c,
                  PressureMatrix& matrix) {
    const CellId* neighbour = connections.Neighbour.row(c);
    const double* trans = connections.Trans.row(c);
    const double* depth = connections.DepthDiff.row(c);
    double* off = matrix.MatOff.row(c);
    double inflow = 0.0;
    for (int d = 0; d < connections.NDIR; ++d) {
        off[d] = 0.0;
        if (neighbour[d] <= 0 || trans[d] == 0.0) continue;
        const Flow flow = connectionFlow<WithGas>(state, c, neighbour[d], trans[d] * flowUnit,
                                                  depth[d] / SquareInchesPerSquareFoot);
        off[d] = flow.coefficient;
        inflow += flow.inflow;
    }
    matrix.MatRhs[c] += inflow;
}

template <bool WithGas>
void flowBetweenCells(const UnitSystem& units, const GridModel& grid, const ConnectionTable& connections,
                      const CellState& state, PressureMatrix& matrix) {
#pragma omp parallel for schedule(static) if (grid.NCELLS >= ParallelCells)
    for (CellId c = 1; c <= grid.NCELLS; ++c)
        if (grid.Active[c] != 0) flowIntoCell<WithGas>(units.FlowUnit, connections, state, c, matrix);
}

}  // namespace

void flowTwoPhase(const UnitSystem& units, const GridModel& grid, const ConnectionTable& connections,
                  const CellState& state, PressureMatrix& matrix) {
    flowBetweenCells<false>(units, grid, connections, state, matrix);
}

void flowThreePhase(const UnitSystem& units, const GridModel& grid, const ConnectionTable& connections,
                    const CellState& state, PressureMatrix& matrix) {
    flowBetweenCells<true>(units, grid, connections, state, matrix);
}

}  // namespace kvr
