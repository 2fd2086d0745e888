#pragma once

#include "base/units.hpp"
#include "model/connections.hpp"
#include "model/grid.hpp"
#include "pressure/pressure_matrix.hpp"
#include "pressure/records/cell_state.hpp"
#include "pressure/records/upstream_sides.hpp"

namespace kvr {

/// Potential difference of a phase over a connection, psi: positive when the phase flows from the
/// neighbour into the cell.
///   Phi = (P_n - P_c) - (rho_c + rho_n)/2 * DepthDiff/144
template <class Number>
Number phasePotential(const Number& pCell, const Number& pNeighbour, const Number& rhoCell,
                      const Number& rhoNeighbour, double g) {
    return pNeighbour - pCell - 0.5 * (rhoCell + rhoNeighbour) * g;
}

/// The same of oil (OilSide) or gas (GasSide) by the densities of the cells: where one of them has none of
/// the phase, the density of the other counts, since only that one can give any.
inline double phasePotential(const CellState& state, const CellArray<double>& pressure,
                             const CellArray<double>& density, PhaseSide phase, CellId cell, CellId neighbour,
                             double g) {
    double own = density[cell], other = density[neighbour];
    if (!state.lacking.empty()) {
        const bool cellHas = (state.lacking[cell] & phase) == 0;
        const bool neighbourHas = (state.lacking[neighbour] & phase) == 0;
        if (cellHas && !neighbourHas) other = own;
        if (neighbourHas && !cellHas) own = other;
    }
    return phasePotential(pressure[cell], pressure[neighbour], own, other, g);
}

/// Whether a phase comes from the neighbour; where nothing drives it, from the cell of the lower number, so
/// that both sides say the same.
inline bool comesFromNeighbour(double phi, CellId cell, CellId neighbour) {
    return phi > 0.0 || (phi == 0.0 && neighbour < cell);
}

/// What becomes of matrix.upstream: found from the present potentials, or held as it stands.
enum class Upstream { Found, Held };

/// Flow between active cells and their neighbours: MatOff is set, the inflow is added to MatRhs. Phases
/// are upstream-weighted; the oil takes the cell's own factors and carries its upstream Rs:
///   MatOff = (Bo_c + Bg_c*(Rs_up - Rs_c))*TransO + Bw_c*TransW + Bg_c*TransG
/// Where sides are held, `through` and `astray` are measured.
void flowTwoPhase(Upstream sides, const UnitSystem& units, const GridModel& grid,
                  const ConnectionTable& connections, const CellState& state, PressureMatrix& matrix);
void flowThreePhase(Upstream sides, const UnitSystem& units, const GridModel& grid,
                    const ConnectionTable& connections, const CellState& state, PressureMatrix& matrix);

/// Share of the flow whose sides are held and that the present potentials would take from the other side.
double astrayShare(const PressureMatrix& matrix);

}  // namespace kvr
