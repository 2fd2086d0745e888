#include "pressure/component_pressure.hpp"

#include "base/constants.hpp"
#include "base/threads.hpp"
#include "fluid/black_oil.hpp"

namespace kvr {

namespace {

/// Internal volume that the moles of an internal volume of an upstream phase take in cell c.
double volumeThere(const ComponentStage& stage, double volumeFactor, const CellState& state, CellId c,
                   CellId up, bool isLiquid) {
    const FlashState& flash = stage.cells.flash[static_cast<std::size_t>(up)];
    const Composition& fractions = isLiquid ? flash.liquid : flash.vapour;
    const double moles =
        phaseMoles(stage.set, volumeFactor, state.Pressure[up], isLiquid ? flash.zLiquid : flash.zVapour);
    const double* partial = stage.Partial.row(c);
    double volume = 0.0;
    for (int i = 0; i < stage.set.count; ++i) volume += partial[i] * fractions[i];
    return volume * moles;
}

struct Flow {
    double coefficient = 0.0;
    double inflow = 0.0;
};

void addPhase(double coefficient, double phi, Flow& flow) {
    flow.coefficient += coefficient;
    flow.inflow += coefficient * phi;
}

Flow connectionFlow(const ComponentStage& stage, double volumeFactor, const CellState& s, CellId c, CellId n,
                    double trans, double g) {
    Flow flow;
    const auto upstream = [c, n](double phi) { return comesFromNeighbour(phi, c, n) ? n : c; };
    const double phiO = phasePotential(s, s.Pressure, s.RhoO, OilSide, c, n, g);
    const CellId upO = upstream(phiO);
    if (s.LambdaO[upO] > 0.0)
        addPhase(trans * s.LambdaO[upO] * volumeThere(stage, volumeFactor, s, c, upO, true), phiO, flow);
    const double phiG = phasePotential(s, s.PressureG, s.RhoG, GasSide, c, n, g);
    const CellId upG = upstream(phiG);
    if (s.LambdaG[upG] > 0.0)
        addPhase(trans * s.LambdaG[upG] * volumeThere(stage, volumeFactor, s, c, upG, false), phiG, flow);
    const double phiW = phasePotential(s.PressureW[c], s.PressureW[n], s.RhoW[c], s.RhoW[n], g);
    const CellId upW = upstream(phiW);
    addPhase(trans * s.LambdaW[upW] * s.Bw[c] / s.Bw[upW], phiW, flow);
    return flow;
}

}  // namespace

void accumulateComponents(double dt, const GridModel& grid, const FluidTables& tables,
                          const ComponentStage& stage, const CellState& state, PressureMatrix& matrix) {
    matrix.storage = 0.0;
    for (CellId c = 1; c <= grid.NCELLS; ++c) {
        matrix.MatDiag[c] = matrix.MatRhs[c] = 0.0;
        if (grid.Active[c] == 0) continue;
        const double bulk = grid.BulkVolume[c] * grid.NTG[c] * grid.PORO[c];
        const double pores = bulk * PoreFactorSlope(pvtAt(tables, c), state.Pressure[c]);
        matrix.MatDiag[c] = (stage.FluidSlope[c] - pores) / dt;
        matrix.MatRhs[c] = (stage.FluidVolume[c] + stage.leftOver[c] - state.PoreVolume[c]) / dt;
        matrix.storage -= matrix.MatDiag[c];
    }
}

void flowComponents(const UnitSystem& units, const GridModel& grid, const ConnectionTable& connections,
                    const ComponentStage& stage, const CellState& state, PressureMatrix& matrix) {
#pragma omp parallel for schedule(static) if (grid.NCELLS >= ParallelCells)
    for (CellId c = 1; c <= grid.NCELLS; ++c) {
        if (grid.Active[c] == 0) continue;
        for (int d = 1; d <= connections.NDIR; ++d) {
            matrix.MatOff(c, d) = 0.0;
            const CellId n = connections.Neighbour(c, d);
            if (n <= 0 || connections.Trans(c, d) == 0.0) continue;
            const Flow flow = connectionFlow(stage, units.VolumeFactor, state, c, n,
                                             connections.Trans(c, d) * units.FlowUnit,
                                             connections.DepthDiff(c, d) / SquareInchesPerSquareFoot);
            matrix.MatOff(c, d) = flow.coefficient;
            matrix.MatRhs[c] += flow.inflow;
        }
    }
}

}  // namespace kvr
